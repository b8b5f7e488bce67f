#include "gui/printing/printcontroller.h"

#include "core/app/reviewprompt.h"
#include "core/base/fatal.h"
#include "core/layout/sheetgeometry.h"
#include "core/layout/tilingtextview.h"
#include "core/printing/calibrationpage.h"
#include "core/printing/exportname.h"
#include "core/printing/pageloop.h"
#include "core/printing/pagesetup.h"
#include "core/printing/paper.h"
#include "core/printing/printroutine.h"
#include "gui/printing/printdialogs.h"
#include "gui/printing/printpreview.h"
#include "gui/printing/printrun.h"

#include <QCoreApplication>
#include <QDir>
#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>
#include <QProgressDialog>
#include <QSettings>
#include <QStandardPaths>
#include <algorithm>
#include <limits>

namespace lomir {

namespace {

// The pages a print has, from its plan.
qint64 pageCountOf(const PrintPlan& plan)
{
    return sheetGrid(plan.quantity, plan.cell, printableSize(plan)).numberOfPages;
}

// The pages the print dialog asked for: every page, or the range the user typed, from 1,
// within the print's pages.
std::optional<PageRange> chosenPages(const QPrinter& printer, qint64 pageCount)
{
    if (printer.printRange() != QPrinter::PageRange || printer.fromPage() < 1)
        return std::nullopt;
    const qint64 first = std::min<qint64>(printer.fromPage(), pageCount) - 1;
    const qint64 last = std::clamp<qint64>(printer.toPage(), first + 1, pageCount) - 1;
    return PageRange{first, last - first + 1};
}

// The calibration of the printer the pages go to; none when they go to a file.
PrinterCalibration calibrationOf(const QPrinter& printer,
                                 const std::map<QString, PrinterCalibration>& known = {})
{
    if (printer.outputFormat() != QPrinter::NativeFormat)
        return {};
    const auto found = known.find(printer.printerName());
    if (found != known.end())
        return found->second;
    return storedCalibration(QSettings(), printer.printerName());
}

// A printer showing the document's paper and margins, on the printer last used.
std::shared_ptr<QPrinter> printerFor(const QPageLayout& layout, const QString& printerName,
                                     const QString& documentName)
{
    auto printer = std::make_shared<QPrinter>(QPrinter::HighResolution);
    if (!printerName.isEmpty() && QPrinterInfo::availablePrinterNames().contains(printerName))
        printer->setPrinterName(printerName);
    printer->setPageLayout(layout);
    printer->setDocName(documentName);
    printer->setCreator(QStringLiteral("Lomir"));
    return printer;
}

bool samePaper(const QPageLayout& a, const QPageLayout& b)
{
    return paperSettings(a).paper == paperSettings(b).paper;
}

} // namespace

PrintController::PrintController(QWidget* window, std::function<PrintEditor*()> editor,
                                 std::function<QString()> documentName)
    : QObject(window), m_window(window), m_editor(std::move(editor)),
      m_documentName(std::move(documentName)), m_userInterface(std::make_unique<PrintDialogs>()),
      m_pageLayout(storedPageLayout(QSettings()))
{
}

QString PrintController::calibratedPrinterName() const
{
    // Asking the print system is left until a print needs it: it can take a while, and
    // every new window would wait for it.
    return m_printerName.isEmpty() ? QPrinterInfo::defaultPrinterName() : m_printerName;
}

PrintController::~PrintController() = default;

void PrintController::setUserInterface(std::unique_ptr<PrintUserInterface> userInterface)
{
    m_userInterface = std::move(userInterface);
}

void PrintController::setPageLayout(const QPageLayout& layout)
{
    m_pageLayout = layout;
    QSettings settings;
    storePageLayout(settings, layout);
}

PrintEditor& PrintController::editor() const
{
    PrintEditor* editor = m_editor();
    if (!editor)
        fatalError("PrintController: the document window has no editor to print from");
    return *editor;
}

std::optional<PrintPlan> PrintController::planPrint(bool fullPage)
{
    return preparePrint(editor(), paperSettings(m_pageLayout), fullPage);
}

void PrintController::printDocument()
{
    print(false);
}

void PrintController::printFullPage()
{
    print(true);
}

void PrintController::print(bool fullPage)
{
    if (const std::optional<PrintPlan> plan = planPrint(fullPage))
        printPlan(*plan, fullPage);
}

void PrintController::printPlan(const PrintPlan& plan, bool fullPage)
{
    const std::shared_ptr<QPrinter> printer =
        printerFor(m_pageLayout, calibratedPrinterName(), m_documentName());
    const QPointer<PrintController> self(this);
    m_userInterface->askToPrint(m_window, *printer, pageCountOf(plan),
                                [self, printer, plan, fullPage](bool accepted) {
                                    if (!self)
                                        return;
                                    if (!accepted) {
                                        Q_EMIT self->printOperationDidRun(false);
                                        return;
                                    }
                                    self->printOnPrinter(printer, plan, fullPage);
                                });
}

void PrintController::printOnPrinter(const std::shared_ptr<QPrinter>& printer, PrintPlan plan,
                                     bool fullPage)
{
    // Paper chosen in the print dialog becomes the document's, and the labels are laid
    // out on it anew.
    const QPageLayout chosen = printer->pageLayout();
    if (!samePaper(chosen, m_pageLayout)) {
        QPageLayout adopted = m_pageLayout;
        adopted.setPageSize(chosen.pageSize());
        adopted.setOrientation(chosen.orientation());
        setPageLayout(adopted);
        const std::optional<PrintPlan> replanned = planPrint(fullPage);
        if (!replanned)
            return;
        plan = *replanned;
    }
    if (printer->outputFormat() == QPrinter::NativeFormat)
        m_printerName = printer->printerName();

    PagePainting options;
    options.pages = chosenPages(*printer, pageCountOf(plan));
    options.calibration = calibrationOf(*printer);
    PrintRun* run = PrintRun::forLabels(std::make_unique<PrinterDestination>(printer, m_pageLayout),
                                        makeTilingTextView(plan), plan.margins, options,
                                        QCoreApplication::instance());
    startRun(run, true, tr("The labels could not be printed."));
}

void PrintController::exportPdf()
{
    const std::optional<PrintPlan> plan = planPrint(false);
    if (!plan)
        return;
    const QString suggested =
        QDir(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation))
            .filePath(pdfFileName(m_documentName()));
    const QPointer<PrintController> self(this);
    m_userInterface->askPdfPath(m_window, suggested, [self, plan](const QString& path) {
        if (!self)
            return;
        if (path.isEmpty()) {
            Q_EMIT self->printOperationDidRun(false);
            return;
        }
        // A file gets the labels exactly where the plan puts them: no printer's
        // calibration.
        PrintRun* run = PrintRun::forLabels(
            std::make_unique<PdfFileDestination>(path, self->m_pageLayout, self->m_documentName()),
            makeTilingTextView(*plan), plan->margins, PagePainting(), QCoreApplication::instance());
        self->startRun(
            run, true,
            tr("The PDF “%1” could not be written.").arg(QDir::toNativeSeparators(path)));
    });
}

void PrintController::showPrintPreview()
{
    const std::optional<PrintPlan> plan = planPrint(false);
    if (!plan)
        return;
    auto* preview =
        new PrintPreviewDialog(makeTilingTextView(*plan), PaperSettings{plan->paper, plan->margins},
                               m_documentName(), m_window);
    preview->setAttribute(Qt::WA_DeleteOnClose);
    connect(preview, &PrintPreviewDialog::printRequested, this,
            [this, plan = *plan] { printPlan(plan, false); });
    preview->show();
    Q_EMIT previewShown(preview);
}

void PrintController::runPageSetup()
{
    PageSetupChoice current;
    current.layout = m_pageLayout;
    current.printerName = calibratedPrinterName();
    if (!current.printerName.isEmpty())
        current.calibrations[current.printerName] =
            storedCalibration(QSettings(), current.printerName);
    const QPointer<PrintController> self(this);
    m_userInterface->askPageSetup(
        m_window, current,
        [self](const PageSetupChoice& choice) {
            if (self)
                self->calibrationPage(choice.layout, choice.calibrations);
        },
        [self](const std::optional<PageSetupChoice>& choice) {
            if (!self || !choice)
                return;
            self->setPageLayout(choice->layout);
            QSettings settings;
            for (const auto& [printer, calibration] : choice->calibrations)
                storeCalibration(settings, printer, calibration);
            if (!choice->printerName.isEmpty())
                self->m_printerName = choice->printerName;
        });
}

void PrintController::printCalibrationPage()
{
    calibrationPage(m_pageLayout, {});
}

void PrintController::calibrationPage(const QPageLayout& layout,
                                      const std::map<QString, PrinterCalibration>& calibrations)
{
    const std::shared_ptr<QPrinter> printer =
        printerFor(layout, calibratedPrinterName(), tr("Calibration Page"));
    const QPointer<PrintController> self(this);
    m_userInterface->askToPrint(
        m_window, *printer, 1, [self, printer, calibrations](bool accepted) {
            if (!self || !accepted)
                return;
            const PrinterCalibration calibration = calibrationOf(*printer, calibrations);
            const QPageLayout paperLayout = printer->pageLayout();
            const QSizeF paper = paperSettings(paperLayout).paper;
            const QString printerName = printer->outputFormat() == QPrinter::NativeFormat
                                            ? printer->printerName()
                                            : tr("PDF");
            const QString caption =
                tr("Calibration page for “%1”, printed moved %2 mm right and %3 mm down and "
                   "scaled to %4%. Measure from the paper's left and top edges to each crosshair: "
                   "it should lie as many millimeters in as its ruler says. Where the print lies "
                   "too far right or down, lower these numbers in Page Setup by the difference; "
                   "where it lies too far left or up, raise them. If a ruler measures longer or "
                   "shorter than marked, change the scale by the same share.")
                    .arg(printerName, QString::number(calibration.horizontalOffsetMillimeters),
                         QString::number(calibration.verticalOffsetMillimeters),
                         QString::number(calibration.scalePercent));
            auto painting = [paper, calibration, caption](QPainter& painter,
                                                          QPagedPaintDevice& device,
                                                          const PageProgress& progress) {
                painter.setWorldTransform(paperToDevice(device, calibration));
                paintCalibrationPage(painter, paper, caption);
                progress(1, 1);
                return PaintOutcome::Finished;
            };
            auto* run = new PrintRun(std::make_unique<PrinterDestination>(printer, paperLayout), 1,
                                     std::move(painting), QCoreApplication::instance());
            self->startRun(run, false, tr("The calibration page could not be printed."));
        });
}

void PrintController::startRun(PrintRun* run, bool countsAsPrint, const QString& failure)
{
    const QPointer<PrintController> self(this);
    connect(run, &PrintRun::finished, run,
            [self, run, countsAsPrint, failure](PaintOutcome outcome) {
                const bool success = outcome == PaintOutcome::Finished;
                if (countsAsPrint) {
                    QSettings settings;
                    countPrint(settings, success);
                }
                if (self) {
                    if (outcome == PaintOutcome::DeviceFailed)
                        self->m_userInterface->showPrintError(self->m_window, failure);
                    if (countsAsPrint)
                        Q_EMIT self->printOperationDidRun(success);
                }
                run->deleteLater();
            });
    if (run->pageCount() > kPagesPrintedWithoutProgress)
        showProgress(run);
    Q_EMIT printStarted(run);
    run->start();
}

void PrintController::showProgress(PrintRun* run)
{
    const int pageCount = int(std::min<qint64>(run->pageCount(), std::numeric_limits<int>::max()));
    auto* progress = new QProgressDialog(tr("Printing “%1”…").arg(m_documentName()), tr("Cancel"),
                                         0, pageCount, m_window);
    progress->setWindowTitle(tr("Printing"));
    // Not modal: the document stays open to work on while its labels print.
    progress->setWindowModality(Qt::NonModal);
    progress->setAttribute(Qt::WA_DeleteOnClose);
    progress->setAutoClose(false);
    progress->setAutoReset(false);
    progress->setMinimumDuration(0);
    connect(run, &PrintRun::pagePainted, progress, [progress](qint64 painted, qint64 count) {
        progress->setValue(int(std::min<qint64>(painted, progress->maximum())));
        progress->setLabelText(tr("Printed page %1 of %2…").arg(painted).arg(count));
    });
    connect(progress, &QProgressDialog::canceled, run, &PrintRun::cancel);
    connect(run, &PrintRun::finished, progress, &QWidget::close);
    progress->show();
}

} // namespace lomir
