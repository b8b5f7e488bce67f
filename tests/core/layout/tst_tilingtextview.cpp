#include "core/layout/labelcopypainter.h"
#include "core/layout/labeltextlayout.h"
#include "core/layout/measurement.h"
#include "core/layout/serialnumber.h"
#include "core/layout/sheetgeometry.h"
#include "core/layout/tilingtextview.h"
#include "core/printing/printplan.h"
#include "support/fatalstop.h"
#include "support/samplelabels.h"

#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QRawFont>
#include <QTest>
#include <QTextBlock>
#include <QtEndian>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>

using namespace lomir;
using namespace lomir::testing;

namespace {

// US Letter less half-inch margins: 5 columns and 14 rows of 100 x 50 point labels.
const QSizeF kPaper(612.0, 792.0);
const QMarginsF kMargins(36.0, 36.0, 36.0, 36.0);
const QSizeF kLabel(100.0, 50.0);

// Several runs: a bold centred line, a grey "Serial " and a red three-digit serial whose
// middle digit is bold, and a justified italic line in another family that wraps.
RichText richLabel()
{
    ParagraphStyle centered;
    centered.alignment = TextAlignment::Center;
    ParagraphStyle justified;
    justified.alignment = TextAlignment::Justified;

    TextAttributes title = arial(11.0, true);
    title.paragraph = centered;
    TextAttributes plain = arial(10.0);
    plain.foreground = Rgba{70, 70, 70, 255};
    TextAttributes serial = arial(10.0);
    serial.foreground = Rgba{200, 20, 20, 255};
    TextAttributes serialBold = arial(10.0, true);
    serialBold.foreground = serial.foreground;
    TextAttributes note;
    note.font = FontSpec{QStringLiteral("Liberation Serif"), QString(), 9.0, false, true};
    note.foreground = Rgba{0, 110, 40, 255};
    note.paragraph = justified;

    RichText text(QStringLiteral("Lot 42 Premium\n"), title);
    text.append(QStringLiteral("Serial "), plain);
    text.append(placeholderUnits(1), serial);
    text.append(placeholderUnits(1), serialBold);
    text.append(placeholderUnits(1), serial);
    text.append(QStringLiteral("\n"), plain);
    text.append(QStringLiteral("Store in a cool, dry place away from sunlight."), note);
    return text;
}

// A view made as the print job makes it, from a plan for the paper and its margins.
std::unique_ptr<TilingTextView> printView(const RichText& text, qint64 quantity, qint64 serialStart,
                                          const QSizeF& label = kLabel, double spacing = 0.0,
                                          const QSizeF& paper = kPaper,
                                          const QMarginsF& margins = kMargins)
{
    return makeTilingTextView(
        planForLabel(paper, margins, label, spacing, quantity, serialStart, text));
}

QRectF pageRect(const TilingTextView& view, qint64 page)
{
    return QRectF(0.0, double(page) * *view.pageHeight(), *view.pageWidth(), *view.pageHeight());
}

QImage blankPage(const TilingTextView& view, double pixelsPerPoint)
{
    QImage image(int(std::ceil(*view.pageWidth() * pixelsPerPoint)),
                 int(std::ceil(*view.pageHeight() * pixelsPerPoint)),
                 QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    return image;
}

// One page as the print system draws it: the view's coordinates moved so that the page
// rectangle lands on the image, at pixelsPerPoint.
QImage renderPage(const TilingTextView& view, const QRectF& rect, double pixelsPerPoint)
{
    QImage image = blankPage(view, pixelsPerPoint);
    QPainter painter(&image);
    painter.scale(pixelsPerPoint, pixelsPerPoint);
    painter.translate(0.0, -rect.top());
    view.drawRect(painter, rect);
    return image;
}

// The text of one copy, made the straightforward way.
RichText expectedCopyText(const TilingTextView& view, qint64 copy)
{
    if (!view.serialStringRange())
        return *view.text();
    return numberedText(*view.text(), *view.serialStringRange(),
                        serialText(copy, *view.serialStartFrom(), *view.serialDigitCount()));
}

// The same page drawn the straightforward way: every copy numbered, laid out and drawn
// on its own.
QImage renderStraightforward(const TilingTextView& view, const QRectF& rect, double pixelsPerPoint)
{
    QImage image = blankPage(view, pixelsPerPoint);
    QPainter painter(&image);
    painter.scale(pixelsPerPoint, pixelsPerPoint);
    painter.translate(0.0, -rect.top());
    for (const LabelCopy& copy : view.copiesOnPage(rect))
        drawLabelText(painter, expectedCopyText(view, copy.index), copy.rect);
    return image;
}

bool isInk(QRgb pixel)
{
    return pixel != qRgb(255, 255, 255);
}

int inkPixels(const QImage& image, const QRect& area)
{
    int count = 0;
    const QRect clipped = area & image.rect();
    for (int y = clipped.top(); y <= clipped.bottom(); ++y) {
        for (int x = clipped.left(); x <= clipped.right(); ++x)
            count += isInk(image.pixel(x, y)) ? 1 : 0;
    }
    return count;
}

// The pixels a rectangle in points touches, relative to the page's top.
QRect pixelArea(const QRectF& rect, double pageTop, double pixelsPerPoint)
{
    const int left = int(std::floor(rect.left() * pixelsPerPoint));
    const int top = int(std::floor((rect.top() - pageTop) * pixelsPerPoint));
    const int right = int(std::ceil(rect.right() * pixelsPerPoint));
    const int bottom = int(std::ceil((rect.bottom() - pageTop) * pixelsPerPoint));
    return QRect(QPoint(left, top), QPoint(right - 1, bottom - 1));
}

// Ink outside every one of the rectangles.
int inkOutside(const QImage& image, const std::vector<QRect>& areas)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (!isInk(image.pixel(x, y)))
                continue;
            const bool inside = std::any_of(areas.begin(), areas.end(),
                                            [&](const QRect& area) { return area.contains(x, y); });
            count += inside ? 0 : 1;
        }
    }
    return count;
}

QString imageDifference(const QImage& a, const QImage& b)
{
    if (a.size() != b.size())
        return QStringLiteral("sizes differ");
    int differing = 0;
    int largest = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            if (p == q)
                continue;
            ++differing;
            largest = std::max({largest, std::abs(qRed(p) - qRed(q)),
                                std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
        }
    }
    return QStringLiteral("%1 pixels differ, by up to %2").arg(differing).arg(largest);
}

// A copy of Liberation Sans whose "1" is half again as wide as the other digits, named
// "Proportion Sans": a face with proportional digits.
QString addProportionalDigitFont()
{
    QFile file(QStringLiteral("/usr/share/fonts/truetype/liberation2/LiberationSans-Regular.ttf"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArray font = file.readAll();
    const QRawFont raw(font, 12.0);
    const QList<quint32> one = raw.glyphIndexesForString(QStringLiteral("1"));
    if (one.size() != 1)
        return {};

    auto u16 = [&](qsizetype at) { return qFromBigEndian<quint16>(font.constData() + at); };
    auto u32 = [&](qsizetype at) { return qFromBigEndian<quint32>(font.constData() + at); };
    qsizetype hhea = -1, hmtx = -1, name = -1, nameLength = 0;
    for (int table = 0; table < u16(4); ++table) {
        const qsizetype record = 12 + 16 * table;
        const QByteArray tag = font.mid(record, 4);
        if (tag == "hhea")
            hhea = u32(record + 8);
        else if (tag == "hmtx")
            hmtx = u32(record + 8);
        else if (tag == "name") {
            name = u32(record + 8);
            nameLength = u32(record + 12);
        }
    }
    if (hhea < 0 || hmtx < 0 || name < 0 || one.front() >= u16(hhea + 34))
        return {};
    const qsizetype advance = hmtx + 4 * qsizetype(one.front());
    qToBigEndian<quint16>(quint16(u16(advance) * 3 / 2), font.data() + advance);

    // Rename the family in place (same length), in the name table only.
    QByteArray names = font.mid(name, nameLength);
    names.replace(QByteArray("Liberation"), QByteArray("Proportion"));
    const QString from = QStringLiteral("Liberation");
    const QString to = QStringLiteral("Proportion");
    QByteArray wideFrom, wideTo;
    for (int i = 0; i < from.size(); ++i) {
        wideFrom += '\0';
        wideFrom += char(from[i].unicode());
        wideTo += '\0';
        wideTo += char(to[i].unicode());
    }
    names.replace(wideFrom, wideTo);
    font.replace(name, nameLength, names);

    const int id = QFontDatabase::addApplicationFontFromData(font);
    const QStringList families = QFontDatabase::applicationFontFamilies(id);
    return families.isEmpty() ? QString() : families.front();
}

// Runs one of the cases that must stop the program, on a complete view with one property
// taken away or spoilt. Called in a child process; returning means no stop happened.
int runFatalCase(const char* name)
{
    auto view = printView(numberedLabel(3), 100, 1);
    const QString caseName = QString::fromLatin1(name);
    QRectF rect = pageRect(*view, 0);
    if (caseName == QStringLiteral("pageHeight"))
        view->setPageHeight(std::nullopt);
    else if (caseName == QStringLiteral("numberOfRowsOnAPage"))
        view->setNumberOfRowsOnAPage(std::nullopt);
    else if (caseName == QStringLiteral("numberOfColumns"))
        view->setNumberOfColumns(std::nullopt);
    else if (caseName == QStringLiteral("cellHeight"))
        view->setCellHeight(std::nullopt);
    else if (caseName == QStringLiteral("cellWidth"))
        view->setCellWidth(std::nullopt);
    else if (caseName == QStringLiteral("spacing"))
        view->setSpacing(std::nullopt);
    else if (caseName == QStringLiteral("quantity"))
        view->setQuantity(std::nullopt);
    else if (caseName == QStringLiteral("text"))
        view->setText(std::nullopt);
    else if (caseName == QStringLiteral("serialDigitCount"))
        view->setSerialDigitCount(std::nullopt);
    else if (caseName == QStringLiteral("serialStartFrom"))
        view->setSerialStartFrom(std::nullopt);
    else if (caseName == QStringLiteral("noRows"))
        view->setNumberOfRowsOnAPage(0);
    else if (caseName == QStringLiteral("noColumns"))
        view->setNumberOfColumns(-1);
    else if (caseName == QStringLiteral("firstCopyOverflow")) {
        view->setNumberOfRowsOnAPage(qint64(1) << 31);
        view->setNumberOfColumns(qint64(1) << 31);
        rect = pageRect(*view, 2);
    } else if (caseName == QStringLiteral("pageIndexOutOfRange"))
        rect.moveTop(1.0e300);
    else if (caseName == QStringLiteral("serialOverflow"))
        view->setSerialStartFrom(std::numeric_limits<qint64>::max());
    else if (caseName != QStringLiteral("harmless"))
        return 2;

    QImage image(100, 100, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    view->drawRect(painter, rect);
    return 0;
}

} // namespace

class TestTilingTextView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void constructionWithFrameLeavesPropertiesEmpty();
    void archiveWithEveryKey();
    void archiveWithMissingKeys();
    void archiveWithWrongTypes();

    void secondPageStartsWithCopySeventy();
    void sevenCopiesInFiveColumns();
    void rectangleOneAndAHalfPagesDown();
    void unnumberedCellsAreIdentical();

    void fastDrawingMatchesStraightforward_data();
    void fastDrawingMatchesStraightforward();
    void richTextFastDrawingMatchesStraightforward();
    void proportionalDigitsAreLaidOutByPattern();
    void negativeSerialNumbersAreDrawnPerCopy();
    void overflowingTextIsClippedToItsCell();
    void spacedPageDrawsOnlyInsideCells();
    void copyPainterIsKeptFromPageToPage();
    void measuredLabelDoesNotWrap_data();
    void measuredLabelDoesNotWrap();
    void veryLargeTypeIsDrawn();

    void fatalStops_data();
    void fatalStops();
    void harmlessCaseRunsToEnd();
};

void TestTilingTextView::constructionWithFrameLeavesPropertiesEmpty()
{
    const TilingTextView view(QRectF(0.0, 0.0, 540.0, 1440.0));
    QCOMPARE(view.frame(), QRectF(0.0, 0.0, 540.0, 1440.0));
    QVERIFY(view.isFlipped());
    QVERIFY(!view.text());
    QVERIFY(!view.quantity());
    QVERIFY(!view.serialStartFrom());
    QVERIFY(!view.serialDigitCount());
    QVERIFY(!view.cellWidth());
    QVERIFY(!view.cellHeight());
    QVERIFY(!view.pageWidth());
    QVERIFY(!view.pageHeight());
    QVERIFY(!view.numberOfColumns());
    QVERIFY(!view.numberOfRows());
    QVERIFY(!view.numberOfRowsOnAPage());
    QVERIFY(!view.numberOfPages());
    QVERIFY(!view.serialStringRange());
    QVERIFY(!view.spacing());
}

void TestTilingTextView::archiveWithEveryKey()
{
    const RichText text = numberedLabel(3);
    QVariantMap archive;
    archive[QStringLiteral("text")] = QVariant::fromValue(text);
    archive[QStringLiteral("quantity")] = qint64(100);
    archive[QStringLiteral("serialStartFrom")] = qint64(1);
    archive[QStringLiteral("serialDigitCount")] = qint64(3);
    archive[QStringLiteral("cellWidth")] = 100.5;
    archive[QStringLiteral("cellHeight")] = 50.25;
    archive[QStringLiteral("pageWidth")] = 540.0;
    archive[QStringLiteral("pageHeight")] = 720;
    archive[QStringLiteral("numberOfColumns")] = 5;
    archive[QStringLiteral("numberOfRows")] = 20;
    archive[QStringLiteral("numberOfRowsOnAPage")] = 14;
    archive[QStringLiteral("numberOfPages")] = 2.0;
    archive[QStringLiteral("serialStringRange")] = QVariant::fromValue(TextRange{4, 6});
    archive[QStringLiteral("spacing")] = 4.0f;

    const TilingTextView view(archive);
    QCOMPARE(view.text(), std::optional<RichText>(text));
    QCOMPARE(view.quantity(), std::optional<qint64>(100));
    QCOMPARE(view.serialStartFrom(), std::optional<qint64>(1));
    QCOMPARE(view.serialDigitCount(), std::optional<qint64>(3));
    QCOMPARE(view.cellWidth(), std::optional<double>(100.5));
    QCOMPARE(view.cellHeight(), std::optional<double>(50.25));
    QCOMPARE(view.pageWidth(), std::optional<double>(540.0));
    QCOMPARE(view.pageHeight(), std::optional<double>(720.0));
    QCOMPARE(view.numberOfColumns(), std::optional<qint64>(5));
    QCOMPARE(view.numberOfRows(), std::optional<qint64>(20));
    QCOMPARE(view.numberOfRowsOnAPage(), std::optional<qint64>(14));
    QCOMPARE(view.numberOfPages(), std::optional<qint64>(2));
    QCOMPARE(view.serialStringRange(), std::optional<TextRange>(TextRange{4, 6}));
    QCOMPARE(view.spacing(), std::optional<double>(4.0));

    // A restored view draws like one the print job set up.
    const auto printed = printView(text, 100, 1, QSizeF(96.5, 46.25), 4.0);
    const QRectF secondPage(0.0, 720.0, 540.0, 720.0);
    QCOMPARE(view.copiesOnPage(secondPage), printed->copiesOnPage(secondPage));
}

void TestTilingTextView::archiveWithMissingKeys()
{
    const TilingTextView view{QVariantMap()};
    // Integer keys always yield a value; a missing one reads 0.
    QCOMPARE(view.quantity(), std::optional<qint64>(0));
    QCOMPARE(view.serialStartFrom(), std::optional<qint64>(0));
    QCOMPARE(view.serialDigitCount(), std::optional<qint64>(0));
    QCOMPARE(view.numberOfColumns(), std::optional<qint64>(0));
    QCOMPARE(view.numberOfRows(), std::optional<qint64>(0));
    QCOMPARE(view.numberOfRowsOnAPage(), std::optional<qint64>(0));
    QCOMPARE(view.numberOfPages(), std::optional<qint64>(0));
    // Object keys leave their property empty.
    QVERIFY(!view.text());
    QVERIFY(!view.cellWidth());
    QVERIFY(!view.cellHeight());
    QVERIFY(!view.pageWidth());
    QVERIFY(!view.pageHeight());
    QVERIFY(!view.serialStringRange());
    QVERIFY(!view.spacing());
    QVERIFY(view.frame().isNull());
}

void TestTilingTextView::archiveWithWrongTypes()
{
    QVariantMap archive;
    archive[QStringLiteral("text")] = QStringLiteral("No. 001");
    archive[QStringLiteral("quantity")] = QStringLiteral("100");
    archive[QStringLiteral("serialStartFrom")] = -7.9;
    archive[QStringLiteral("serialDigitCount")] = QVariant::fromValue(numberedLabel(2));
    archive[QStringLiteral("cellWidth")] = QStringLiteral("100");
    archive[QStringLiteral("cellHeight")] = true;
    archive[QStringLiteral("pageWidth")] = QVariant::fromValue(TextRange{1, 2});
    archive[QStringLiteral("pageHeight")] = QVariant();
    archive[QStringLiteral("numberOfColumns")] = 1.0e300;
    archive[QStringLiteral("numberOfRows")] = std::numeric_limits<quint64>::max();
    archive[QStringLiteral("numberOfRowsOnAPage")] = 14u;
    archive[QStringLiteral("serialStringRange")] = QSize(4, 6);
    archive[QStringLiteral("spacing")] = QStringLiteral("4");

    const TilingTextView view(archive);
    QVERIFY(!view.text());
    QVERIFY(!view.cellWidth());
    QVERIFY(!view.cellHeight());
    QVERIFY(!view.pageWidth());
    QVERIFY(!view.pageHeight());
    QVERIFY(!view.serialStringRange());
    QVERIFY(!view.spacing());
    // Integers read what a number gives, truncated toward zero, and 0 for anything else.
    QCOMPARE(view.quantity(), std::optional<qint64>(0));
    QCOMPARE(view.serialStartFrom(), std::optional<qint64>(-7));
    QCOMPARE(view.serialDigitCount(), std::optional<qint64>(0));
    QCOMPARE(view.numberOfColumns(), std::optional<qint64>(0));
    QCOMPARE(view.numberOfRows(), std::optional<qint64>(0));
    QCOMPARE(view.numberOfRowsOnAPage(), std::optional<qint64>(14));
    QCOMPARE(view.numberOfPages(), std::optional<qint64>(0));
}

void TestTilingTextView::secondPageStartsWithCopySeventy()
{
    const auto view = printView(numberedLabel(3), 100, 1);
    QCOMPARE(*view->numberOfRowsOnAPage(), qint64(14));
    QCOMPARE(*view->numberOfColumns(), qint64(5));
    QCOMPARE(*view->numberOfPages(), qint64(2));
    QVERIFY(view->serialStringRange());

    const QRectF secondPage = pageRect(*view, 1);
    const std::vector<LabelCopy> copies = view->copiesOnPage(secondPage);
    QCOMPARE(copies.size(), std::size_t(30));
    QCOMPARE(copies.front().index, qint64(70));
    QCOMPARE(copies.front().rect, QRectF(0.0, 720.0, 100.0, 50.0));
    QCOMPARE(copies.back().index, qint64(99));
    QCOMPARE(copies.back().rect, QRectF(400.0, 720.0 + 5 * 50.0, 100.0, 50.0));
    // Copy 70 carries the number serialStartFrom + 70.
    QCOMPARE(expectedCopyText(*view, 70).string(), QStringLiteral("No. 071"));

    // What is drawn in the first cell is "No. 071", and the page as a whole is what
    // numbering, laying out and drawing each copy on its own gives.
    const QImage page = renderPage(*view, secondPage, 2.0);
    QImage firstCell(200, 100, QImage::Format_ARGB32_Premultiplied);
    firstCell.fill(Qt::white);
    {
        QPainter painter(&firstCell);
        painter.scale(2.0, 2.0);
        drawLabelText(painter, RichText(QStringLiteral("No. 071"), arial(12.0)),
                      QRectF(0.0, 0.0, 100.0, 50.0));
    }
    QCOMPARE(page.copy(0, 0, 200, 100), firstCell);
    const QImage straightforward = renderStraightforward(*view, secondPage, 2.0);
    QVERIFY2(page == straightforward, qPrintable(imageDifference(page, straightforward)));
}

void TestTilingTextView::sevenCopiesInFiveColumns()
{
    const auto view = printView(numberedLabel(1), 7, 1);
    QCOMPARE(*view->numberOfColumns(), qint64(5));
    const QRectF firstPage = pageRect(*view, 0);
    const std::vector<LabelCopy> copies = view->copiesOnPage(firstPage);
    QCOMPARE(copies.size(), std::size_t(7));
    for (qint64 copy = 0; copy < 7; ++copy) {
        QCOMPARE(copies[std::size_t(copy)].index, copy);
        QCOMPARE(copies[std::size_t(copy)].rect,
                 QRectF(double(copy % 5) * 100.0, double(copy / 5) * 50.0, 100.0, 50.0));
    }

    // A full first row, two cells of the second, and nothing anywhere else.
    const double scale = 1.5;
    const QImage page = renderPage(*view, firstPage, scale);
    std::vector<QRect> drawn;
    for (const LabelCopy& copy : copies) {
        drawn.push_back(pixelArea(copy.rect, 0.0, scale));
        QVERIFY(inkPixels(page, drawn.back()) > 0);
    }
    QCOMPARE(inkOutside(page, drawn), 0);
}

void TestTilingTextView::rectangleOneAndAHalfPagesDown()
{
    const auto view = printView(numberedLabel(3), 100, 1);
    const double top = 1.5 * *view->pageHeight();
    const QRectF rect(0.0, top, *view->pageWidth(), *view->pageHeight());
    const std::vector<LabelCopy> copies = view->copiesOnPage(rect);
    // Page index 1 by truncation; cells hang from the rectangle's own top.
    QCOMPARE(copies.size(), std::size_t(30));
    QCOMPARE(copies.front().index, qint64(70));
    QCOMPARE(copies.front().rect, QRectF(0.0, top, 100.0, 50.0));
    QCOMPARE(copies[5].rect, QRectF(0.0, top + 50.0, 100.0, 50.0));

    const QImage page = renderPage(*view, rect, 2.0);
    const QImage straightforward = renderStraightforward(*view, rect, 2.0);
    QVERIFY2(page == straightforward, qPrintable(imageDifference(page, straightforward)));
    std::vector<QRect> drawn;
    for (const LabelCopy& copy : copies)
        drawn.push_back(pixelArea(copy.rect, top, 2.0));
    QCOMPARE(inkOutside(page, drawn), 0);
    QVERIFY(inkPixels(page, drawn.front()) > 0);
}

void TestTilingTextView::unnumberedCellsAreIdentical()
{
    // Two units where the print needs three: the run is not located, so every copy shows
    // the text as it stands, placeholder marks and all.
    const RichText text = numberedLabel(2);
    const auto view = printView(text, 12, 95);
    QVERIFY(!view->serialStringRange());
    const QRectF firstPage = pageRect(*view, 0);
    const std::vector<LabelCopy> copies = view->copiesOnPage(firstPage);
    QCOMPARE(copies.size(), std::size_t(12));

    const double scale = 2.0;
    const QImage page = renderPage(*view, firstPage, scale);
    QImage expected(200, 100, QImage::Format_ARGB32_Premultiplied);
    expected.fill(Qt::white);
    {
        QPainter painter(&expected);
        painter.scale(scale, scale);
        drawLabelText(painter, text, QRectF(0.0, 0.0, 100.0, 50.0));
    }
    QVERIFY(inkPixels(expected, expected.rect()) > 0);
    for (const LabelCopy& copy : copies) {
        const QRect area = pixelArea(copy.rect, 0.0, scale);
        QCOMPARE(page.copy(area), expected);
    }

    // The marks are really there: "#" is drawn, unlike a "0".
    QImage digits = expected;
    digits.fill(Qt::white);
    {
        QPainter painter(&digits);
        painter.scale(scale, scale);
        drawLabelText(painter, RichText(QStringLiteral("No. 00"), arial(12.0)),
                      QRectF(0.0, 0.0, 100.0, 50.0));
    }
    QVERIFY(digits != expected);
}

void TestTilingTextView::fastDrawingMatchesStraightforward_data()
{
    QTest::addColumn<RichText>("text");
    QTest::addColumn<qint64>("quantity");
    QTest::addColumn<qint64>("serialStart");
    QTest::addColumn<double>("spacing");
    QTest::addColumn<qint64>("page");
    QTest::addColumn<double>("pixelsPerPoint");
    QTest::addColumn<bool>("fromSharedLayout");
    QTest::addColumn<int>("digitGroups");

    // Arial kerns "11": the ones are a group of their own, every other digit leaves all
    // glyphs where they are. Pages with 011, 111, 1011 and so on show that.
    QTest::newRow("numbered") << numberedLabel(3) << qint64(100) << qint64(1) << 0.0 << qint64(0)
                              << 2.0 << true << 2;
    QTest::newRow("second page") << numberedLabel(3) << qint64(100) << qint64(1) << 0.0 << qint64(1)
                                 << 2.0 << true << 2;
    QTest::newRow("spaced") << numberedLabel(4) << qint64(1000) << qint64(1000) << 4.0 << qint64(0)
                            << 3.0 << true << 2;
    TextAttributes dejaVu;
    dejaVu.font = FontSpec{QStringLiteral("DejaVu Sans"), QString(), 11.0, false, false};
    QTest::newRow("font without kerning")
        << RichText(QStringLiteral("Nr. ") + placeholderUnits(3), dejaVu) << qint64(200)
        << qint64(100) << 0.0 << qint64(0) << 2.0 << true << 1;
    QTest::newRow("unnumbered") << RichText(QStringLiteral("Fragile"), arial(14.0)) << qint64(40)
                                << qint64(0) << 0.0 << qint64(0) << 1.0 << true << 0;

    TextAttributes underlined = arial(12.0);
    underlined.underline = LineStyle::Single;
    underlined.background = Rgba{255, 240, 120, 255};
    RichText decorated(QStringLiteral("No. "), arial(12.0));
    decorated.append(placeholderUnits(2), underlined);
    QTest::newRow("underline and background")
        << decorated << qint64(30) << qint64(5) << 0.0 << qint64(0) << 2.0 << false << 0;
}

void TestTilingTextView::fastDrawingMatchesStraightforward()
{
    QFETCH(RichText, text);
    QFETCH(qint64, quantity);
    QFETCH(qint64, serialStart);
    QFETCH(double, spacing);
    QFETCH(qint64, page);
    QFETCH(double, pixelsPerPoint);
    QFETCH(bool, fromSharedLayout);
    QFETCH(int, digitGroups);

    const auto view = printView(text, quantity, serialStart, kLabel, spacing);
    const QRectF rect = pageRect(*view, page);
    const QImage fast = renderPage(*view, rect, pixelsPerPoint);
    const QImage straightforward = renderStraightforward(*view, rect, pixelsPerPoint);
    QVERIFY(inkPixels(fast, fast.rect()) > 0);
    QVERIFY2(fast == straightforward, qPrintable(imageDifference(fast, straightforward)));

    std::optional<SerialNumbering> numbering;
    if (view->serialStringRange())
        numbering =
            SerialNumbering{*view->serialStringRange(), serialStart, *view->serialDigitCount()};
    const LabelCopyPainter painter(text, numbering, kLabel);
    QCOMPARE(painter.drawsFromSharedLayout(), fromSharedLayout);
    QCOMPARE(painter.digitGroupCount(), digitGroups);
}

void TestTilingTextView::richTextFastDrawingMatchesStraightforward()
{
    const RichText text = richLabel();
    // Narrower than the italic line, which wraps; as tall as the wrapped text.
    const double width = 120.0;
    const LabelTextLayout layout(text, width);
    QVERIFY(layout.document().blockCount() == 3);
    QVERIFY2(layout.document().lastBlock().layout()->lineCount() >= 2, "the italic line wraps");
    const QSizeF label(width, std::ceil(layout.size().height()) + 1.0);

    const auto view = printView(text, 250, 7, label);
    QVERIFY(view->serialStringRange());
    const LabelCopyPainter painter(
        text, SerialNumbering{*view->serialStringRange(), 7, *view->serialDigitCount()}, label);
    QVERIFY(painter.drawsFromSharedLayout());
    QVERIFY(!painter.clipsCopies());

    for (qint64 page : {qint64(0), qint64(1)}) {
        const QRectF rect = pageRect(*view, page);
        for (double pixelsPerPoint : {1.0, 2.5}) {
            const QImage fast = renderPage(*view, rect, pixelsPerPoint);
            const QImage straightforward = renderStraightforward(*view, rect, pixelsPerPoint);
            QVERIFY2(fast == straightforward, qPrintable(imageDifference(fast, straightforward)));
        }
    }

    // The colours of the runs are on the page: red digits, green note, grey "Serial".
    const QImage fast = renderPage(*view, pageRect(*view, 0), 3.0);
    bool red = false, green = false;
    for (int y = 0; y < int(label.height() * 3); ++y) {
        for (int x = 0; x < int(label.width() * 3); ++x) {
            const QColor color = fast.pixelColor(x, y);
            red |= color.red() > 150 && color.green() < 90 && color.blue() < 90;
            green |= color.green() > 80 && color.red() < 40 && color.blue() < 80;
        }
    }
    QVERIFY(red);
    QVERIFY(green);
}

void TestTilingTextView::proportionalDigitsAreLaidOutByPattern()
{
    const QString family = addProportionalDigitFont();
    if (family.isEmpty())
        QSKIP("Liberation Sans (fonts-liberation2) is needed to make a face with "
              "proportional digits");
    const QRawFont raw = QRawFont::fromFont(QFont(family, 12));
    const QList<QPointF> advances = raw.advancesForGlyphIndexes(
        raw.glyphIndexesForString(QStringLiteral("01")), QRawFont::UseDesignMetrics);
    QVERIFY(advances[1].x() > advances[0].x() * 1.4);

    TextAttributes attributes;
    attributes.font = FontSpec{family, QString(), 12.0, false, false};
    ParagraphStyle centered;
    centered.alignment = TextAlignment::Center;
    attributes.paragraph = centered;
    const RichText text(QStringLiteral("Box ") + placeholderUnits(2) + QStringLiteral(" of 99"),
                        attributes);
    const auto view = printView(text, 20, 5);
    // The wider "1" changes where everything after it goes: numbers are drawn from the
    // layout of their pattern of ones, the other digits being interchangeable.
    const LabelCopyPainter painter(
        text, SerialNumbering{*view->serialStringRange(), 5, *view->serialDigitCount()}, kLabel);
    QVERIFY(painter.drawsFromSharedLayout());
    QCOMPARE(painter.digitGroupCount(), 2);

    const QRectF rect = pageRect(*view, 0);
    const QImage fast = renderPage(*view, rect, 2.0);
    const QImage straightforward = renderStraightforward(*view, rect, 2.0);
    QVERIFY2(fast == straightforward, qPrintable(imageDifference(fast, straightforward)));
}

void TestTilingTextView::negativeSerialNumbersAreDrawnPerCopy()
{
    // From -5 the numbers "-5" to "-1" are longer than the one digit planned; they are
    // laid out on their own, the others come from the shared layout.
    const auto view = printView(numberedLabel(1), 10, -5);
    QCOMPARE(*view->serialDigitCount(), qint64(1));
    QVERIFY(view->serialStringRange());
    QCOMPARE(expectedCopyText(*view, 0).string(), QStringLiteral("No. -5"));
    const QRectF rect = pageRect(*view, 0);
    const QImage fast = renderPage(*view, rect, 2.0);
    const QImage straightforward = renderStraightforward(*view, rect, 2.0);
    QVERIFY2(fast == straightforward, qPrintable(imageDifference(fast, straightforward)));
}

void TestTilingTextView::overflowingTextIsClippedToItsCell()
{
    // A label too small for its text: the text wraps and is cut at the cell's edges.
    const RichText text(QStringLiteral("Keep refrigerated ") + placeholderUnits(2) +
                            QStringLiteral(" after opening"),
                        arial(16.0));
    const QSizeF label(70.0, 30.0);
    const auto view = printView(text, 40, 0, label, 4.0);
    const LabelCopyPainter painter(
        text, SerialNumbering{*view->serialStringRange(), 0, *view->serialDigitCount()}, label);
    QVERIFY(painter.drawsFromSharedLayout());
    QVERIFY(painter.clipsCopies());

    const QRectF rect = pageRect(*view, 0);
    const double scale = 2.0;
    const QImage fast = renderPage(*view, rect, scale);
    const QImage straightforward = renderStraightforward(*view, rect, scale);
    QVERIFY2(fast == straightforward, qPrintable(imageDifference(fast, straightforward)));
    std::vector<QRect> drawn;
    for (const LabelCopy& copy : view->copiesOnPage(rect)) {
        drawn.push_back(pixelArea(copy.rect, 0.0, scale));
        QVERIFY(inkPixels(fast, drawn.back()) > 0);
    }
    QCOMPARE(inkOutside(fast, drawn), 0);
}

void TestTilingTextView::spacedPageDrawsOnlyInsideCells()
{
    // A label measured to its text, spaced apart: ink only inside the cells' text
    // rectangles, none in the gaps, and some in every cell that holds a copy.
    const RichText text(QStringLiteral("Batch No. ") + placeholderUnits(4), arial(12.0));
    const LabelTextLayout layout(text, std::nullopt);
    const QSizeF label(std::ceil(layout.size().width()) + 2.0, std::ceil(layout.size().height()));
    const auto view = printView(text, 300, 0, label, 4.0);
    const QRectF rect = pageRect(*view, 0);
    const std::vector<LabelCopy> copies = view->copiesOnPage(rect);
    QCOMPARE(qint64(copies.size()), *view->numberOfRowsOnAPage() * *view->numberOfColumns());
    QCOMPARE(copies.front().rect.topLeft(), QPointF(2.0, 2.0));

    const double scale = 4.0;
    const QImage page = renderPage(*view, rect, scale);
    std::vector<QRect> drawn;
    for (const LabelCopy& copy : copies) {
        drawn.push_back(pixelArea(copy.rect, 0.0, scale));
        QVERIFY2(inkPixels(page, drawn.back()) > 0, qPrintable(QString::number(copy.index)));
    }
    QCOMPARE(inkOutside(page, drawn), 0);
}

void TestTilingTextView::copyPainterIsKeptFromPageToPage()
{
    // Drawing a later page with the same view and then with a changed text gives what a
    // fresh view gives: the laid-out label follows the properties.
    const auto view = printView(numberedLabel(3), 100, 1);
    const QRectF secondPage = pageRect(*view, 1);
    (void)renderPage(*view, pageRect(*view, 0), 1.0);
    const QImage again = renderPage(*view, secondPage, 2.0);
    QVERIFY(again == renderStraightforward(*view, secondPage, 2.0));

    view->setText(RichText(QStringLiteral("Lot ") + placeholderUnits(3), arial(10.0, true)));
    view->setSerialStringRange(locateSerialRun(view->text()->string(), 3));
    const QImage changed = renderPage(*view, secondPage, 2.0);
    QVERIFY(changed != again);
    QVERIFY(changed == renderStraightforward(*view, secondPage, 2.0));
}

void TestTilingTextView::measuredLabelDoesNotWrap_data()
{
    QTest::addColumn<RichText>("text");

    for (double size : {4.0, 7.0, 9.5, 12.0, 13.37, 36.0, 144.0}) {
        QTest::addRow("Arial %g", size)
            << RichText(QStringLiteral("Batch No. 0123456789 WAVE fifi"), arial(size));
    }
    TextAttributes serif;
    serif.font = FontSpec{QStringLiteral("Liberation Serif"), QString(), 10.5, false, true};
    RichText mixed(QStringLiteral("Lot "), arial(11.0, true));
    mixed.append(QStringLiteral("Premium Blend\nSerial "), serif);
    mixed.append(QStringLiteral("0042 of a long second line"), arial(8.25));
    QTest::newRow("runs and lines") << mixed;
    QTest::newRow("rich label") << richLabel();
    // Runs without a font are Helvetica, which most desktops resolve to Nimbus Sans (from
    // the URW fonts), whose ascent and descent come out in whole layout pixels; Times and
    // Courier resolve to URW faces there too.
    QTest::newRow("no font") << RichText(QStringLiteral("Batch No. 0123456789 WAVE fifi\nLot 7"));
    for (const char* family : {"Helvetica", "Times", "Courier"}) {
        for (double size : {4.0, 9.5, 13.37, 144.0}) {
            TextAttributes face;
            face.font = FontSpec{QString::fromLatin1(family), QString(), size, false, false};
            QTest::addRow("%s %g", family, size)
                << RichText(QStringLiteral("Batch No. 0123456789 WAVE fifi"), face);
        }
    }
}

void TestTilingTextView::measuredLabelDoesNotWrap()
{
    // A label made as wide as the measured text holds each of its lines on one line, and
    // the measured height holds them all: printing lays text out as it is measured.
    QFETCH(RichText, text);
    const double width = widestLineWidth(text);
    const LabelTextLayout layout(text, width);
    const QTextDocument& document = layout.document();
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        QCOMPARE(block.layout()->lineCount(), 1);
    // The text's natural width is the measured one, less its 2 points of padding.
    const double natural = document.idealWidth() / layout.unitsPerPoint();
    QVERIFY2(std::abs(natural - (width - 2.0)) < 0.01,
             qPrintable(QStringLiteral("%1 laid out, %2 measured").arg(natural).arg(width - 2.0)));
    // The text engine rounds each line's height up to a whole layout unit.
    const double rounding = double(document.blockCount()) / layout.unitsPerPoint();
    QVERIFY2(layout.size().height() <= textHeight(text) + rounding,
             qPrintable(QStringLiteral("%1 laid out, %2 measured")
                            .arg(layout.size().height())
                            .arg(textHeight(text))));

    // Half a point less and the widest line wraps.
    const LabelTextLayout narrower(text, width - 2.5);
    int lines = 0;
    for (QTextBlock block = narrower.document().begin(); block.isValid(); block = block.next())
        lines += block.layout()->lineCount();
    QVERIFY(lines > document.blockCount());
}

void TestTilingTextView::veryLargeTypeIsDrawn()
{
    // 800 point type would make faces too large for the font engine at the usual
    // resolution; it is laid out at a lower one and still drawn, numbered, from the
    // shared layout, and as tall as it is.
    const RichText text(QStringLiteral("N") + placeholderUnits(1), arial(800.0));
    const LabelTextLayout layout(text, std::nullopt);
    QVERIFY(layout.unitsPerPoint() < 100.0);
    QVERIFY(layout.size().width() > 800.0);
    QVERIFY(layout.size().height() > 800.0);

    const QSizeF label(std::ceil(layout.size().width()) + 2.0, std::ceil(layout.size().height()));
    const QSizeF paper(1500.0, 1000.0);
    const auto view = printView(text, 3, 5, label, 0.0, paper, QMarginsF());
    QVERIFY(view->serialStringRange());
    const LabelCopyPainter painter(text, SerialNumbering{*view->serialStringRange(), 5, 1}, label);
    QVERIFY(painter.drawsFromSharedLayout());
    const QRectF rect = pageRect(*view, 0);
    const QImage fast = renderPage(*view, rect, 0.25);
    const QImage straightforward = renderStraightforward(*view, rect, 0.25);
    QVERIFY(inkPixels(fast, fast.rect()) > 1000);
    QVERIFY2(fast == straightforward, qPrintable(imageDifference(fast, straightforward)));
}

void TestTilingTextView::fatalStops_data()
{
    QTest::addColumn<QString>("caseName");
    for (const char* name :
         {"pageHeight", "numberOfRowsOnAPage", "numberOfColumns", "cellHeight", "cellWidth",
          "spacing", "quantity", "text", "serialDigitCount", "serialStartFrom", "noRows",
          "noColumns", "firstCopyOverflow", "pageIndexOutOfRange", "serialOverflow"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestTilingTextView::fatalStops()
{
    QFETCH(QString, caseName);
    lomir::testing::verifyStops(caseName, QString());
}

void TestTilingTextView::harmlessCaseRunsToEnd()
{
    // The same harness on the complete view: the child must end normally, so a crash seen
    // above is the fatal stop and not the harness.
    lomir::testing::verifyRunsToEnd(QStringLiteral("harmless"));
}

LOMIR_TEST_MAIN_WITH_FATAL_CASES(QGuiApplication, TestTilingTextView)

#include "tst_tilingtextview.moc"
