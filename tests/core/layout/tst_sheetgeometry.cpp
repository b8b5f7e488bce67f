#include "core/layout/sheetgeometry.h"
#include "support/fatalstop.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>
#include <cstring>
#include <limits>

using namespace lomir;

namespace {

constexpr qint64 kMaxInt64 = std::numeric_limits<qint64>::max();

// The printable area of the examples: US Letter less half-inch and one-inch margins.
const QSizeF kArea(540.0, 720.0);

// Runs one of the cases that must stop the program. Called in a child process that this
// test starts; returning at all means the stop did not happen.
int runFatalCase(const char* name)
{
    const CellSize label{100.0, 50.0};
    if (std::strcmp(name, "zeroQuantity") == 0)
        (void)sheetGrid(0, label, kArea);
    else if (std::strcmp(name, "zeroCellHeight") == 0)
        (void)sheetGrid(5, CellSize{100.0, 0.0}, kArea);
    else if (std::strcmp(name, "zeroCellWidth") == 0)
        (void)sheetGrid(5, CellSize{0.0, 50.0}, kArea);
    else if (std::strcmp(name, "columnsOutOfRange") == 0)
        (void)sheetGrid(5, label, QSizeF(1.0e30, 720.0));
    else if (std::strcmp(name, "noColumns") == 0)
        (void)cellPositionOfCopy(3, 14, 0);
    else if (std::strcmp(name, "noRows") == 0)
        (void)firstCopyOnPage(1, 0, 5);
    else if (std::strcmp(name, "firstCopyOverflow") == 0)
        (void)firstCopyOnPage(kMaxInt64 / 10, 14, 5);
    else if (std::strcmp(name, "rowGuardOverflow") == 0)
        (void)rowFitsOnPage(kMaxInt64, 50.0, 720.0);
    else if (std::strcmp(name, "harmless") == 0)
        (void)sheetGrid(25, label, kArea);
    else
        return 2;
    return 0;
}

} // namespace

class TestSheetGeometry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void spacingForTag_data();
    void spacingForTag();
    void cellSize_data();
    void cellSize();
    void printableArea_data();
    void printableArea();
    void cellFits_data();
    void cellFits();
    void sheetGrid_data();
    void sheetGrid();
    void fullWidthCellPrints();
    void cellPositionOfCopy_data();
    void cellPositionOfCopy();
    void secondPageOfHundredCopies();
    void copyOrderIsConsistent_data();
    void copyOrderIsConsistent();
    void cellRect_data();
    void cellRect();
    void rowFitsOnPage_data();
    void rowFitsOnPage();
    void rowGuardCatchesHairOverCells();
    void fatalStops_data();
    void fatalStops();
    void harmlessCaseRunsToEnd();
};

void TestSheetGeometry::spacingForTag_data()
{
    QTest::addColumn<std::optional<qint64>>("tag");
    QTest::addColumn<double>("spacing");

    QTest::newRow("spaced item") << std::optional<qint64>(1) << 4.0;
    QTest::newRow("unspaced item") << std::optional<qint64>(0) << 0.0;
    QTest::newRow("other tag") << std::optional<qint64>(2) << 0.0;
    QTest::newRow("negative tag") << std::optional<qint64>(-1) << 0.0;
    QTest::newRow("no selection") << std::optional<qint64>() << 0.0;
}

void TestSheetGeometry::spacingForTag()
{
    QFETCH(std::optional<qint64>, tag);
    QFETCH(double, spacing);
    QCOMPARE(lomir::spacingForTag(tag), spacing);
}

void TestSheetGeometry::cellSize_data()
{
    QTest::addColumn<double>("labelWidth");
    QTest::addColumn<double>("labelHeight");
    QTest::addColumn<double>("spacing");
    QTest::addColumn<double>("cellWidth");
    QTest::addColumn<double>("cellHeight");

    QTest::newRow("no spacing") << 100.0 << 50.0 << 0.0 << 100.0 << 50.0;
    QTest::newRow("spacing of tag 1") << 100.0 << 50.0 << 4.0 << 104.0 << 54.0;
    // Noise just below a whole size disappears; noise just above rounds up, never down.
    QTest::newRow("noise below") << 99.9999999 << 49.99999999 << 0.0 << 100.0 << 50.0;
    QTest::newRow("noise above") << 72.0000000001 << 36.0000001 << 0.0 << 72.000001 << 36.000001;
    QTest::newRow("fraction kept") << 141.732283 << 70.866141 << 4.0 << 145.732283 << 74.866141;
    QTest::newRow("tiny label") << 0.5 << 0.25 << 0.0 << 0.5 << 0.25;
}

void TestSheetGeometry::cellSize()
{
    QFETCH(double, labelWidth);
    QFETCH(double, labelHeight);
    QFETCH(double, spacing);
    QFETCH(double, cellWidth);
    QFETCH(double, cellHeight);

    const CellSize cell = lomir::cellSize(labelWidth, labelHeight, spacing);
    QCOMPARE(cell.width, cellWidth);
    QCOMPARE(cell.height, cellHeight);
    QVERIFY(cell.width >= labelWidth + spacing);
    QVERIFY(cell.height >= labelHeight + spacing);
}

void TestSheetGeometry::printableArea_data()
{
    QTest::addColumn<QSizeF>("paper");
    QTest::addColumn<QMarginsF>("margins"); // left, top, right, bottom
    QTest::addColumn<QSizeF>("area");

    QTest::newRow("letter, even margins")
        << QSizeF(612, 792) << QMarginsF(18, 18, 18, 18) << QSizeF(576, 756);
    QTest::newRow("letter, example area")
        << QSizeF(612, 792) << QMarginsF(36, 36, 36, 36) << QSizeF(540, 720);
    QTest::newRow("uneven margins")
        << QSizeF(600, 800) << QMarginsF(10, 20, 30, 40) << QSizeF(560, 740);
    QTest::newRow("no margins") << QSizeF(595.28, 841.89) << QMarginsF() << QSizeF(595.28, 841.89);
    // A4 and a 62 x 29 mm label roll, converted from millimetres: rounded up at the sixth
    // decimal, as cells are.
    const double mm = 72.0 / 25.4;
    QTest::newRow("A4 from millimetres, 10 mm margins")
        << QSizeF(210.0 * mm, 297.0 * mm) << QMarginsF(10.0 * mm, 10.0 * mm, 10.0 * mm, 10.0 * mm)
        << QSizeF(538.582678, 785.196851);
    QTest::newRow("label roll from millimetres")
        << QSizeF(62.0 * mm, 29.0 * mm) << QMarginsF() << QSizeF(175.748032, 82.204725);
}

void TestSheetGeometry::printableArea()
{
    QFETCH(QSizeF, paper);
    QFETCH(QMarginsF, margins);
    QFETCH(QSizeF, area);
    const QSizeF result = lomir::printableArea(paper, margins);
    QCOMPARE(result.width(), area.width());
    QCOMPARE(result.height(), area.height());
}

void TestSheetGeometry::cellFits_data()
{
    QTest::addColumn<double>("cellWidth");
    QTest::addColumn<double>("cellHeight");
    QTest::addColumn<bool>("fits");

    QTest::newRow("small") << 100.0 << 50.0 << true;
    QTest::newRow("exactly as wide") << 540.0 << 50.0 << true;
    QTest::newRow("exactly as high") << 100.0 << 720.0 << true;
    QTest::newRow("exactly the area") << 540.0 << 720.0 << true;
    QTest::newRow("a millionth wider") << 540.000001 << 50.0 << false;
    QTest::newRow("a millionth higher") << 100.0 << 720.000001 << false;
    QTest::newRow("both too large") << 600.0 << 800.0 << false;
}

void TestSheetGeometry::cellFits()
{
    QFETCH(double, cellWidth);
    QFETCH(double, cellHeight);
    QFETCH(bool, fits);
    QCOMPARE(lomir::cellFits(CellSize{cellWidth, cellHeight}, kArea), fits);
}

void TestSheetGeometry::sheetGrid_data()
{
    QTest::addColumn<qint64>("quantity");
    QTest::addColumn<double>("cellWidth");
    QTest::addColumn<double>("cellHeight");
    QTest::addColumn<qint64>("columns");
    QTest::addColumn<qint64>("rows");
    QTest::addColumn<qint64>("rowsOnAPage");
    QTest::addColumn<qint64>("pages");

    QTest::newRow("25 copies") << qint64(25) << 100.0 << 50.0 << qint64(5) << qint64(5)
                               << qint64(14) << qint64(1);
    QTest::newRow("3 copies use 3 columns")
        << qint64(3) << 100.0 << 50.0 << qint64(3) << qint64(1) << qint64(14) << qint64(1);
    QTest::newRow("100 copies on 2 pages")
        << qint64(100) << 100.0 << 50.0 << qint64(5) << qint64(20) << qint64(14) << qint64(2);
    QTest::newRow("one copy") << qint64(1) << 100.0 << 50.0 << qint64(1) << qint64(1) << qint64(14)
                              << qint64(1);
    QTest::newRow("exactly one page")
        << qint64(70) << 100.0 << 50.0 << qint64(5) << qint64(14) << qint64(14) << qint64(1);
    QTest::newRow("one copy over a page")
        << qint64(71) << 100.0 << 50.0 << qint64(5) << qint64(15) << qint64(14) << qint64(2);
    QTest::newRow("spaced cells") << qint64(66) << 104.0 << 54.0 << qint64(5) << qint64(14)
                                  << qint64(13) << qint64(2);
    QTest::newRow("cell as wide as the area")
        << qint64(10) << 540.0 << 50.0 << qint64(1) << qint64(10) << qint64(14) << qint64(1);
    QTest::newRow("cell as large as the area")
        << qint64(3) << 540.0 << 720.0 << qint64(1) << qint64(3) << qint64(1) << qint64(3);
    QTest::newRow("a million copies") << qint64(1000000) << 100.0 << 50.0 << qint64(5)
                                      << qint64(200000) << qint64(14) << qint64(14286);
}

void TestSheetGeometry::sheetGrid()
{
    QFETCH(qint64, quantity);
    QFETCH(double, cellWidth);
    QFETCH(double, cellHeight);
    QFETCH(qint64, columns);
    QFETCH(qint64, rows);
    QFETCH(qint64, rowsOnAPage);
    QFETCH(qint64, pages);

    const SheetGrid grid = lomir::sheetGrid(quantity, CellSize{cellWidth, cellHeight}, kArea);
    QCOMPARE(grid.numberOfColumns, columns);
    QCOMPARE(grid.numberOfRows, rows);
    QCOMPARE(grid.numberOfRowsOnAPage, rowsOnAPage);
    QCOMPARE(grid.numberOfPages, pages);
    // One printable area per page, stacked downwards without gaps.
    QCOMPARE(grid.frame, QRectF(0.0, 0.0, 540.0, 720.0 * double(pages)));
}

void TestSheetGeometry::fullWidthCellPrints()
{
    // A label exactly as wide as the printable area passes the fit test and prints in
    // one column.
    const CellSize cell = lomir::cellSize(540.0, 50.0, 0.0);
    QVERIFY(lomir::cellFits(cell, kArea));
    QCOMPARE(lomir::sheetGrid(4, cell, kArea).numberOfColumns, qint64(1));

    const CellSize wider = lomir::cellSize(540.000001, 50.0, 0.0);
    QVERIFY(!lomir::cellFits(wider, kArea));
}

void TestSheetGeometry::cellPositionOfCopy_data()
{
    QTest::addColumn<qint64>("copy");
    QTest::addColumn<qint64>("rowsOnAPage");
    QTest::addColumn<qint64>("columns");
    QTest::addColumn<qint64>("page");
    QTest::addColumn<qint64>("row");
    QTest::addColumn<qint64>("column");

    QTest::newRow("first copy") << qint64(0) << qint64(14) << qint64(5) << qint64(0) << qint64(0)
                                << qint64(0);
    QTest::newRow("end of first row")
        << qint64(4) << qint64(14) << qint64(5) << qint64(0) << qint64(0) << qint64(4);
    QTest::newRow("start of second row")
        << qint64(5) << qint64(14) << qint64(5) << qint64(0) << qint64(1) << qint64(0);
    QTest::newRow("last cell of page 1")
        << qint64(69) << qint64(14) << qint64(5) << qint64(0) << qint64(13) << qint64(4);
    QTest::newRow("first cell of page 2")
        << qint64(70) << qint64(14) << qint64(5) << qint64(1) << qint64(0) << qint64(0);
    QTest::newRow("copy 99 of 100")
        << qint64(99) << qint64(14) << qint64(5) << qint64(1) << qint64(5) << qint64(4);
    QTest::newRow("last page partly filled")
        << qint64(72) << qint64(14) << qint64(5) << qint64(1) << qint64(0) << qint64(2);
    QTest::newRow("one column") << qint64(7) << qint64(3) << qint64(1) << qint64(2) << qint64(1)
                                << qint64(0);
    QTest::newRow("one cell a page")
        << qint64(7) << qint64(1) << qint64(1) << qint64(7) << qint64(0) << qint64(0);
}

void TestSheetGeometry::cellPositionOfCopy()
{
    QFETCH(qint64, copy);
    QFETCH(qint64, rowsOnAPage);
    QFETCH(qint64, columns);
    QFETCH(qint64, page);
    QFETCH(qint64, row);
    QFETCH(qint64, column);
    QCOMPARE(lomir::cellPositionOfCopy(copy, rowsOnAPage, columns),
             (CellPosition{page, row, column}));
}

void TestSheetGeometry::secondPageOfHundredCopies()
{
    const SheetGrid grid = lomir::sheetGrid(100, CellSize{100.0, 50.0}, kArea);
    QCOMPARE(grid.numberOfPages, qint64(2));
    const qint64 first = lomir::firstCopyOnPage(1, grid.numberOfRowsOnAPage, grid.numberOfColumns);
    QCOMPARE(first, qint64(70));

    // Copies 70 to 99 fill the second page's first six rows and nothing else.
    qint64 lastRow = -1;
    for (qint64 copy = first; copy < 100; ++copy) {
        const CellPosition position =
            lomir::cellPositionOfCopy(copy, grid.numberOfRowsOnAPage, grid.numberOfColumns);
        QCOMPARE(position.page, qint64(1));
        lastRow = std::max(lastRow, position.row);
    }
    QCOMPARE(lastRow + 1, qint64(6));
}

void TestSheetGeometry::copyOrderIsConsistent_data()
{
    QTest::addColumn<qint64>("rowsOnAPage");
    QTest::addColumn<qint64>("columns");

    QTest::newRow("14 rows of 5") << qint64(14) << qint64(5);
    QTest::newRow("13 rows of 5") << qint64(13) << qint64(5);
    QTest::newRow("one column") << qint64(9) << qint64(1);
    QTest::newRow("one row") << qint64(1) << qint64(7);
    QTest::newRow("one cell") << qint64(1) << qint64(1);
}

void TestSheetGeometry::copyOrderIsConsistent()
{
    QFETCH(qint64, rowsOnAPage);
    QFETCH(qint64, columns);

    // Walking the cells row by row and page by page must meet the copies in order.
    CellPosition expected;
    for (qint64 copy = 0; copy < 500; ++copy) {
        const CellPosition position = lomir::cellPositionOfCopy(copy, rowsOnAPage, columns);
        QCOMPARE(position, expected);
        QVERIFY(position.row < rowsOnAPage && position.column < columns);
        QCOMPARE(lomir::firstCopyOnPage(position.page, rowsOnAPage, columns) +
                     position.row * columns + position.column,
                 copy);

        if (++expected.column == columns) {
            expected.column = 0;
            if (++expected.row == rowsOnAPage) {
                expected.row = 0;
                ++expected.page;
            }
        }
    }
}

void TestSheetGeometry::cellRect_data()
{
    QTest::addColumn<double>("pageTop");
    QTest::addColumn<qint64>("row");
    QTest::addColumn<qint64>("column");
    QTest::addColumn<double>("spacing");
    QTest::addColumn<QRectF>("rect");

    // Spaced cells are 104 x 54 around labels of 100 x 50; unspaced cells are the label.
    QTest::newRow("spaced, first cell")
        << 0.0 << qint64(0) << qint64(0) << 4.0 << QRectF(2.0, 2.0, 100.0, 50.0);
    QTest::newRow("spaced, row 1 column 2")
        << 0.0 << qint64(1) << qint64(2) << 4.0 << QRectF(210.0, 56.0, 100.0, 50.0);
    QTest::newRow("spaced, second page")
        << 720.0 << qint64(0) << qint64(0) << 4.0 << QRectF(2.0, 722.0, 100.0, 50.0);
    QTest::newRow("unspaced, first cell")
        << 0.0 << qint64(0) << qint64(0) << 0.0 << QRectF(0.0, 0.0, 100.0, 50.0);
    QTest::newRow("unspaced, last cell of a page")
        << 0.0 << qint64(13) << qint64(4) << 0.0 << QRectF(400.0, 650.0, 100.0, 50.0);
    QTest::newRow("unspaced, page 3 row 2")
        << 1440.0 << qint64(2) << qint64(1) << 0.0 << QRectF(100.0, 1540.0, 100.0, 50.0);
}

void TestSheetGeometry::cellRect()
{
    QFETCH(double, pageTop);
    QFETCH(qint64, row);
    QFETCH(qint64, column);
    QFETCH(double, spacing);
    QFETCH(QRectF, rect);

    const CellSize cell = lomir::cellSize(100.0, 50.0, spacing);
    QCOMPARE(lomir::cellRect(pageTop, row, column, cell, spacing), rect);
}

void TestSheetGeometry::rowFitsOnPage_data()
{
    QTest::addColumn<qint64>("row");
    QTest::addColumn<double>("cellHeight");
    QTest::addColumn<bool>("fits");

    QTest::newRow("first row") << qint64(0) << 50.0 << true;
    QTest::newRow("last whole row") << qint64(13) << 50.0 << true;
    QTest::newRow("row past the bottom") << qint64(14) << 50.0 << false;
    QTest::newRow("row ending on the bottom") << qint64(9) << 72.0 << true;
    QTest::newRow("row after that") << qint64(10) << 72.0 << false;
    QTest::newRow("cell taller than the page") << qint64(0) << 720.000001 << false;
}

void TestSheetGeometry::rowFitsOnPage()
{
    QFETCH(qint64, row);
    QFETCH(double, cellHeight);
    QFETCH(bool, fits);
    QCOMPARE(lomir::rowFitsOnPage(row, cellHeight, 720.0), fits);
}

void TestSheetGeometry::rowGuardCatchesHairOverCells()
{
    // A cell one unit in the last place above 720 / 33: 720 divided by it still gives
    // exactly 33 rows, yet 33 of these cells add up to a hair more than 720. The grid
    // counts the row, the guard refuses to draw it.
    const double cellHeight = 21.81818181818182;
    const SheetGrid grid = lomir::sheetGrid(100, CellSize{100.0, cellHeight}, kArea);
    QCOMPARE(grid.numberOfRowsOnAPage, qint64(33));
    QVERIFY(33.0 * cellHeight > 720.0);
    QVERIFY(lomir::rowFitsOnPage(31, cellHeight, 720.0));
    QVERIFY(!lomir::rowFitsOnPage(32, cellHeight, 720.0));
}

void TestSheetGeometry::fatalStops_data()
{
    QTest::addColumn<QString>("caseName");
    QTest::addColumn<QString>("message");

    const QString conversion = QStringLiteral("Double value cannot be converted to Int64");
    const QString overflow = QStringLiteral("Arithmetic overflow");
    const QString emptyGrid = QStringLiteral("A sheet grid needs at least one row and one column");
    QTest::newRow("quantity 0") << QStringLiteral("zeroQuantity") << conversion;
    QTest::newRow("cell of height 0") << QStringLiteral("zeroCellHeight") << conversion;
    QTest::newRow("cell of width 0") << QStringLiteral("zeroCellWidth") << conversion;
    QTest::newRow("columns beyond 64 bits") << QStringLiteral("columnsOutOfRange") << conversion;
    QTest::newRow("no columns") << QStringLiteral("noColumns") << emptyGrid;
    QTest::newRow("no rows") << QStringLiteral("noRows") << emptyGrid;
    QTest::newRow("first copy overflows") << QStringLiteral("firstCopyOverflow") << overflow;
    QTest::newRow("row guard overflows") << QStringLiteral("rowGuardOverflow") << overflow;
}

void TestSheetGeometry::fatalStops()
{
    QFETCH(QString, caseName);
    QFETCH(QString, message);
    lomir::testing::verifyStops(caseName, message);
}

void TestSheetGeometry::harmlessCaseRunsToEnd()
{
    // The same harness on a case that does not stop: the child must end normally, so a
    // crash seen above is the fatal stop and not the harness.
    lomir::testing::verifyRunsToEnd(QStringLiteral("harmless"));
}

LOMIR_TEST_MAIN_WITH_FATAL_CASES(QCoreApplication, TestSheetGeometry)

#include "tst_sheetgeometry.moc"
