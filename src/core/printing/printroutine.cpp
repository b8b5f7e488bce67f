#include "core/printing/printroutine.h"

namespace lomir {

std::optional<PrintPlan> preparePrint(PrintEditor& editor, const PaperSettings& paper,
                                      bool fullPage)
{
    PrintRequest request = editor.printRequest();
    request.paper = paper.paper;
    request.margins = paper.margins;
    request.fullPage = fullPage;
    PrintPlan plan = planFromRequest(request);

    if (fullPage) {
        const FullPageCount count = fullPageCount(plan);
        const PrintPlan fullPagePlan = lomir::fullPagePlan(plan);
        if (count.resizesPlaceholder) {
            // The text before the resize, to put back once the resized one is read.
            const RichText saved = plan.text;
            const ResizedLabel resized = editor.resizeSerialPlaceholder(count.digitsAfter);
            plan = fullPagePlanAfterResizing(fullPagePlan, resized.text, resized.sizeTag,
                                             resized.labelSize, resized.magnification);
            editor.restoreText(saved);
        } else {
            plan = fullPagePlan;
        }
    }

    if (!planFits(plan)) {
        editor.showCellSizeAlert();
        return std::nullopt;
    }
    return plan;
}

} // namespace lomir
