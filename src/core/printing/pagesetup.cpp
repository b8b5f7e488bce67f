#include "core/printing/pagesetup.h"

#include "core/printing/paper.h"

#include <QPageSize>
#include <QSettings>
#include <QUrl>
#include <algorithm>
#include <array>
#include <cmath>

namespace lomir {

namespace {

// The settings of Page Setup's last choice.
const QString kPaperWidthKey = QStringLiteral("PageSetup/paperWidth");
const QString kPaperHeightKey = QStringLiteral("PageSetup/paperHeight");
const QString kPaperUnitKey = QStringLiteral("PageSetup/paperUnit");
const QString kPaperNameKey = QStringLiteral("PageSetup/paperName");
const QString kOrientationKey = QStringLiteral("PageSetup/orientation");
const QString kMarginsKey = QStringLiteral("PageSetup/margins");
const QString kMarginUnitKey = QStringLiteral("PageSetup/marginUnit");

const QString kLandscape = QStringLiteral("landscape");
const QString kPortrait = QStringLiteral("portrait");

// Each printer's calibration is a group named after the printer. Printer names may hold
// slashes, which QSettings takes for groups, so the name is percent-encoded.
QString calibrationGroup(const QString& printerName)
{
    return QStringLiteral("PrinterCalibration/") +
           QString::fromLatin1(QUrl::toPercentEncoding(printerName));
}

const QString kHorizontalOffsetKey = QStringLiteral("horizontalOffsetMillimetres");
const QString kVerticalOffsetKey = QStringLiteral("verticalOffsetMillimetres");
const QString kScaleKey = QStringLiteral("scalePercent");

std::optional<double> storedNumber(const QSettings& settings, const QString& key)
{
    bool ok = false;
    const double number = settings.value(key).toDouble(&ok);
    if (!ok || !std::isfinite(number))
        return std::nullopt;
    return number;
}

// A unit of Qt's page sizes and layouts stored as its number; both enumerations count
// the same units in the same order, Millimeter to Cicero.
std::optional<int> storedUnit(const QSettings& settings, const QString& key)
{
    bool ok = false;
    const int unit = settings.value(key).toInt(&ok);
    if (!ok || unit < int(QPageLayout::Millimeter) || unit > int(QPageLayout::Cicero))
        return std::nullopt;
    return unit;
}

} // namespace

bool leavesRoom(const QPageLayout& layout)
{
    const PaperSettings settings = paperSettings(layout);
    return settings.paper.width() - settings.margins.left() - settings.margins.right() > 0.0 &&
           settings.paper.height() - settings.margins.top() - settings.margins.bottom() > 0.0;
}

QPageLayout defaultPageLayout(const QLocale& paperLocale)
{
    // The territories whose printers take US Letter, as the C library's locales say.
    static constexpr std::array kLetterTerritories{
        QLocale::UnitedStates, QLocale::Canada,           QLocale::Mexico,     QLocale::Chile,
        QLocale::Colombia,     QLocale::CostaRica,        QLocale::Guatemala,  QLocale::Nicaragua,
        QLocale::Panama,       QLocale::PuertoRico,       QLocale::ElSalvador, QLocale::Venezuela,
        QLocale::Philippines,  QLocale::DominicanRepublic};
    const bool letter = std::find(kLetterTerritories.begin(), kLetterTerritories.end(),
                                  paperLocale.territory()) != kLetterTerritories.end();
    const QPageSize paper(letter ? QPageSize::Letter : QPageSize::A4);
    return QPageLayout(paper, QPageLayout::Portrait,
                       QMarginsF(kDefaultMarginPoints, kDefaultMarginPoints, kDefaultMarginPoints,
                                 kDefaultMarginPoints),
                       QPageLayout::Point);
}

QLocale paperLocale()
{
    for (const char* variable : {"LC_ALL", "LC_PAPER", "LANG"}) {
        const QString name = qEnvironmentVariable(variable);
        if (!name.isEmpty())
            // "en_US.UTF-8@euro": the part before the encoding names the locale.
            return QLocale(name.section(u'.', 0, 0).section(u'@', 0, 0));
    }
    return QLocale::c();
}

QPageLayout storedPageLayout(const QSettings& settings)
{
    const QPageLayout fallback = defaultPageLayout(paperLocale());
    const std::optional<double> width = storedNumber(settings, kPaperWidthKey);
    const std::optional<double> height = storedNumber(settings, kPaperHeightKey);
    const std::optional<int> paperUnit = storedUnit(settings, kPaperUnitKey);
    const std::optional<int> marginUnit = storedUnit(settings, kMarginUnitKey);
    const QVariantList marginValues = settings.value(kMarginsKey).toList();
    const QString orientation = settings.value(kOrientationKey).toString();
    if (!width || !height || !(*width > 0.0) || !(*height > 0.0) || !paperUnit || !marginUnit ||
        marginValues.size() != 4 || (orientation != kPortrait && orientation != kLandscape))
        return fallback;
    double margins[4];
    for (int side = 0; side < 4; ++side) {
        bool ok = false;
        margins[side] = marginValues[side].toDouble(&ok);
        if (!ok || !std::isfinite(margins[side]) || margins[side] < 0.0)
            return fallback;
    }
    // An exact match keeps a standard paper's name and id, and a roll's label-sized paper
    // as it was measured.
    const QPageSize paper(QSizeF(*width, *height), QPageSize::Unit(*paperUnit),
                          settings.value(kPaperNameKey).toString(), QPageSize::ExactMatch);
    QPageLayout layout(paper,
                       orientation == kLandscape ? QPageLayout::Landscape : QPageLayout::Portrait,
                       QMarginsF(), QPageLayout::Unit(*marginUnit));
    // Margins that leave no room on the paper make no layout to print on.
    if (!paper.isValid() ||
        !layout.setMargins(QMarginsF(margins[0], margins[1], margins[2], margins[3])) ||
        !leavesRoom(layout))
        return fallback;
    return layout;
}

void storePageLayout(QSettings& settings, const QPageLayout& layout)
{
    const QPageSize& paper = layout.pageSize();
    const QSizeF size = paper.definitionSize();
    settings.setValue(kPaperWidthKey, size.width());
    settings.setValue(kPaperHeightKey, size.height());
    settings.setValue(kPaperUnitKey, int(paper.definitionUnits()));
    settings.setValue(kPaperNameKey, paper.name());
    settings.setValue(kOrientationKey,
                      layout.orientation() == QPageLayout::Landscape ? kLandscape : kPortrait);
    const QMarginsF margins = layout.margins();
    settings.setValue(kMarginsKey, QVariantList{margins.left(), margins.top(), margins.right(),
                                                margins.bottom()});
    settings.setValue(kMarginUnitKey, int(layout.units()));
}

bool isValidCalibration(const PrinterCalibration& calibration)
{
    // Written so that a value that is not a number fails every comparison.
    const auto offsetInRange = [](double millimeters) {
        return millimeters >= -kLargestCalibrationOffsetMillimeters &&
               millimeters <= kLargestCalibrationOffsetMillimeters;
    };
    return offsetInRange(calibration.horizontalOffsetMillimeters) &&
           offsetInRange(calibration.verticalOffsetMillimeters) &&
           calibration.scalePercent >= kSmallestCalibrationScalePercent &&
           calibration.scalePercent <= kLargestCalibrationScalePercent;
}

PrinterCalibration storedCalibration(const QSettings& settings, const QString& printerName)
{
    const QString group = calibrationGroup(printerName) + u'/';
    const PrinterCalibration none;
    PrinterCalibration calibration;
    calibration.horizontalOffsetMillimeters = storedNumber(settings, group + kHorizontalOffsetKey)
                                                  .value_or(none.horizontalOffsetMillimeters);
    calibration.verticalOffsetMillimeters =
        storedNumber(settings, group + kVerticalOffsetKey).value_or(none.verticalOffsetMillimeters);
    calibration.scalePercent =
        storedNumber(settings, group + kScaleKey).value_or(none.scalePercent);
    return isValidCalibration(calibration) ? calibration : none;
}

void storeCalibration(QSettings& settings, const QString& printerName,
                      const PrinterCalibration& calibration)
{
    const QString group = calibrationGroup(printerName);
    if (calibration == PrinterCalibration()) {
        settings.remove(group);
        return;
    }
    settings.setValue(group + u'/' + kHorizontalOffsetKey, calibration.horizontalOffsetMillimeters);
    settings.setValue(group + u'/' + kVerticalOffsetKey, calibration.verticalOffsetMillimeters);
    settings.setValue(group + u'/' + kScaleKey, calibration.scalePercent);
}

} // namespace lomir
