#pragma once

#include "core/document/richtext/richtext.h"
#include "core/layout/sheetgeometry.h"

#include <QMarginsF>
#include <QSizeF>
#include <QString>
#include <QtGlobal>
#include <memory>
#include <optional>

namespace lomir {

class TilingTextView;

// What a print reads from the print settings and the label editor, as they hold it: the
// fields' texts unread, the popups' selected tags, the label as large as the editor shows
// it at 100%.
struct PrintRequest
{
    QSizeF paper;                     // in points, as the paper lies in the printer
    QMarginsF margins;                // in points
    std::optional<qint64> spacingTag; // the output spacing popup's selected item
    QSizeF labelSize;                 // the label text view's frame, in points
    QString serialStartText;          // the first serial number field
    QString quantityText;             // the quantity field
    RichText text;                    // the label's text, placeholder run and all
    bool fullPage = false;            // print one full page, whatever the quantity
};

// The values one print is made from, all lengths in points. Printer, preview, PDF export,
// the command line and the benchmark all print from a plan.
struct PrintPlan
{
    QSizeF paper;
    QMarginsF margins;
    double spacing = 0.0;
    CellSize cell;
    qint64 serialStart = 0;
    qint64 quantity = 1;
    RichText text;
    bool fullPage = false;

    bool operator==(const PrintPlan&) const = default;
};

// A plan from values already read, for a label of labelSize points: its cell is the label
// plus the spacing (see cellSize).
PrintPlan planForLabel(const QSizeF& paper, const QMarginsF& margins, const QSizeF& labelSize,
                       double spacing, qint64 quantity, qint64 serialStart, const RichText& text);

// The plan for a request: the spacing of the popup's tag, the cell of the label plus the
// spacing, the numbers the fields hold (an unreadable quantity prints one label, an
// unreadable first number starts at 0). A full-page request still carries the quantity
// field's value; fullPagePlan replaces it.
PrintPlan planFromRequest(const PrintRequest& request);

// The paper less the margins: where the labels go.
QSizeF printableSize(const PrintPlan& plan);

// Whether one cell fits the printable area. When it does not, the print is refused with
// the cell size alert and nothing is printed.
bool planFits(const PrintPlan& plan);

// The numbers of the full-page adjustment: how many cells fill a page and what that does
// to the serial numbers' digits.
struct FullPageCount
{
    qint64 columns = 0;      // cells that fit across the printable width
    qint64 rows = 0;         // cells that fit down the printable height
    qint64 quantity = 0;     // columns x rows; 0 when the cell does not fit
    qint64 digitsBefore = 0; // the digits the quantity field's numbers have
    qint64 digitsAfter = 0;  // the digits a full page's numbers need (at least 1)
    // The label's placeholder run was sized for digitsBefore and the page needs
    // digitsAfter: the editor resizes its run to digitsAfter units for this print.
    bool resizesPlaceholder = false;

    bool operator==(const FullPageCount&) const = default;
};

// The full-page adjustment's numbers for a plan made from the quantity field.
FullPageCount fullPageCount(const PrintPlan& plan);

// The plan with the quantity of one full page. When the placeholder keeps its size this is
// all the adjustment does.
PrintPlan fullPagePlan(const PrintPlan& plan);

// The full-page plan once the editor has resized its placeholder run: the text is the
// editor's resized one. A custom-size label keeps its cell and quantity; a label sized by
// its text may have grown with the run, so its cell is measured again from the editor's
// frame at the editor's magnification, and the quantity becomes the cells that now fill
// a page. (At a magnification of 1 both agree with planFromRequest's cell.)
PrintPlan fullPagePlanAfterResizing(const PrintPlan& plan, const RichText& resizedText,
                                    std::optional<qint64> sizeTag, const QSizeF& labelSize,
                                    double magnification);

// The tiling view of a plan that fits, its properties set in this order: the
// text, quantity, first number, digit count, cell, printable size, grid, the located
// placeholder run and the spacing. A quantity below 1 stops the program in the grid.
std::unique_ptr<TilingTextView> makeTilingTextView(const PrintPlan& plan);

} // namespace lomir
