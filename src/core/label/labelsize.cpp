#include "core/label/labelsize.h"

#include "core/label/numberinput.h"
#include "core/layout/measurement.h"

#include <QCoreApplication>
#include <cstring>

namespace lomir {

namespace {

// The read-out never shows a label smaller than it is: sizes are rounded up.
constexpr int kReadoutPlaces = 2;

// "%.2f": two decimals with "." whatever the locale, rounded to nearest.
QString withTwoDecimals(double value)
{
    return QString::asprintf("%.2f", value);
}

QString readoutNumber(double points, double factor)
{
    return withTwoDecimals(roundToPlaces(kReadoutPlaces, RoundingRule::Up, points * factor));
}

} // namespace

bool isCustomSize(qint64 sizeTag)
{
    return sizeTag == kCustomSizeTag;
}

std::optional<double> forcedFontSize(qint64 sizeTag)
{
    switch (sizeTag) {
    case 4:
        return 9.0;
    case 5:
        return 7.0;
    case 6:
        return 4.0;
    case 7:
        return 8.0;
    default:
        return std::nullopt;
    }
}

bool SizeReadout::operator==(const SizeReadout& other) const
{
    // The keys are compared as text: a copy of a key is the same key.
    const bool sameKey = unitKey == other.unitKey ||
                         (unitKey && other.unitKey && std::strcmp(unitKey, other.unitKey) == 0);
    return width == other.width && height == other.height && sameKey;
}

SizeReadout sizeReadout(double width, double height, Metric metric)
{
    const double factor = conversionFactor(metric);
    return {readoutNumber(width, factor), readoutNumber(height, factor), unitShorthandKey(metric)};
}

const char* unitShorthandKey(Metric metric)
{
    return metric == Metric::inches ? QT_TRANSLATE_NOOP("Metric", "Inches Shorthand")
                                    : QT_TRANSLATE_NOOP("Metric", "Millimeters Shorthand");
}

QString unitShorthand(Metric metric)
{
    return QCoreApplication::translate(kUnitTranslationContext, unitShorthandKey(metric));
}

QString sizeLabelText(const SizeReadout& readout, const QString& unitShorthand)
{
    return readout.width + QStringLiteral(" x ") + readout.height + QLatin1Char(' ') +
           unitShorthand;
}

std::optional<double> customInputToPoints(const QString& text, Metric metric)
{
    const std::optional<double> value = parseDecimalInput(text);
    if (!value)
        return std::nullopt;
    return *value / conversionFactor(metric);
}

bool isSameSizeToTwoDecimals(const QSizeF& a, const QSizeF& b)
{
    // Compared as shown, so that sizes that only differ past the second decimal, as
    // converting units leaves them, count as the same.
    return withTwoDecimals(a.width()) == withTwoDecimals(b.width()) &&
           withTwoDecimals(a.height()) == withTwoDecimals(b.height());
}

} // namespace lomir
