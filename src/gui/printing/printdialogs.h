#pragma once

#include "gui/printing/printcontroller.h"

#include <QCoreApplication>

namespace lomir {

// Printing's questions as the desktop's dialogs, each modal to the document window and
// answered when it closes: Qt's print dialog, a save dialog for PDF files, Page Setup
// (with the printers the system knows and their stored calibration) and a warning box.
class PrintDialogs final : public PrintUserInterface
{
    Q_DECLARE_TR_FUNCTIONS(PrintDialogs)

public:
    void askToPrint(QWidget* window, QPrinter& printer, qint64 pageCount,
                    std::function<void(bool)> answer) override;
    void askPdfPath(QWidget* window, const QString& suggestedPath,
                    std::function<void(const QString&)> answer) override;
    void askPageSetup(QWidget* window, const PageSetupChoice& current,
                      std::function<void(const PageSetupChoice&)> printCalibrationPage,
                      std::function<void(const std::optional<PageSetupChoice>&)> answer) override;
    void showPrintError(QWidget* window, const QString& message) override;
};

} // namespace lomir
