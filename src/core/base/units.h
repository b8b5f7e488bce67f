#pragma once

#include <QtGlobal>
#include <optional>

namespace lomir {

// Lengths inside Lomir are in points, 1/72 inch, the unit of PDF, of Qt's page layouts and
// of font sizes. Every conversion to and from another unit goes through the constants here.

// Points in an inch. Dividing a device's logical dots per inch by this gives its pixels
// per point: the editor's zoom, the layout device and the print preview convert so.
inline constexpr double kPointsPerInch = 72.0;
// Millimeters in an inch, exactly.
inline constexpr double kMillimetersPerInch = 25.4;
// Points in a millimeter: paper sizes, margins and printer calibration offsets typed in
// millimeters, and the calibration page's rulers.
inline constexpr double kPointsPerMillimeter = kPointsPerInch / kMillimetersPerInch;

// The unit the user sees and types label sizes in. Inside, every length is in points.
enum class Metric : qint64
{
    millimetres = 0,
    inches = 1
};

// 0 is millimetres, 1 inches; any other value is no unit.
std::optional<Metric> metricFromRawValue(qint64 rawValue);

// The document's two conversion factors, for the label sizes the editor shows and the
// custom sizes the user types (unit value = points x factor, points = unit value / factor).
// Millimeters per point: this exact literal is the one documents have always been
// converted with, and the sizes they store were computed with it; 1 / kPointsPerMillimeter
// is one unit in the last place lower, which would move a stored size across a rounding
// boundary now and then.
inline constexpr double kPointToMillimetersConversionFactor = 0.3527777777777778;
// Inches per point (1/72).
inline constexpr double kPointToInchesConversionFactor = 0.013888888888888888;

// The factor of a unit: inches per point for inches, millimeters per point otherwise.
double conversionFactor(Metric metric);

} // namespace lomir
