#pragma once

#include "core/printing/paper.h"
#include "core/printing/printplan.h"
#include "gui/editor/editoralerts.h"

#include <QString>
#include <memory>
#include <optional>

namespace lomir {

class MainViewController;
class TilingTextView;

// A print ready to paint: the plan and the tiling view made from it.
struct PreparedPrint
{
    PrintPlan plan;
    std::unique_ptr<TilingTextView> view;
};

// The warning when one label does not fit the paper's printable area; nothing is printed.
EditorAlert cellSizeAlert();

// The print request the editor's state makes for the paper: the spacing popup's tag, the
// label's frame, the number fields as they read, the label's text.
PrintRequest printRequestFromEditor(const MainViewController& editor, const PaperSettings& paper,
                                    bool fullPage);

// Types a whole number into one of the editor's number fields and ends the editing with
// Return, as the user would: the editor filters it, resizes the serial placeholder run to
// the numbers' digits and reports the change to its document.
void typeIntoNumberField(MainViewController& editor, const QString& fieldName,
                         const QString& number);
inline constexpr char kQuantityFieldName[] = "quantityField";
inline constexpr char kSerialStartFieldName[] = "serialStartFromField";

// The print routine up to the painting, on the editor of a document window: reads the
// editor, makes the plan, and for a full page fills one page, letting the editor resize its
// placeholder run when the page's numbers need more or fewer digits and putting its text
// back afterwards (its undo history stays empty). Nothing when one label does not fit the
// printable area: the caller shows cellSizeAlert() and prints nothing.
std::optional<PreparedPrint> preparePrint(MainViewController& editor, const PaperSettings& paper,
                                          bool fullPage);

} // namespace lomir
