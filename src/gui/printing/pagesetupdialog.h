#pragma once

#include "core/printing/calibration.h"

#include <QDialog>
#include <QPageLayout>
#include <QPageSize>
#include <QString>
#include <QStringList>
#include <array>
#include <functional>
#include <map>

class QComboBox;
class QDialogButtonBox;
class QDoubleSpinBox;
class QFormLayout;
class QGroupBox;
class QLabel;
class QPushButton;

namespace lomir {

class LengthBox;

// What Page Setup chooses: the document's paper and margins, and the calibration of the
// printers it was shown for.
struct PageSetupChoice
{
    QPageLayout layout;
    // The printer shown when the dialog closed; empty when there is none to choose.
    QString printerName;
    // The calibration of every printer the dialog showed, by name.
    std::map<QString, PrinterCalibration> calibrations;

    PrinterCalibration calibration() const;
};

// Page Setup: the paper (a standard size or one of the user's own, such as a roll's
// label-sized paper), its orientation and the margins, in millimetres, inches or points;
// and the calibration of a printer: how far it puts the print off to the right and down,
// in millimetres, and how much larger or smaller, in percent. A calibration page can be
// printed from here, with the calibration as it is being set up.
class PageSetupDialog final : public QDialog
{
    Q_OBJECT

public:
    // printers lists the printers to calibrate; calibrationOf gives one's stored
    // calibration, for the printers the current choice does not hold.
    PageSetupDialog(const PageSetupChoice& current, const QStringList& printers,
                    std::function<PrinterCalibration(const QString&)> calibrationOf,
                    QWidget* parent = nullptr);
    ~PageSetupDialog() override;

    // The choice as the controls hold it.
    PageSetupChoice choice() const;
    // Whether the margins leave room on the paper; OK is offered only then.
    bool isValidChoice() const;

    // The controls, for tests that drive the dialog as a user would.
    QComboBox* printerBox() const { return m_printer; }
    QComboBox* paperBox() const { return m_paper; }
    QComboBox* orientationBox() const { return m_orientation; }
    QComboBox* unitBox() const { return m_unit; }
    QDoubleSpinBox* paperWidthBox() const;
    QDoubleSpinBox* paperHeightBox() const;
    QDoubleSpinBox* marginBox(Qt::Edge edge) const;
    QDoubleSpinBox* horizontalOffsetBox() const { return m_horizontalOffset; }
    QDoubleSpinBox* verticalOffsetBox() const { return m_verticalOffset; }
    QDoubleSpinBox* scaleBox() const { return m_scale; }
    QPushButton* calibrationPageButton() const { return m_calibrationPage; }
    QPushButton* okButton() const;

Q_SIGNALS:
    // The user asked for a calibration page with the choice as it stands.
    void calibrationPageRequested(const lomir::PageSetupChoice& choice);

private:
    void showPaper(const QPageLayout& layout);
    QFormLayout* makePaperForm();
    void showCalibration(const PageSetupChoice& current, const QStringList& printers);
    void connectControls();
    void fillPaperSizes(const QPageSize& current);
    void paperChanged();
    void unitChanged();
    void printerChanged();
    void rememberCalibration();
    void updateValidity();
    QPageLayout::Unit unit() const;
    QPageSize pageSize() const;
    QMarginsF margins() const;
    std::array<LengthBox*, 6> lengthBoxes() const;

    QComboBox* m_printer;
    QComboBox* m_paper;
    LengthBox* m_paperWidth;
    LengthBox* m_paperHeight;
    QComboBox* m_orientation;
    QComboBox* m_unit;
    LengthBox* m_marginLeft;
    LengthBox* m_marginTop;
    LengthBox* m_marginRight;
    LengthBox* m_marginBottom;
    QLabel* m_noRoom;
    QGroupBox* m_calibration;
    QDoubleSpinBox* m_horizontalOffset;
    QDoubleSpinBox* m_verticalOffset;
    QDoubleSpinBox* m_scale;
    QPushButton* m_calibrationPage;
    QDialogButtonBox* m_buttons;

    std::function<PrinterCalibration(const QString&)> m_calibrationOf;
    std::map<QString, PrinterCalibration> m_calibrations;
    QString m_shownPrinter;
};

} // namespace lomir
