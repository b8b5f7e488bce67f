#pragma once

#include <QMarginsF>
#include <QRectF>
#include <QSizeF>
#include <QtGlobal>
#include <optional>

namespace lomir {

// Gap between neighbouring labels when the user spaces them apart.
inline constexpr double kLabelSpacing = 4.0;

// The spacing for the output-spacing popup's selected item tag: 4 points for tag 1,
// none for any other tag or no selection.
double spacingForTag(std::optional<qint64> selectedTag);

struct CellSize
{
    double width = 0.0;
    double height = 0.0;
    bool operator==(const CellSize&) const = default;
};

// One label plus the spacing, rounded up at the sixth decimal to shed floating-point
// noise (never shrinking the cell).
CellSize cellSize(double labelWidth, double labelHeight, double spacing);

// The paper's size less its margins, rounded up at the sixth decimal as cells are.
QSizeF printableArea(const QSizeF& paper, const QMarginsF& margins);

// A cell fits when it is no wider and no taller than the printable area.
bool cellFits(const CellSize& cell, const QSizeF& area);

struct SheetGrid
{
    qint64 numberOfColumns = 0;
    qint64 numberOfRows = 0; // over all pages
    qint64 numberOfRowsOnAPage = 0;
    qint64 numberOfPages = 0;
    QRectF frame; // every page's printable area, stacked downwards
    bool operator==(const SheetGrid&) const = default;
};

// The grid for a quantity of copies. Stops the program when a quotient is not a
// finite 64-bit value (a quantity of 0 does that).
SheetGrid sheetGrid(qint64 quantity, const CellSize& cell, const QSizeF& area);

struct CellPosition
{
    qint64 page = 0;
    qint64 row = 0;
    qint64 column = 0;
    bool operator==(const CellPosition&) const = default;
};

// Where copy k goes: pages fill row by row from the top, each row from the left.
CellPosition cellPositionOfCopy(qint64 copy, qint64 rowsOnAPage, qint64 columns);
qint64 firstCopyOnPage(qint64 page, qint64 rowsOnAPage, qint64 columns);

// The rectangle a copy is drawn in: its cell, inset by half the spacing on every side.
QRectF cellRect(double pageTop, qint64 row, qint64 column, const CellSize& cell, double spacing);

// False when row r would reach past the bottom of the printable area; drawing of the
// page ends there.
bool rowFitsOnPage(qint64 row, double cellHeight, double pageHeight);

} // namespace lomir
