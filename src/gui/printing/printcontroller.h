#pragma once

#include "core/printing/calibration.h"
#include "core/printing/printplan.h"
#include "gui/printing/pagesetupdialog.h"

#include <QObject>
#include <QPageLayout>
#include <QPointer>
#include <QString>
#include <functional>
#include <map>
#include <memory>
#include <optional>

class QPrinter;
class QWidget;

namespace lomir {

class PrintEditor;
class PrintPreviewDialog;
class PrintRun;

// What printing asks and tells the user. The desktop's dialogs answer (PrintDialogs);
// tests answer with a script, so that nothing waits for a click. Every question is
// answered through its callback, which may come later, once a window-modal dialog closes.
class PrintUserInterface
{
public:
    virtual ~PrintUserInterface() = default;

    // The print dialog for the printer, modal to the window: which printer, which of the
    // print's pages, how many copies. The printer shows the document's paper. Answers
    // true when the user chose to print; the printer then holds the choices.
    virtual void askToPrint(QWidget* window, QPrinter& printer, qint64 pageCount,
                            std::function<void(bool)> answer) = 0;
    // The PDF file to export to, suggested by name; answers an empty path when the user
    // cancels.
    virtual void askPdfPath(QWidget* window, const QString& suggestedPath,
                            std::function<void(const QString&)> answer) = 0;
    // Page Setup, starting from the current choice: answers the new choice, or nothing
    // when the user cancels. While it is open, the user can print a calibration page on
    // a printer with the calibration being set up.
    virtual void
    askPageSetup(QWidget* window, const PageSetupChoice& current,
                 std::function<void(const PageSetupChoice&)> printCalibrationPage,
                 std::function<void(const std::optional<PageSetupChoice>&)> answer) = 0;
    // A print or an export failed; the message says which.
    virtual void showPrintError(QWidget* window, const QString& message) = 0;
};

// The print commands of one document window: Page Setup, Print Preview, Export as PDF,
// Print, Print Full Page and the printer calibration page. It keeps the document's page
// layout, new documents starting from the last one chosen in Page Setup; reads the label
// from the window's editor through the print routine; paints through one tiling view and
// page loop onto the printer, a PDF file or the preview; and counts every print that
// reaches its printer or file for the review prompt.
class PrintController final : public QObject
{
    Q_OBJECT

public:
    // A print of more pages than this shows its progress, with a Cancel button.
    static constexpr qint64 kPagesPrintedWithoutProgress = 3;

    // The window is the document window that dialogs are modal to; editor gives its
    // current editor (it is replaced when the document is reverted) and documentName
    // the name prints and PDF files take.
    PrintController(QWidget* window, std::function<PrintEditor*()> editor,
                    std::function<QString()> documentName);
    ~PrintController() override;

    // Replaces how the controller asks the user (tests answer with a script).
    void setUserInterface(std::unique_ptr<PrintUserInterface> userInterface);

    // The document's paper and margins.
    QPageLayout pageLayout() const { return m_pageLayout; }
    // Sets the document's paper and margins, and makes them the choice new documents
    // start from.
    void setPageLayout(const QPageLayout& layout);

    // The commands.
    void printDocument();
    void printFullPage();
    void showPrintPreview();
    void exportPdf();
    void runPageSetup();
    void printCalibrationPage();

    // The printer whose calibration Page Setup shows first: the one this document last
    // printed on, else the system's default printer.
    QString calibratedPrinterName() const;

Q_SIGNALS:
    // A print has started on its way to its printer or file.
    void printStarted(lomir::PrintRun* run);
    // A print ended or was abandoned in its dialog; a successful one has been counted.
    // The review prompt's check follows a count.
    void printOperationDidRun(bool success);
    // A preview window opened.
    void previewShown(lomir::PrintPreviewDialog* preview);

private:
    // The print routine, then the print dialog and the print.
    void print(bool fullPage);
    // The print dialog for a planned print, then the print itself.
    void printPlan(const PrintPlan& plan, bool fullPage);
    void printOnPrinter(const std::shared_ptr<QPrinter>& printer, PrintPlan plan, bool fullPage);
    std::optional<PrintPlan> planPrint(bool fullPage);
    void startRun(PrintRun* run, bool countsAsPrint, const QString& failure);
    void showProgress(PrintRun* run);
    // The calibration page on the paper of the layout, through the print dialog; the
    // calibrations given are used before the stored ones.
    void calibrationPage(const QPageLayout& layout,
                         const std::map<QString, PrinterCalibration>& calibrations);
    PrintEditor& editor() const;

    QWidget* m_window;
    std::function<PrintEditor*()> m_editor;
    std::function<QString()> m_documentName;
    std::unique_ptr<PrintUserInterface> m_userInterface;
    QPageLayout m_pageLayout;
    // The printer last printed on or chosen in Page Setup; empty until there is one.
    QString m_printerName;
};

} // namespace lomir
