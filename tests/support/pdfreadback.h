#pragma once

// Reading printed PDFs back with poppler's pdftotext and pdfinfo.

#include <QPointF>
#include <QProcess>
#include <QRectF>
#include <QRegularExpression>
#include <QSizeF>
#include <QStandardPaths>
#include <QString>
#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

namespace lomir::testing {

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

} // namespace lomir::testing
