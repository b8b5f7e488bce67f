#include "core/printing/printplan.h"

#include "core/base/fatal.h"
#include "core/label/labelsize.h"
#include "core/label/numberinput.h"
#include "core/layout/serialnumber.h"
#include "core/layout/tilingtextview.h"

namespace lomir {

namespace {

// Whole cells that fit the printable area across and down, each quotient truncated; a
// quotient that is not a finite 64-bit value stops the program.
struct CellsThatFit
{
    qint64 columns = 0;
    qint64 rows = 0;
};

CellsThatFit cellsThatFit(const CellSize& cell, const QSizeF& area)
{
    return {checkedInt64(area.width() / cell.width), checkedInt64(area.height() / cell.height)};
}

} // namespace

PrintPlan planForLabel(const QSizeF& paper, const QMarginsF& margins, const QSizeF& labelSize,
                       double spacing, qint64 quantity, qint64 serialStart, const RichText& text)
{
    PrintPlan plan;
    plan.paper = paper;
    plan.margins = margins;
    plan.spacing = spacing;
    plan.cell = cellSize(labelSize.width(), labelSize.height(), spacing);
    plan.serialStart = serialStart;
    plan.quantity = quantity;
    plan.text = text;
    return plan;
}

PrintPlan planFromRequest(const PrintRequest& request)
{
    PrintPlan plan =
        planForLabel(request.paper, request.margins, request.labelSize,
                     spacingForTag(request.spacingTag), quantityFromText(request.quantityText),
                     serialStartFromText(request.serialStartText), request.text);
    plan.fullPage = request.fullPage;
    return plan;
}

QSizeF printableSize(const PrintPlan& plan)
{
    return printableArea(plan.paper, plan.margins);
}

bool planFits(const PrintPlan& plan)
{
    return cellFits(plan.cell, printableSize(plan));
}

FullPageCount fullPageCount(const PrintPlan& plan)
{
    const CellsThatFit fit = cellsThatFit(plan.cell, printableSize(plan));
    FullPageCount count;
    count.columns = fit.columns;
    count.rows = fit.rows;
    count.digitsBefore = serialDigitCount(plan.quantity, plan.serialStart);
    count.quantity = checkedMultiply(fit.columns, fit.rows);
    count.digitsAfter = serialDigitCount(count.quantity, plan.serialStart);
    // A text without a placeholder unit has nothing to resize.
    count.resizesPlaceholder =
        count.digitsBefore != count.digitsAfter && findSerialRun(plan.text.string()).has_value();
    return count;
}

PrintPlan fullPagePlan(const PrintPlan& plan)
{
    PrintPlan full = plan;
    full.quantity = fullPageCount(plan).quantity;
    return full;
}

PrintPlan fullPagePlanAfterResizing(const PrintPlan& plan, const RichText& resizedText,
                                    std::optional<qint64> sizeTag, const QSizeF& labelSize,
                                    double magnification)
{
    PrintPlan resized = plan;
    resized.text = resizedText;
    if (sizeTag && isCustomSize(*sizeTag))
        return resized;
    // Unlike the plan's first cell, this one is measured at the editor's magnification.
    resized.cell = cellSize(labelSize.width() * magnification, labelSize.height() * magnification,
                            plan.spacing);
    const CellsThatFit fit = cellsThatFit(resized.cell, printableSize(resized));
    resized.quantity = checkedMultiply(fit.columns, fit.rows);
    return resized;
}

std::unique_ptr<TilingTextView> makeTilingTextView(const PrintPlan& plan)
{
    const QSizeF area = printableSize(plan);
    const SheetGrid grid = sheetGrid(plan.quantity, plan.cell, area);
    const qint64 digits = serialDigitCount(plan.quantity, plan.serialStart);

    auto view = std::make_unique<TilingTextView>(grid.frame);
    view->setText(plan.text);
    view->setQuantity(plan.quantity);
    view->setSerialStartFrom(plan.serialStart);
    view->setSerialDigitCount(digits);
    view->setCellWidth(plan.cell.width);
    view->setCellHeight(plan.cell.height);
    view->setPageWidth(area.width());
    view->setPageHeight(area.height());
    view->setNumberOfColumns(grid.numberOfColumns);
    view->setNumberOfRows(grid.numberOfRows);
    view->setNumberOfRowsOnAPage(grid.numberOfRowsOnAPage);
    view->setNumberOfPages(grid.numberOfPages);
    view->setSerialStringRange(locateSerialRun(plan.text.string(), digits));
    view->setSpacing(plan.spacing);
    return view;
}

} // namespace lomir
