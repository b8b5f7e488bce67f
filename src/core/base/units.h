#pragma once

#include <QtGlobal>
#include <optional>

namespace lomir {

// The unit the user sees and types label sizes in. Inside, every length is in points.
enum class Metric : qint64
{
    millimetres = 0,
    inches = 1
};

// 0 is millimetres, 1 inches; any other value is no unit.
std::optional<Metric> metricFromRawValue(qint64 rawValue);

// Millimetres per point. This exact literal is the one documents have always been
// converted with; computing 25.4 / 72 gives a value one unit in the last place lower.
inline constexpr double kPointToMillimetersConversionFactor = 0.3527777777777778;
// Inches per point (1/72).
inline constexpr double kPointToInchesConversionFactor = 0.013888888888888888;

// The factor of a unit: inches per point for inches, millimetres per point otherwise.
double conversionFactor(Metric metric);

} // namespace lomir
