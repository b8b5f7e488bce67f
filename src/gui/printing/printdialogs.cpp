#include "gui/printing/printdialogs.h"

#include "core/printing/pagesetup.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QSettings>
#include <algorithm>
#include <limits>

namespace lomir {

namespace {

// A dialog over the window, modal to it alone, that goes away once answered.
void openWindowModal(QDialog* dialog)
{
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

} // namespace

void PrintDialogs::askToPrint(QWidget* window, QPrinter& printer, qint64 pageCount,
                              std::function<void(bool)> answer)
{
    auto* dialog = new QPrintDialog(&printer, window);
    dialog->setOption(QAbstractPrintDialog::PrintPageRange, pageCount > 1);
    dialog->setOption(QAbstractPrintDialog::PrintToFile, true);
    dialog->setMinMax(1, int(std::min<qint64>(pageCount, std::numeric_limits<int>::max())));
    QObject::connect(dialog, &QDialog::finished, dialog, [answer = std::move(answer)](int result) {
        answer(result == QDialog::Accepted);
    });
    openWindowModal(dialog);
}

void PrintDialogs::askPdfPath(QWidget* window, const QString& suggestedPath,
                              std::function<void(const QString&)> answer)
{
    auto* dialog =
        new QFileDialog(window, tr("Export as PDF"), suggestedPath, tr("PDF Document (*.pdf)"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setDefaultSuffix(QStringLiteral("pdf"));
    QObject::connect(
        dialog, &QDialog::finished, dialog, [dialog, answer = std::move(answer)](int result) {
            const QStringList chosen = dialog->selectedFiles();
            answer(result == QDialog::Accepted && !chosen.isEmpty() ? chosen.first() : QString());
        });
    openWindowModal(dialog);
}

void PrintDialogs::askPageSetup(QWidget* window, const PageSetupChoice& current,
                                std::function<void(const PageSetupChoice&)> printCalibrationPage,
                                std::function<void(const std::optional<PageSetupChoice>&)> answer)
{
    auto* dialog = new PageSetupDialog(
        current, QPrinterInfo::availablePrinterNames(),
        [](const QString& printer) { return storedCalibration(QSettings(), printer); }, window);
    QObject::connect(dialog, &PageSetupDialog::calibrationPageRequested, dialog,
                     std::move(printCalibrationPage));
    QObject::connect(dialog, &QDialog::finished, dialog,
                     [dialog, answer = std::move(answer)](int result) {
                         if (result == QDialog::Accepted)
                             answer(dialog->choice());
                         else
                             answer(std::nullopt);
                     });
    openWindowModal(dialog);
}

void PrintDialogs::showPrintError(QWidget* window, const QString& message)
{
    auto* box = new QMessageBox(QMessageBox::Warning, QApplication::applicationDisplayName(),
                                message, QMessageBox::Ok, window);
    openWindowModal(box);
}

} // namespace lomir
