#include "gui/printing/pagesetupdialog.h"

#include "core/base/units.h"
#include "core/printing/pagesetup.h"
#include "core/printing/paper.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

namespace lomir {

namespace {

// The papers offered by name; any other is given by its size.
constexpr std::array kStandardPapers{
    QPageSize::A3,      QPageSize::A4,         QPageSize::A5,         QPageSize::A6,
    QPageSize::B5,      QPageSize::Letter,     QPageSize::Legal,      QPageSize::Executive,
    QPageSize::Tabloid, QPageSize::Envelope10, QPageSize::EnvelopeDL, QPageSize::EnvelopeC5};

// The units lengths are typed in.
constexpr std::array kUnits{QPageLayout::Millimeter, QPageLayout::Inch, QPageLayout::Point};

// The largest paper or margin, in points: 5 metres, long enough for any roll.
constexpr double kLargestLengthPoints = 5000.0 * kPointsPerMillimeter;

int decimalsFor(QPageLayout::Unit unit)
{
    return unit == QPageLayout::Inch ? 3 : 2;
}

} // namespace

// A length typed in the dialog's unit. The box keeps the length exactly, in points, and
// shows it rounded to the unit's decimals: a margin of 5 mm stays 5 mm when the dialog is
// switched to inches and back, and when it is not touched at all.
class LengthBox final : public QDoubleSpinBox
{
public:
    explicit LengthBox(QWidget* parent) : QDoubleSpinBox(parent)
    {
        setMinimum(0.0);
        setKeyboardTracking(false);
        setUnit(QPageLayout::Point);
        // Only what the user types changes the length; the others set it in points.
        connect(this, &QDoubleSpinBox::valueChanged, this,
                [this](double value) { m_points = value * pointsPerUnit(m_unit); });
    }

    double points() const { return m_points; }
    // The length in the dialog's unit, unrounded.
    double length() const { return m_points / pointsPerUnit(m_unit); }
    void setPoints(double points)
    {
        m_points = points;
        showLength();
    }
    void setUnit(QPageLayout::Unit unit)
    {
        // Fewer decimals round the value shown, which is not a change of the length.
        const QSignalBlocker quiet(this);
        m_unit = unit;
        setDecimals(decimalsFor(unit));
        setMaximum(kLargestLengthPoints / pointsPerUnit(unit));
        showLength();
    }

private:
    void showLength()
    {
        const QSignalBlocker quiet(this);
        setValue(length());
    }

    QPageLayout::Unit m_unit = QPageLayout::Point;
    double m_points = 0.0;
};

PrinterCalibration PageSetupChoice::calibration() const
{
    const auto found = calibrations.find(printerName);
    return found == calibrations.end() ? PrinterCalibration() : found->second;
}

PageSetupDialog::PageSetupDialog(const PageSetupChoice& current, const QStringList& printers,
                                 std::function<PrinterCalibration(const QString&)> calibrationOf,
                                 QWidget* parent)
    : QDialog(parent), m_printer(new QComboBox(this)), m_paper(new QComboBox(this)),
      m_paperWidth(new LengthBox(this)), m_paperHeight(new LengthBox(this)),
      m_orientation(new QComboBox(this)), m_unit(new QComboBox(this)),
      m_marginLeft(new LengthBox(this)), m_marginTop(new LengthBox(this)),
      m_marginRight(new LengthBox(this)), m_marginBottom(new LengthBox(this)),
      m_noRoom(new QLabel(tr("The margins leave no room for labels on this paper."), this)),
      m_calibration(new QGroupBox(tr("Printer Calibration"), this)),
      m_horizontalOffset(new QDoubleSpinBox(this)), m_verticalOffset(new QDoubleSpinBox(this)),
      m_scale(new QDoubleSpinBox(this)),
      m_calibrationPage(new QPushButton(tr("Print Calibration Page"), this)),
      m_buttons(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this)),
      m_calibrationOf(std::move(calibrationOf)), m_calibrations(current.calibrations)
{
    setWindowTitle(tr("Page Setup"));
    showPaper(current.layout);
    QFormLayout* paperForm = makePaperForm();
    m_noRoom->setWordWrap(true);
    showCalibration(current, printers);
    auto* whole = new QVBoxLayout(this);
    whole->addLayout(paperForm);
    whole->addWidget(m_noRoom);
    whole->addWidget(m_calibration);
    whole->addWidget(m_buttons);

    connectControls();
    updateValidity();
}

// The paper, orientation, unit and margins of the layout in the controls.
void PageSetupDialog::showPaper(const QPageLayout& layout)
{
    const QPageLayout::Unit shownUnit =
        std::find(kUnits.begin(), kUnits.end(), layout.units()) != kUnits.end()
            ? layout.units()
            : QPageLayout::Point;
    m_unit->addItem(tr("Millimeters"), int(QPageLayout::Millimeter));
    m_unit->addItem(tr("Inches"), int(QPageLayout::Inch));
    m_unit->addItem(tr("Points"), int(QPageLayout::Point));
    m_unit->setCurrentIndex(m_unit->findData(int(shownUnit)));
    for (LengthBox* box : lengthBoxes())
        box->setUnit(shownUnit);

    m_orientation->addItem(tr("Portrait"), int(QPageLayout::Portrait));
    m_orientation->addItem(tr("Landscape"), int(QPageLayout::Landscape));
    m_orientation->setCurrentIndex(m_orientation->findData(int(layout.orientation())));

    fillPaperSizes(layout.pageSize());
    const QSizeF paper = layout.pageSize().definitionSize() *
                         pointsPerUnit(QPageLayout::Unit(layout.pageSize().definitionUnits()));
    m_paperWidth->setPoints(paper.width());
    m_paperHeight->setPoints(paper.height());
    const QMarginsF margins = layout.margins() * pointsPerUnit(layout.units());
    m_marginLeft->setPoints(margins.left());
    m_marginTop->setPoints(margins.top());
    m_marginRight->setPoints(margins.right());
    m_marginBottom->setPoints(margins.bottom());
    paperChanged();
}

QFormLayout* PageSetupDialog::makePaperForm()
{
    auto* paperSize = new QHBoxLayout;
    paperSize->addWidget(m_paperWidth);
    paperSize->addWidget(new QLabel(tr("by"), this));
    paperSize->addWidget(m_paperHeight);
    auto* marginGrid = new QGridLayout;
    marginGrid->addWidget(new QLabel(tr("Top:"), this), 0, 2);
    marginGrid->addWidget(m_marginTop, 0, 3);
    marginGrid->addWidget(new QLabel(tr("Left:"), this), 1, 0);
    marginGrid->addWidget(m_marginLeft, 1, 1);
    marginGrid->addWidget(new QLabel(tr("Right:"), this), 1, 4);
    marginGrid->addWidget(m_marginRight, 1, 5);
    marginGrid->addWidget(new QLabel(tr("Bottom:"), this), 2, 2);
    marginGrid->addWidget(m_marginBottom, 2, 3);

    auto* paperForm = new QFormLayout;
    paperForm->addRow(tr("Paper:"), m_paper);
    paperForm->addRow(tr("Size:"), paperSize);
    paperForm->addRow(tr("Orientation:"), m_orientation);
    paperForm->addRow(tr("Units:"), m_unit);
    paperForm->addRow(tr("Margins:"), marginGrid);
    return paperForm;
}

// The calibration's controls, with the printers to choose from and the current one's
// calibration; without a printer there is nothing to calibrate.
void PageSetupDialog::showCalibration(const PageSetupChoice& current, const QStringList& printers)
{
    for (QDoubleSpinBox* offset : {m_horizontalOffset, m_verticalOffset}) {
        offset->setRange(-kLargestCalibrationOffsetMillimeters,
                         kLargestCalibrationOffsetMillimeters);
        offset->setDecimals(2);
        offset->setSingleStep(0.1);
        offset->setSuffix(tr(" mm"));
    }
    m_scale->setRange(kSmallestCalibrationScalePercent, kLargestCalibrationScalePercent);
    m_scale->setDecimals(2);
    m_scale->setSingleStep(0.1);
    m_scale->setSuffix(tr(" %"));
    if (printers.isEmpty() && current.printerName.isEmpty()) {
        m_printer->addItem(tr("No printer is set up"));
        // Nothing to calibrate: the greyed-out boxes show a print left as it is.
        const PrinterCalibration none;
        m_horizontalOffset->setValue(none.horizontalOffsetMillimeters);
        m_verticalOffset->setValue(none.verticalOffsetMillimeters);
        m_scale->setValue(none.scalePercent);
        m_calibration->setEnabled(false);
    } else {
        m_printer->addItems(printers);
        if (!current.printerName.isEmpty() && !printers.contains(current.printerName))
            m_printer->addItem(current.printerName);
        m_printer->setCurrentText(current.printerName.isEmpty() ? printers.first()
                                                                : current.printerName);
        printerChanged();
    }
    auto* calibrationForm = new QFormLayout(m_calibration);
    calibrationForm->addRow(tr("Printer:"), m_printer);
    calibrationForm->addRow(tr("Move right by:"), m_horizontalOffset);
    calibrationForm->addRow(tr("Move down by:"), m_verticalOffset);
    calibrationForm->addRow(tr("Scale:"), m_scale);
    calibrationForm->addRow(m_calibrationPage);
    auto* explanation =
        new QLabel(tr("Labels printed on this printer are moved and scaled by these amounts. "
                      "Print a calibration page and measure where its marks land to find "
                      "them."),
                   m_calibration);
    explanation->setWordWrap(true);
    calibrationForm->addRow(explanation);
}

void PageSetupDialog::connectControls()
{
    connect(m_paper, &QComboBox::currentIndexChanged, this, &PageSetupDialog::paperChanged);
    connect(m_unit, &QComboBox::currentIndexChanged, this, &PageSetupDialog::unitChanged);
    connect(m_printer, &QComboBox::currentIndexChanged, this, &PageSetupDialog::printerChanged);
    for (LengthBox* box : lengthBoxes())
        connect(box, &QDoubleSpinBox::valueChanged, this, &PageSetupDialog::updateValidity);
    connect(m_orientation, &QComboBox::currentIndexChanged, this, &PageSetupDialog::updateValidity);
    connect(m_calibrationPage, &QPushButton::clicked, this,
            [this] { Q_EMIT calibrationPageRequested(choice()); });
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

PageSetupDialog::~PageSetupDialog() = default;

void PageSetupDialog::fillPaperSizes(const QPageSize& current)
{
    for (QPageSize::PageSizeId id : kStandardPapers)
        m_paper->addItem(QPageSize::name(id), int(id));
    const QPageSize::PageSizeId currentId = current.id();
    if (currentId != QPageSize::Custom && m_paper->findData(int(currentId)) < 0)
        m_paper->addItem(QPageSize::name(currentId), int(currentId));
    m_paper->addItem(tr("Custom"), int(QPageSize::Custom));
    m_paper->setCurrentIndex(m_paper->findData(int(currentId)));
}

QDoubleSpinBox* PageSetupDialog::marginBox(Qt::Edge edge) const
{
    switch (edge) {
    case Qt::LeftEdge:
        return m_marginLeft;
    case Qt::TopEdge:
        return m_marginTop;
    case Qt::RightEdge:
        return m_marginRight;
    case Qt::BottomEdge:
        return m_marginBottom;
    }
    return nullptr;
}

std::array<LengthBox*, 6> PageSetupDialog::lengthBoxes() const
{
    return {m_paperWidth, m_paperHeight, m_marginLeft, m_marginTop, m_marginRight, m_marginBottom};
}

QDoubleSpinBox* PageSetupDialog::paperWidthBox() const
{
    return m_paperWidth;
}

QDoubleSpinBox* PageSetupDialog::paperHeightBox() const
{
    return m_paperHeight;
}

QPushButton* PageSetupDialog::okButton() const
{
    return m_buttons->button(QDialogButtonBox::Ok);
}

QPageLayout::Unit PageSetupDialog::unit() const
{
    return QPageLayout::Unit(m_unit->currentData().toInt());
}

QPageSize PageSetupDialog::pageSize() const
{
    const auto id = QPageSize::PageSizeId(m_paper->currentData().toInt());
    if (id != QPageSize::Custom)
        return QPageSize(id);
    // QPageSize and QPageLayout count their units alike.
    return QPageSize(QSizeF(m_paperWidth->length(), m_paperHeight->length()),
                     QPageSize::Unit(unit()), QString(), QPageSize::ExactMatch);
}

void PageSetupDialog::paperChanged()
{
    const bool custom = QPageSize::PageSizeId(m_paper->currentData().toInt()) == QPageSize::Custom;
    m_paperWidth->setEnabled(custom);
    m_paperHeight->setEnabled(custom);
    if (!custom) {
        // A named paper shows its size; choosing Custom next starts from it.
        const QPageSize size = pageSize();
        const QSizeF points =
            size.definitionSize() * pointsPerUnit(QPageLayout::Unit(size.definitionUnits()));
        m_paperWidth->setPoints(points.width());
        m_paperHeight->setPoints(points.height());
    }
    updateValidity();
}

void PageSetupDialog::unitChanged()
{
    for (LengthBox* box : lengthBoxes())
        box->setUnit(unit());
    updateValidity();
}

QMarginsF PageSetupDialog::margins() const
{
    return QMarginsF(m_marginLeft->length(), m_marginTop->length(), m_marginRight->length(),
                     m_marginBottom->length());
}

void PageSetupDialog::rememberCalibration()
{
    if (m_shownPrinter.isEmpty())
        return;
    m_calibrations[m_shownPrinter] = PrinterCalibration{
        m_horizontalOffset->value(), m_verticalOffset->value(), m_scale->value()};
}

void PageSetupDialog::printerChanged()
{
    rememberCalibration();
    m_shownPrinter = m_printer->currentText();
    const auto known = m_calibrations.find(m_shownPrinter);
    const PrinterCalibration calibration =
        known != m_calibrations.end() ? known->second : m_calibrationOf(m_shownPrinter);
    m_horizontalOffset->setValue(calibration.horizontalOffsetMillimeters);
    m_verticalOffset->setValue(calibration.verticalOffsetMillimeters);
    m_scale->setValue(calibration.scalePercent);
}

PageSetupChoice PageSetupDialog::choice() const
{
    PageSetupChoice choice;
    const QPageLayout::Unit lengths = unit();
    choice.layout =
        QPageLayout(pageSize(), QPageLayout::Orientation(m_orientation->currentData().toInt()),
                    QMarginsF(), lengths);
    choice.layout.setMargins(margins());
    choice.calibrations = m_calibrations;
    if (!m_shownPrinter.isEmpty()) {
        choice.printerName = m_shownPrinter;
        choice.calibrations[m_shownPrinter] = PrinterCalibration{
            m_horizontalOffset->value(), m_verticalOffset->value(), m_scale->value()};
    }
    return choice;
}

bool PageSetupDialog::isValidChoice() const
{
    const QPageSize paper = pageSize();
    if (!paper.isValid())
        return false;
    const PageSetupChoice chosen = choice();
    // The layout refuses margins it cannot hold rather than report them.
    if (chosen.layout.margins() != margins())
        return false;
    return leavesRoom(chosen.layout);
}

void PageSetupDialog::updateValidity()
{
    const bool valid = isValidChoice();
    okButton()->setEnabled(valid);
    m_calibrationPage->setEnabled(valid);
    m_noRoom->setVisible(!valid);
}

} // namespace lomir
