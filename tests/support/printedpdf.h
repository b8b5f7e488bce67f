#pragma once

// Reading printed PDFs back with poppler's pdftotext and pdfinfo, and comparing the label
// copies found with where a print plan puts them.

#include "core/layout/serialnumber.h"
#include "core/layout/sheetgeometry.h"
#include "core/layout/tilingtextview.h"
#include "core/printing/printplan.h"

#include <QPointF>
#include <QProcess>
#include <QRectF>
#include <QRegularExpression>
#include <QSizeF>
#include <QStandardPaths>
#include <QString>
#include <QTest>
#include <QTransform>
#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

namespace lomir::testing {

// Whether poppler's tools are there to read PDFs back.
inline bool popplerInstalled()
{
    return !QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty() &&
           !QStandardPaths::findExecutable(QStringLiteral("pdfinfo")).isEmpty();
}

struct PdfWord
{
    int page = 0; // from 1
    QRectF box;   // in points from the page's top-left corner
    QString text;
};

// The words pdftotext finds. A word's box begins at its first glyph's origin and ends at
// its last glyph's advance; it reaches from the font's ascent to its descent.
inline std::vector<PdfWord> pdfWords(const QString& pdf)
{
    QProcess pdftotext;
    pdftotext.start(QStringLiteral("pdftotext"),
                    {QStringLiteral("-bbox"), pdf, QStringLiteral("-")});
    pdftotext.waitForFinished(120000);
    const QString html = QString::fromUtf8(pdftotext.readAllStandardOutput());
    static const QRegularExpression element(
        QStringLiteral("<page |<word xMin=\"([-\\d.]+)\" yMin=\"([-\\d.]+)\" "
                       "xMax=\"([-\\d.]+)\" yMax=\"([-\\d.]+)\">([^<]*)</word>"));
    std::vector<PdfWord> words;
    int page = 0;
    for (auto it = element.globalMatch(html); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        if (match.captured(0) == QStringLiteral("<page ")) {
            ++page;
            continue;
        }
        const QPointF topLeft(match.captured(1).toDouble(), match.captured(2).toDouble());
        const QPointF bottomRight(match.captured(3).toDouble(), match.captured(4).toDouble());
        words.push_back(PdfWord{page, QRectF(topLeft, bottomRight), match.captured(5)});
    }
    return words;
}

struct PdfInfo
{
    int pages = 0;
    QSizeF pageSize;
};

inline PdfInfo pdfInfo(const QString& pdf)
{
    QProcess pdfinfo;
    pdfinfo.start(QStringLiteral("pdfinfo"), {pdf});
    pdfinfo.waitForFinished(60000);
    const QString output = QString::fromUtf8(pdfinfo.readAllStandardOutput());
    PdfInfo info;
    const QRegularExpressionMatch pages =
        QRegularExpression(QStringLiteral("Pages:\\s+(\\d+)")).match(output);
    if (pages.hasMatch())
        info.pages = pages.captured(1).toInt();
    const QRegularExpressionMatch size =
        QRegularExpression(QStringLiteral("Page size:\\s+([\\d.]+) x ([\\d.]+) pts")).match(output);
    if (size.hasMatch())
        info.pageSize = QSizeF(size.captured(1).toDouble(), size.captured(2).toDouble());
    return info;
}

// One printed copy as read back: where its "No." begins and the serial that follows.
struct PrintedCopy
{
    int page = 0;
    QPointF topLeft;
    QString serial;
};

// The copies on the pages, in reading order: each "No." with the word after it on its line.
inline std::vector<PrintedCopy> printedCopies(const std::vector<PdfWord>& words)
{
    std::vector<PrintedCopy> copies;
    for (const PdfWord& word : words) {
        if (word.text != QStringLiteral("No."))
            continue;
        const PdfWord* serial = nullptr;
        for (const PdfWord& next : words) {
            if (next.page == word.page && std::abs(next.box.top() - word.box.top()) < 0.01 &&
                next.box.left() > word.box.right() &&
                (!serial || next.box.left() < serial->box.left()))
                serial = &next;
        }
        copies.push_back(
            PrintedCopy{word.page, word.box.topLeft(), serial ? serial->text : QString()});
    }
    std::sort(copies.begin(), copies.end(), [](const PrintedCopy& a, const PrintedCopy& b) {
        return std::make_tuple(a.page, std::round(a.topLeft.y() * 100.0), a.topLeft.x()) <
               std::make_tuple(b.page, std::round(b.topLeft.y() * 100.0), b.topLeft.x());
    });
    return copies;
}

// Where the plan puts each copy on its page, in points from the paper's top-left corner,
// moved by a transform of the paper.
struct ExpectedCopy
{
    int page = 0;
    QPointF topLeft;
    QString serial;
};

inline std::vector<ExpectedCopy> expectedCopies(const PrintPlan& plan, const TilingTextView& view,
                                                const QTransform& paper = QTransform(),
                                                qint64 firstPage = 0)
{
    std::vector<ExpectedCopy> copies;
    const qint64 rowsOnAPage = *view.numberOfRowsOnAPage();
    const qint64 columns = *view.numberOfColumns();
    for (qint64 copy = 0; copy < plan.quantity; ++copy) {
        const CellPosition cell = cellPositionOfCopy(copy, rowsOnAPage, columns);
        if (cell.page < firstPage)
            continue;
        const QPointF corner(
            plan.margins.left() + double(cell.column) * plan.cell.width + plan.spacing / 2.0,
            plan.margins.top() + double(cell.row) * plan.cell.height + plan.spacing / 2.0);
        copies.push_back(
            ExpectedCopy{int(cell.page - firstPage) + 1, paper.map(corner),
                         serialText(copy, plan.serialStart, *view.serialDigitCount())});
    }
    return copies;
}

// Compares the copies read back with the expected ones and gives the largest distance
// from where the geometry puts them.
inline double compareCopies(const std::vector<PrintedCopy>& printed,
                            const std::vector<ExpectedCopy>& expected)
{
    if (printed.size() != expected.size()) {
        QTest::qFail(qPrintable(QStringLiteral("%1 copies printed, %2 expected")
                                    .arg(printed.size())
                                    .arg(expected.size())),
                     __FILE__, __LINE__);
        return -1.0;
    }
    double largest = 0.0;
    for (std::size_t i = 0; i < printed.size(); ++i) {
        if (printed[i].page != expected[i].page || printed[i].serial != expected[i].serial) {
            QTest::qFail(qPrintable(QStringLiteral("copy %1: page %2 serial %3, expected page "
                                                   "%4 serial %5")
                                        .arg(i)
                                        .arg(printed[i].page)
                                        .arg(printed[i].serial)
                                        .arg(expected[i].page)
                                        .arg(expected[i].serial)),
                         __FILE__, __LINE__);
            return -1.0;
        }
        largest = std::max({largest, std::abs(printed[i].topLeft.x() - expected[i].topLeft.x()),
                            std::abs(printed[i].topLeft.y() - expected[i].topLeft.y())});
    }
    return largest;
}

} // namespace lomir::testing
