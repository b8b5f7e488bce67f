#include "gui/printing/editorprint.h"

#include "core/base/fatal.h"
#include "core/document/document.h" // the editor header names it inline
#include "core/label/zoom.h"
#include "core/layout/tilingtextview.h"
#include "gui/editor/labeltextview.h"
#include "gui/editor/mainviewcontroller.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>

namespace lomir {

namespace {

struct PrintRoutine
{
    Q_DECLARE_TR_FUNCTIONS(PrintRoutine)
};

// The full page's quantity typed into the quantity field makes the editor resize its run
// to the page's digits as its own serial change (and a label sized by its text grows or
// shrinks with it). The field and the text are put back afterwards; the text goes straight
// into the text view, so the editor does not react to it, and its undo history is cleared.
PrintPlan fullPageWithResizedPlaceholder(MainViewController& editor, const PrintPlan& fullPage)
{
    const Content before = editor.currentRecord();
    const RichText savedText = editor.labelText();
    typeIntoNumberField(editor, QString::fromLatin1(kQuantityFieldName),
                        QString::number(fullPage.quantity));
    const PrintPlan resized =
        fullPagePlanAfterResizing(fullPage, editor.labelText(), before.dimensions,
                                  editor.labelSize(), magnificationForZoom(before.magnification));

    editor.findChild<QLineEdit*>(QString::fromLatin1(kQuantityFieldName))->setText(before.quantity);
    editor.textView()->clearUndoHistory();
    editor.textView()->replaceText(savedText);
    return resized;
}

} // namespace

EditorAlert cellSizeAlert()
{
    return EditorAlert{PrintRoutine::tr("Cell Size Alert Message"),
                       PrintRoutine::tr("Cell Size Alert Informative"), false};
}

PrintRequest printRequestFromEditor(const MainViewController& editor, const PaperSettings& paper,
                                    bool fullPage)
{
    const Content record = editor.currentRecord();
    PrintRequest request;
    request.paper = paper.paper;
    request.margins = paper.margins;
    request.spacingTag = record.outputSpacing;
    request.labelSize = editor.labelSize();
    request.serialStartText = record.serialStartFrom.value_or(QString());
    request.quantityText = record.quantity;
    request.text = editor.labelText();
    request.fullPage = fullPage;
    return request;
}

void typeIntoNumberField(MainViewController& editor, const QString& fieldName,
                         const QString& number)
{
    auto* field = editor.findChild<QLineEdit*>(fieldName);
    if (!field)
        fatalError("The editor has no number field " + fieldName.toStdString());
    field->selectAll();
    field->insert(number); // an edit, as typing is
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(field, &press);
    QKeyEvent release(QEvent::KeyRelease, Qt::Key_Return, Qt::NoModifier);
    QCoreApplication::sendEvent(field, &release);
}

std::optional<PreparedPrint> preparePrint(MainViewController& editor, const PaperSettings& paper,
                                          bool fullPage)
{
    PrintPlan plan = planFromRequest(printRequestFromEditor(editor, paper, fullPage));
    if (fullPage) {
        const bool resizes = fullPageCount(plan).resizesPlaceholder;
        plan = fullPagePlan(plan);
        // A cell that does not fit makes no page at all; the fit test below refuses it.
        if (resizes && plan.quantity > 0)
            plan = fullPageWithResizedPlaceholder(editor, plan);
    }
    if (!planFits(plan))
        return std::nullopt;
    PreparedPrint prepared{plan, makeTilingTextView(plan)};
    return prepared;
}

} // namespace lomir
