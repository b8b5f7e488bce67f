#include "core/layout/sheetgeometry.h"

#include "core/base/fatal.h"
#include "core/layout/measurement.h"

#include <algorithm>
#include <cmath>

namespace lomir {

namespace {

// Six decimal places are far below anything a printer can show, and enough to strip the
// noise that converting label sizes between units leaves behind.
constexpr int kCellSizePlaces = 6;

// Copies are placed by integer division; a grid without rows or columns is a caller's
// mistake that would divide by zero.
void requirePositiveGrid(qint64 rowsOnAPage, qint64 columns)
{
    if (rowsOnAPage < 1 || columns < 1)
        fatalError("A sheet grid needs at least one row and one column");
}

} // namespace

double spacingForTag(std::optional<qint64> selectedTag)
{
    return selectedTag == 1 ? kLabelSpacing : 0.0;
}

CellSize cellSize(double labelWidth, double labelHeight, double spacing)
{
    return {roundToPlaces(kCellSizePlaces, RoundingRule::Up, spacing + labelWidth),
            roundToPlaces(kCellSizePlaces, RoundingRule::Up, spacing + labelHeight)};
}

QSizeF printableArea(const QSizeF& paper, const QMarginsF& margins)
{
    // Rounded up at the same place as the cells: paper and label sizes given in
    // millimetres carry the same conversion noise, and a label the paper's size must still
    // fit it after its cell was rounded up (62 mm is 175.7480314960... points, its cell
    // 175.748032).
    return {roundToPlaces(kCellSizePlaces, RoundingRule::Up,
                          paper.width() - (margins.left() + margins.right())),
            roundToPlaces(kCellSizePlaces, RoundingRule::Up,
                          paper.height() - (margins.bottom() + margins.top()))};
}

bool cellFits(const CellSize& cell, const QSizeF& area)
{
    return cell.width <= area.width() && cell.height <= area.height();
}

SheetGrid sheetGrid(qint64 quantity, const CellSize& cell, const QSizeF& area)
{
    SheetGrid grid;
    const qint64 columnsThatFit = checkedInt64(area.width() / cell.width);
    // A short run never spreads over more columns than it has copies.
    grid.numberOfColumns = std::min(quantity, columnsThatFit);
    grid.numberOfRows = checkedInt64(std::ceil(double(quantity) / double(grid.numberOfColumns)));
    grid.numberOfRowsOnAPage = checkedInt64(area.height() / cell.height);
    grid.numberOfPages =
        checkedInt64(std::ceil(double(grid.numberOfRows) / double(grid.numberOfRowsOnAPage)));
    grid.frame = QRectF(0.0, 0.0, area.width(), area.height() * double(grid.numberOfPages));
    return grid;
}

CellPosition cellPositionOfCopy(qint64 copy, qint64 rowsOnAPage, qint64 columns)
{
    requirePositiveGrid(rowsOnAPage, columns);
    const qint64 cellsOnAPage = checkedMultiply(rowsOnAPage, columns);
    return {copy / cellsOnAPage, (copy % cellsOnAPage) / columns, copy % columns};
}

qint64 firstCopyOnPage(qint64 page, qint64 rowsOnAPage, qint64 columns)
{
    requirePositiveGrid(rowsOnAPage, columns);
    return checkedMultiply(checkedMultiply(rowsOnAPage, columns), page);
}

QRectF cellRect(double pageTop, qint64 row, qint64 column, const CellSize& cell, double spacing)
{
    return {double(column) * cell.width + spacing * 0.5,
            pageTop + double(row) * cell.height + spacing * 0.5, cell.width - spacing,
            cell.height - spacing};
}

bool rowFitsOnPage(qint64 row, double cellHeight, double pageHeight)
{
    return !(pageHeight < double(checkedAdd(row, 1)) * cellHeight);
}

} // namespace lomir
