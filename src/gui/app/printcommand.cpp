#include "gui/app/printcommand.h"

#include "core/document/document.h"
#include "core/layout/tilingtextview.h"
#include "core/printing/pageloop.h"
#include "core/printing/paper.h"
#include "gui/app/cascadingwindowcontroller.h"
#include "gui/app/scene.h"
#include "gui/editor/mainviewcontroller.h"
#include "gui/printing/editorprint.h"

#include <QCoreApplication>
#include <QPainter>
#include <QPdfWriter>
#include <QPrinter>
#include <QPrinterInfo>
#include <QSaveFile>
#include <QTextStream>
#include <functional>
#include <memory>
#include <optional>

namespace lomir {

namespace {

struct PrintCommand
{
    Q_DECLARE_TR_FUNCTIONS(CommandLine)
};

constexpr int kExitSuccess = 0;
constexpr int kExitFailure = 1;

// The editor's warnings, written to the error stream instead of waiting for a click. No
// warning is ever suppressed from here.
class StreamAlertPresenter final : public AlertPresenter
{
public:
    explicit StreamAlertPresenter(QTextStream& err) : m_err(err) {}
    void beep() override {}
    bool runModal(const EditorAlert& alert) override
    {
        m_err << alert.message << '\n' << alert.informativeText << '\n';
        m_err.flush();
        return false;
    }

private:
    QTextStream& m_err;
};

// Where painting a print onto a device stopped.
enum class DeviceFailure
{
    PageLayout, // the device does not take the paper
    Start,      // the painter could not begin on it
    Pages,      // it stopped taking pages
};

// Lays the device's page out as the whole paper and paints every page onto it. The
// abort, when given, runs before the painter ends on a device that stopped taking pages.
std::optional<DeviceFailure> paintPrint(QPagedPaintDevice& device, const PreparedPrint& print,
                                        const std::function<void()>& abort = {})
{
    if (!device.setPageLayout(fullPaperLayout(print.plan.paper)))
        return DeviceFailure::PageLayout;
    QPainter painter;
    if (!painter.begin(&device))
        return DeviceFailure::Start;
    const PaintOutcome outcome =
        paintPages(painter, device, *print.view, print.plan.margins, PagePainting{});
    if (outcome != PaintOutcome::Finished && abort)
        abort();
    painter.end();
    if (outcome != PaintOutcome::Finished)
        return DeviceFailure::Pages;
    return std::nullopt;
}

int printToPdf(const PreparedPrint& print, const QString& path, const QString& title,
               QTextStream& err)
{
    // The PDF replaces the file only once it is whole.
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        QPdfWriter writer(&file);
        writer.setTitle(title);
        writer.setCreator(QStringLiteral("Lomir"));
        const std::optional<DeviceFailure> failure = paintPrint(writer, print);
        if (failure == DeviceFailure::PageLayout) {
            err << PrintCommand::tr("The paper size cannot be used for a PDF.") << '\n';
            return kExitFailure;
        }
        if (!failure && file.commit())
            return kExitSuccess;
    }
    err << PrintCommand::tr("Cannot write “%1”: %2.").arg(path, file.errorString()) << '\n';
    return kExitFailure;
}

int printOnQueue(const PreparedPrint& print, const QString& queue, const QString& title,
                 QTextStream& err)
{
    if (QPrinterInfo::printerInfo(queue).isNull()) {
        err << PrintCommand::tr("There is no printer named “%1”.").arg(queue) << '\n';
        return kExitFailure;
    }
    QPrinter printer(QPrinter::HighResolution);
    printer.setPrinterName(queue);
    printer.setDocName(title);
    printer.setFullPage(true);
    const std::optional<DeviceFailure> failure =
        paintPrint(printer, print, [&printer] { printer.abort(); });
    if (!failure)
        return kExitSuccess;
    switch (*failure) {
    case DeviceFailure::PageLayout:
        err << PrintCommand::tr("The printer “%1” does not take this paper size.").arg(queue);
        break;
    case DeviceFailure::Start:
        err << PrintCommand::tr("The printer “%1” does not take the job.").arg(queue);
        break;
    case DeviceFailure::Pages:
        err << PrintCommand::tr("The printer “%1” stopped taking pages.").arg(queue);
        break;
    }
    err << '\n';
    return kExitFailure;
}

} // namespace

int runPrintCommand(const PrintCommandOptions& options, const QString& type, QTextStream& err)
{
    Document document;
    const Status read = document.readFromFile(options.file, type);
    if (!read) {
        err << read.error().message << '\n';
        return kExitFailure;
    }

    // The document's own window, as the editor finds its document through it. It is never
    // shown: the editor loads the record as on the window's first appearance. The window
    // goes before the document.
    std::unique_ptr<CascadingWindowController> window(
        instantiateController<CascadingWindowController>(kDocumentWindowScene));
    window->setAttribute(Qt::WA_DeleteOnClose, false);
    window->setDocument(&document, nullptr);
    MainViewController& editor = *window->editor();
    editor.setAlertPresenter(std::make_unique<StreamAlertPresenter>(err));
    editor.viewDidAppear();

    // The numbers go in as the user types them, so that the editor sizes the serial run.
    if (options.serialStart)
        typeIntoNumberField(editor, QString::fromLatin1(kSerialStartFieldName),
                            QString::number(*options.serialStart));
    if (options.quantity)
        typeIntoNumberField(editor, QString::fromLatin1(kQuantityFieldName),
                            QString::number(*options.quantity));

    const std::optional<PreparedPrint> print =
        preparePrint(editor, PaperSettings{options.paper, options.margins}, options.fullPage);
    if (!print) {
        const EditorAlert alert = cellSizeAlert();
        err << alert.message << '\n' << alert.informativeText << '\n';
        return kExitFailure;
    }
    const QString title = document.displayName();
    return options.printerName.isEmpty() ? printToPdf(*print, options.pdfPath, title, err)
                                         : printOnQueue(*print, options.printerName, title, err);
}

} // namespace lomir
