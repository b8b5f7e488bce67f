#include "core/layout/tilingtextview.h"
#include "core/printing/printplan.h"
#include "support/fatalstop.h"
#include "support/samplelabels.h"

#include <QGuiApplication>
#include <QTest>
#include <cstring>

using namespace lomir;
using namespace lomir::testing;

namespace {

// US Letter with half-inch margins: a printable area of 540 x 720 points, where 5 columns
// and 14 rows of 100 x 50 point labels fit.
const QSizeF kLetter(612.0, 792.0);
const QMarginsF kHalfInch(36.0, 36.0, 36.0, 36.0);
const QSizeF kLabel(100.0, 50.0);
// The tag of a size item that makes the label as large as its text, and of the custom one.
constexpr qint64 kTextSizeTag = 2;
constexpr qint64 kCustomTag = 1;

RichText label(const QString& text)
{
    return RichText(text, arial(12.0));
}

// A request on Letter paper with half-inch margins, spacing off, for a 100 x 50 label.
PrintRequest letterRequest(const QString& quantity, const QString& serialStart,
                           const RichText& text = numberedLabel(2))
{
    PrintRequest request;
    request.paper = kLetter;
    request.margins = kHalfInch;
    request.spacingTag = 0;
    request.labelSize = kLabel;
    request.serialStartText = serialStart;
    request.quantityText = quantity;
    request.text = text;
    return request;
}

int runFatalCase(const char* name)
{
    const PrintPlan plan = planFromRequest(letterRequest(QStringLiteral("25"), QString()));
    if (std::strcmp(name, "zeroQuantity") == 0) {
        // "00" in the quantity field: no columns, and 0 / 0 rows.
        (void)makeTilingTextView(planFromRequest(letterRequest(QStringLiteral("00"), QString())));
    } else if (std::strcmp(name, "zeroCellFullPage") == 0) {
        PrintPlan empty = plan;
        empty.cell = CellSize{0.0, 0.0};
        (void)fullPageCount(empty);
    } else if (std::strcmp(name, "harmless") == 0) {
        (void)fullPageCount(plan);
        (void)makeTilingTextView(plan);
    } else {
        return 2;
    }
    return 0;
}

} // namespace

class TestPrintPlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void planFromRequest_data()
    {
        QTest::addColumn<bool>("hasSpacingTag");
        QTest::addColumn<qint64>("spacingTag");
        QTest::addColumn<QSizeF>("labelSize");
        QTest::addColumn<QString>("quantityText");
        QTest::addColumn<QString>("serialStartText");
        QTest::addColumn<double>("spacing");
        QTest::addColumn<QSizeF>("cell");
        QTest::addColumn<qint64>("quantity");
        QTest::addColumn<qint64>("serialStart");

        QTest::newRow("spacing off, 3 labels")
            << true << qint64(0) << kLabel << QStringLiteral("3") << QString() << 0.0 << kLabel
            << qint64(3) << qint64(0);
        QTest::newRow("spacing tag 1: cells of 104 x 54")
            << true << qint64(1) << kLabel << QStringLiteral("3") << QString() << 4.0
            << QSizeF(104.0, 54.0) << qint64(3) << qint64(0);
        QTest::newRow("another tag: no spacing")
            << true << qint64(2) << kLabel << QStringLiteral("3") << QString() << 0.0 << kLabel
            << qint64(3) << qint64(0);
        QTest::newRow("no selected item: no spacing")
            << false << qint64(0) << kLabel << QStringLiteral("3") << QString() << 0.0 << kLabel
            << qint64(3) << qint64(0);
        QTest::newRow("empty quantity prints one")
            << true << qint64(0) << kLabel << QString() << QString() << 0.0 << kLabel << qint64(1)
            << qint64(0);
        QTest::newRow("unreadable quantity prints one")
            << true << qint64(0) << kLabel << QStringLiteral("12a") << QString() << 0.0 << kLabel
            << qint64(1) << qint64(0);
        QTest::newRow("quantity with a blank prints one")
            << true << qint64(0) << kLabel << QStringLiteral(" 12") << QString() << 0.0 << kLabel
            << qint64(1) << qint64(0);
        QTest::newRow("quantity past 64 bits prints one")
            << true << qint64(0) << kLabel << QStringLiteral("9223372036854775808") << QString()
            << 0.0 << kLabel << qint64(1) << qint64(0);
        QTest::newRow("quantity 00 is 0") << true << qint64(0) << kLabel << QStringLiteral("00")
                                          << QString() << 0.0 << kLabel << qint64(0) << qint64(0);
        QTest::newRow("plus sign")
            << true << qint64(0) << kLabel << QStringLiteral("+12") << QStringLiteral("+7") << 0.0
            << kLabel << qint64(12) << qint64(7);
        QTest::newRow("negative first number")
            << true << qint64(0) << kLabel << QStringLiteral("25") << QStringLiteral("-5") << 0.0
            << kLabel << qint64(25) << qint64(-5);
        QTest::newRow("unreadable first number starts at 0")
            << true << qint64(0) << kLabel << QStringLiteral("25") << QStringLiteral("1e3") << 0.0
            << kLabel << qint64(25) << qint64(0);
        QTest::newRow("first number 100")
            << true << qint64(0) << kLabel << QStringLiteral("25") << QStringLiteral("100") << 0.0
            << kLabel << qint64(25) << qint64(100);
        // The cell is rounded up at the sixth decimal: noise below it is shed, anything
        // above it makes the cell a millionth larger, never smaller.
        QTest::newRow("noise below a millionth is shed")
            << true << qint64(0) << QSizeF(99.99999999, 49.999999999) << QStringLiteral("1")
            << QString() << 0.0 << kLabel << qint64(1) << qint64(0);
        QTest::newRow("a fraction of a millionth rounds up")
            << true << qint64(0) << QSizeF(100.0000001, 50.0) << QStringLiteral("1") << QString()
            << 0.0 << QSizeF(100.000001, 50.0) << qint64(1) << qint64(0);
        QTest::newRow("spacing added before rounding")
            << true << qint64(1) << QSizeF(99.99999999, 50.25) << QStringLiteral("1") << QString()
            << 4.0 << QSizeF(104.0, 54.25) << qint64(1) << qint64(0);
    }

    void planFromRequest()
    {
        QFETCH(bool, hasSpacingTag);
        QFETCH(qint64, spacingTag);
        QFETCH(QSizeF, labelSize);
        QFETCH(QString, quantityText);
        QFETCH(QString, serialStartText);
        QFETCH(double, spacing);
        QFETCH(QSizeF, cell);
        QFETCH(qint64, quantity);
        QFETCH(qint64, serialStart);

        PrintRequest request = letterRequest(quantityText, serialStartText);
        request.spacingTag = hasSpacingTag ? std::optional<qint64>(spacingTag) : std::nullopt;
        request.labelSize = labelSize;
        request.fullPage = true;
        const PrintPlan plan = lomir::planFromRequest(request);
        QCOMPARE(plan.paper, kLetter);
        QCOMPARE(plan.margins, kHalfInch);
        QCOMPARE(plan.spacing, spacing);
        QCOMPARE(plan.cell.width, cell.width());
        QCOMPARE(plan.cell.height, cell.height());
        QCOMPARE(plan.quantity, quantity);
        QCOMPARE(plan.serialStart, serialStart);
        QCOMPARE(plan.text, request.text);
        QVERIFY(plan.fullPage);
    }

    void printableSize_data()
    {
        QTest::addColumn<QSizeF>("paper");
        QTest::addColumn<QMarginsF>("margins");
        QTest::addColumn<QSizeF>("printable");
        QTest::newRow("Letter, half inch") << kLetter << kHalfInch << QSizeF(540.0, 720.0);
        QTest::newRow("Letter, unequal")
            << kLetter << QMarginsF(18.0, 36.0, 54.0, 72.0) << QSizeF(540.0, 684.0);
        QTest::newRow("label roll, no margins")
            << QSizeF(175.75, 82.2) << QMarginsF() << QSizeF(175.75, 82.2);
    }

    void printableSize()
    {
        QFETCH(QSizeF, paper);
        QFETCH(QMarginsF, margins);
        QFETCH(QSizeF, printable);
        PrintPlan plan;
        plan.paper = paper;
        plan.margins = margins;
        QCOMPARE(lomir::printableSize(plan), printable);
    }

    // The condition of the cell size alert: the print is refused when it does not fit.
    void fitTest_data()
    {
        QTest::addColumn<QSizeF>("labelSize");
        QTest::addColumn<qint64>("spacingTag");
        QTest::addColumn<bool>("fits");
        QTest::newRow("100 x 50") << kLabel << qint64(0) << true;
        QTest::newRow("exactly as wide") << QSizeF(540.0, 50.0) << qint64(0) << true;
        QTest::newRow("exactly as high") << QSizeF(100.0, 720.0) << qint64(0) << true;
        QTest::newRow("the whole area") << QSizeF(540.0, 720.0) << qint64(0) << true;
        QTest::newRow("a millionth wider") << QSizeF(540.000001, 50.0) << qint64(0) << false;
        QTest::newRow("a millionth higher") << QSizeF(100.0, 720.000001) << qint64(0) << false;
        QTest::newRow("a fraction of a millionth wider rounds up")
            << QSizeF(540.0000001, 50.0) << qint64(0) << false;
        QTest::newRow("fits only without spacing") << QSizeF(538.0, 50.0) << qint64(1) << false;
        QTest::newRow("fits with spacing") << QSizeF(536.0, 716.0) << qint64(1) << true;
    }

    void fitTest()
    {
        QFETCH(QSizeF, labelSize);
        QFETCH(qint64, spacingTag);
        QFETCH(bool, fits);
        PrintRequest request = letterRequest(QStringLiteral("1"), QString());
        request.labelSize = labelSize;
        request.spacingTag = spacingTag;
        QCOMPARE(planFits(lomir::planFromRequest(request)), fits);
    }

    void labelTheSizeOfTheRollFits_data()
    {
        QTest::addColumn<double>("widthMillimeters");
        QTest::addColumn<double>("heightMillimeters");
        QTest::addColumn<qint64>("spacingTag");
        QTest::addColumn<double>("labelLessMillimeters");
        QTest::addColumn<bool>("fits");
        QTest::newRow("62 x 29 mm on 62 x 29 mm") << 62.0 << 29.0 << qint64(0) << 0.0 << true;
        QTest::newRow("102 x 152 mm on 102 x 152 mm") << 102.0 << 152.0 << qint64(0) << 0.0 << true;
        QTest::newRow("54 x 17 mm on 54 x 17 mm") << 54.0 << 17.0 << qint64(0) << 0.0 << true;
        QTest::newRow("a hundredth of a millimetre larger than the roll")
            << 62.0 << 29.0 << qint64(0) << -0.01 << false;
        QTest::newRow("spaced: the label as much smaller as the spacing")
            << 62.0 << 29.0 << qint64(1) << 4.0 * 0.3527777777777778 << true;
    }

    void labelTheSizeOfTheRollFits()
    {
        // The label's size typed in millimetres, converted as the editor converts it; the
        // roll's paper converted as print settings in millimetres are. Both carry noise
        // past the sixth decimal; one label a page still fits.
        QFETCH(double, widthMillimeters);
        QFETCH(double, heightMillimeters);
        QFETCH(qint64, spacingTag);
        QFETCH(double, labelLessMillimeters);
        QFETCH(bool, fits);
        const double editorMillimeter = 0.3527777777777778;
        PrintRequest request = letterRequest(QStringLiteral("3"), QString());
        request.paper = QSizeF(widthMillimeters * 72.0 / 25.4, heightMillimeters * 72.0 / 25.4);
        request.margins = QMarginsF();
        request.spacingTag = spacingTag;
        request.labelSize = QSizeF((widthMillimeters - labelLessMillimeters) / editorMillimeter,
                                   (heightMillimeters - labelLessMillimeters) / editorMillimeter);
        const PrintPlan plan = lomir::planFromRequest(request);
        QCOMPARE(planFits(plan), fits);
        if (!fits)
            return;
        const auto view = makeTilingTextView(plan);
        QCOMPARE(*view->numberOfColumns(), qint64(1));
        QCOMPARE(*view->numberOfRowsOnAPage(), qint64(1));
        QCOMPARE(*view->numberOfPages(), qint64(3));
    }

    void fullPageCount_data()
    {
        QTest::addColumn<QSizeF>("labelSize");
        QTest::addColumn<qint64>("spacingTag");
        QTest::addColumn<QString>("quantityText");
        QTest::addColumn<QString>("serialStartText");
        QTest::addColumn<RichText>("text");
        QTest::addColumn<qint64>("columns");
        QTest::addColumn<qint64>("rows");
        QTest::addColumn<qint64>("quantity");
        QTest::addColumn<qint64>("digitsBefore");
        QTest::addColumn<qint64>("digitsAfter");
        QTest::addColumn<bool>("resizes");

        QTest::newRow("70 cells, quantity 10 from 1: two digits either way")
            << kLabel << qint64(0) << QStringLiteral("10") << QStringLiteral("1")
            << numberedLabel(2) << qint64(5) << qint64(14) << qint64(70) << qint64(2) << qint64(2)
            << false;
        QTest::newRow("70 cells, quantity 5 from 1: widened to two digits")
            << kLabel << qint64(0) << QStringLiteral("5") << QStringLiteral("1") << numberedLabel(1)
            << qint64(5) << qint64(14) << qint64(70) << qint64(1) << qint64(2) << true;
        QTest::newRow("no placeholder: nothing to resize")
            << kLabel << qint64(0) << QStringLiteral("5") << QStringLiteral("1")
            << label(QStringLiteral("Fragile")) << qint64(5) << qint64(14) << qint64(70)
            << qint64(1) << qint64(2) << false;
        QTest::newRow("a run of another length is still resized")
            << kLabel << qint64(0) << QStringLiteral("5") << QStringLiteral("1") << numberedLabel(3)
            << qint64(5) << qint64(14) << qint64(70) << qint64(1) << qint64(2) << true;
        QTest::newRow("quantity 1000: narrowed to two digits")
            << kLabel << qint64(0) << QStringLiteral("1000") << QString() << numberedLabel(4)
            << qint64(5) << qint64(14) << qint64(70) << qint64(4) << qint64(2) << true;
        QTest::newRow("spaced: 5 columns of 104, 13 rows of 54")
            << kLabel << qint64(1) << QStringLiteral("1") << QString() << numberedLabel(1)
            << qint64(5) << qint64(13) << qint64(65) << qint64(1) << qint64(2) << true;
        QTest::newRow("unreadable quantity counts as one")
            << kLabel << qint64(0) << QStringLiteral("x") << QStringLiteral("95")
            << numberedLabel(2) << qint64(5) << qint64(14) << qint64(70) << qint64(2) << qint64(3)
            << true;
        QTest::newRow("too wide: no copies, and the fit test refuses")
            << QSizeF(541.0, 50.0) << qint64(0) << QStringLiteral("25") << QString()
            << numberedLabel(2) << qint64(0) << qint64(14) << qint64(0) << qint64(2) << qint64(1)
            << true;
        QTest::newRow("a cell exactly the printable area: one copy")
            << QSizeF(540.0, 720.0) << qint64(0) << QStringLiteral("12") << QString()
            << numberedLabel(2) << qint64(1) << qint64(1) << qint64(1) << qint64(2) << qint64(1)
            << true;
    }

    void fullPageCount()
    {
        QFETCH(QSizeF, labelSize);
        QFETCH(qint64, spacingTag);
        QFETCH(QString, quantityText);
        QFETCH(QString, serialStartText);
        QFETCH(RichText, text);
        QFETCH(qint64, columns);
        QFETCH(qint64, rows);
        QFETCH(qint64, quantity);
        QFETCH(qint64, digitsBefore);
        QFETCH(qint64, digitsAfter);
        QFETCH(bool, resizes);

        PrintRequest request = letterRequest(quantityText, serialStartText, text);
        request.labelSize = labelSize;
        request.spacingTag = spacingTag;
        request.fullPage = true;
        const PrintPlan plan = lomir::planFromRequest(request);
        const FullPageCount count = lomir::fullPageCount(plan);
        QCOMPARE(count.columns, columns);
        QCOMPARE(count.rows, rows);
        QCOMPARE(count.quantity, quantity);
        QCOMPARE(count.digitsBefore, digitsBefore);
        QCOMPARE(count.digitsAfter, digitsAfter);
        QCOMPARE(count.resizesPlaceholder, resizes);

        // The full-page plan differs from the plan in its quantity alone.
        PrintPlan expected = plan;
        expected.quantity = quantity;
        QCOMPARE(fullPagePlan(plan), expected);
        QCOMPARE(planFits(fullPagePlan(plan)), quantity > 0);
    }

    void fullPagePlanAfterResizing_data()
    {
        QTest::addColumn<bool>("hasSizeTag");
        QTest::addColumn<qint64>("sizeTag");
        QTest::addColumn<QSizeF>("labelAfter");
        QTest::addColumn<double>("magnification");
        QTest::addColumn<qint64>("spacingTag");
        QTest::addColumn<QSizeF>("cell");
        QTest::addColumn<qint64>("quantity");

        // The plan before: a 100 x 50 label, 70 to a page.
        QTest::newRow("custom size keeps cell and quantity")
            << true << kCustomTag << QSizeF(120.0, 50.0) << 1.5 << qint64(0) << kLabel
            << qint64(70);
        QTest::newRow("label sized by its text, at 100%")
            << true << kTextSizeTag << kLabel << 1.0 << qint64(0) << kLabel << qint64(70);
        QTest::newRow("label grew with the run")
            << true << kTextSizeTag << QSizeF(110.0, 50.0) << 1.0 << qint64(0)
            << QSizeF(110.0, 50.0) << qint64(56);
        QTest::newRow("measured at the zoom: 150%")
            << true << kTextSizeTag << kLabel << 1.5 << qint64(0) << QSizeF(150.0, 75.0)
            << qint64(27);
        QTest::newRow("measured at 75%, spaced")
            << true << kTextSizeTag << kLabel << 0.75 << qint64(1) << QSizeF(79.0, 41.5)
            << qint64(6 * 17);
        QTest::newRow("no selected size item: measured again")
            << false << qint64(0) << QSizeF(110.0, 50.0) << 1.0 << qint64(0) << QSizeF(110.0, 50.0)
            << qint64(56);
        QTest::newRow("grown past the paper: no copies")
            << true << kTextSizeTag << QSizeF(300.0, 50.0) << 2.0 << qint64(0)
            << QSizeF(600.0, 100.0) << qint64(0);
    }

    void fullPagePlanAfterResizing()
    {
        QFETCH(bool, hasSizeTag);
        QFETCH(qint64, sizeTag);
        QFETCH(QSizeF, labelAfter);
        QFETCH(double, magnification);
        QFETCH(qint64, spacingTag);
        QFETCH(QSizeF, cell);
        QFETCH(qint64, quantity);

        PrintRequest request =
            letterRequest(QStringLiteral("5"), QStringLiteral("1"), numberedLabel(1));
        request.spacingTag = spacingTag;
        request.fullPage = true;
        PrintPlan plan = fullPagePlan(lomir::planFromRequest(request));
        if (spacingTag == 0)
            QCOMPARE(plan.quantity, qint64(70));
        // The plan's first cell is the editor's frame plus the spacing: for the custom row
        // it stays what it was, whatever the spacing.
        if (hasSizeTag && sizeTag == kCustomTag)
            cell = QSizeF(plan.cell.width, plan.cell.height);
        const qint64 quantityBefore = plan.quantity;

        const RichText widened = numberedLabel(2);
        const PrintPlan resized = lomir::fullPagePlanAfterResizing(
            plan, widened, hasSizeTag ? std::optional<qint64>(sizeTag) : std::nullopt, labelAfter,
            magnification);
        QCOMPARE(resized.text, widened);
        QCOMPARE(resized.cell.width, cell.width());
        QCOMPARE(resized.cell.height, cell.height());
        QCOMPARE(resized.quantity, hasSizeTag && sizeTag == kCustomTag ? quantityBefore : quantity);
        QCOMPARE(resized.serialStart, plan.serialStart);
        QCOMPARE(resized.spacing, plan.spacing);
        QCOMPARE(resized.paper, plan.paper);
        QCOMPARE(resized.margins, plan.margins);
    }

    void letterThreeLabels()
    {
        // Letter with its margins, 100 x 50, spacing off, quantity 3: one page, three cells
        // in the top row.
        const PrintPlan plan =
            lomir::planFromRequest(letterRequest(QStringLiteral("3"), QString()));
        QVERIFY(planFits(plan));
        const auto view = makeTilingTextView(plan);
        QCOMPARE(view->frame(), QRectF(0.0, 0.0, 540.0, 720.0));
        QCOMPARE(*view->numberOfColumns(), qint64(3));
        QCOMPARE(*view->numberOfRows(), qint64(1));
        QCOMPARE(*view->numberOfRowsOnAPage(), qint64(14));
        QCOMPARE(*view->numberOfPages(), qint64(1));
        const std::vector<LabelCopy> copies = view->copiesOnPage(QRectF(0.0, 0.0, 540.0, 720.0));
        QCOMPARE(copies.size(), std::size_t(3));
        for (std::size_t copy = 0; copy < 3; ++copy)
            QCOMPARE(copies[copy].rect, QRectF(100.0 * double(copy), 0.0, 100.0, 50.0));
    }

    void viewTakesEveryValueOfThePlan_data()
    {
        QTest::addColumn<QString>("quantityText");
        QTest::addColumn<QString>("serialStartText");
        QTest::addColumn<qint64>("spacingTag");
        QTest::addColumn<RichText>("text");
        QTest::addColumn<qint64>("digits");
        QTest::addColumn<bool>("numbered");
        QTest::addColumn<qint64>("columns");
        QTest::addColumn<qint64>("rows");
        QTest::addColumn<qint64>("rowsOnAPage");
        QTest::addColumn<qint64>("pages");

        QTest::newRow("100 from 1: 3 digits, 2 pages")
            << QStringLiteral("100") << QStringLiteral("1") << qint64(0) << numberedLabel(3)
            << qint64(3) << true << qint64(5) << qint64(20) << qint64(14) << qint64(2);
        QTest::newRow("9 from 1: 01 to 09")
            << QStringLiteral("9") << QStringLiteral("1") << qint64(0) << numberedLabel(2)
            << qint64(2) << true << qint64(5) << qint64(2) << qint64(14) << qint64(1);
        QTest::newRow("9 from 1, one unit: printed as it stands")
            << QStringLiteral("9") << QStringLiteral("1") << qint64(0) << numberedLabel(1)
            << qint64(2) << false << qint64(5) << qint64(2) << qint64(14) << qint64(1);
        QTest::newRow("100 from empty: 000 to 099")
            << QStringLiteral("100") << QString() << qint64(0) << numberedLabel(3) << qint64(3)
            << true << qint64(5) << qint64(20) << qint64(14) << qint64(2);
        QTest::newRow("5 from 7: 07 to 11")
            << QStringLiteral("5") << QStringLiteral("7") << qint64(0) << numberedLabel(2)
            << qint64(2) << true << qint64(5) << qint64(1) << qint64(14) << qint64(1);
        QTest::newRow("spaced, 1000")
            << QStringLiteral("1000") << QString() << qint64(1) << numberedLabel(4) << qint64(4)
            << true << qint64(5) << qint64(200) << qint64(13) << qint64(16);
    }

    void viewTakesEveryValueOfThePlan()
    {
        QFETCH(QString, quantityText);
        QFETCH(QString, serialStartText);
        QFETCH(qint64, spacingTag);
        QFETCH(RichText, text);
        QFETCH(qint64, digits);
        QFETCH(bool, numbered);
        QFETCH(qint64, columns);
        QFETCH(qint64, rows);
        QFETCH(qint64, rowsOnAPage);
        QFETCH(qint64, pages);

        PrintRequest request = letterRequest(quantityText, serialStartText, text);
        request.spacingTag = spacingTag;
        const PrintPlan plan = lomir::planFromRequest(request);
        const auto view = makeTilingTextView(plan);
        QCOMPARE(view->text(), std::optional<RichText>(text));
        QCOMPARE(view->quantity(), std::optional<qint64>(plan.quantity));
        QCOMPARE(view->serialStartFrom(), std::optional<qint64>(plan.serialStart));
        QCOMPARE(view->serialDigitCount(), std::optional<qint64>(digits));
        QCOMPARE(view->cellWidth(), std::optional<double>(plan.cell.width));
        QCOMPARE(view->cellHeight(), std::optional<double>(plan.cell.height));
        QCOMPARE(view->pageWidth(), std::optional<double>(540.0));
        QCOMPARE(view->pageHeight(), std::optional<double>(720.0));
        QCOMPARE(view->numberOfColumns(), std::optional<qint64>(columns));
        QCOMPARE(view->numberOfRows(), std::optional<qint64>(rows));
        QCOMPARE(view->numberOfRowsOnAPage(), std::optional<qint64>(rowsOnAPage));
        QCOMPARE(view->numberOfPages(), std::optional<qint64>(pages));
        QCOMPARE(view->spacing(), std::optional<double>(plan.spacing));
        QCOMPARE(view->frame(), QRectF(0.0, 0.0, 540.0, 720.0 * double(pages)));
        // The run starts after "No. " and is two UTF-16 units a digit.
        if (numbered)
            QCOMPARE(view->serialStringRange(),
                     std::optional<TextRange>(TextRange{4, 2 * int(digits)}));
        else
            QVERIFY(!view->serialStringRange());
    }

    void zeroQuantityStops()
    {
        lomir::testing::verifyStops(QStringLiteral("zeroQuantity"),
                                    QStringLiteral("Double value cannot be converted to Int64"));
    }

    void zeroCellStopsTheFullPageCount()
    {
        lomir::testing::verifyStops(QStringLiteral("zeroCellFullPage"),
                                    QStringLiteral("Double value cannot be converted to Int64"));
    }

    void harmlessCaseRunsToEnd() { lomir::testing::verifyRunsToEnd(QStringLiteral("harmless")); }
};

LOMIR_TEST_MAIN_WITH_FATAL_CASES(QGuiApplication, TestPrintPlan)

#include "tst_printplan.moc"
