#pragma once

#include "core/base/units.h"

#include <QSizeF>
#include <QString>
#include <QtGlobal>
#include <optional>

namespace lomir {

// The size popup's item tag for a custom size: the user types width and height.
inline constexpr qint64 kCustomSizeTag = 1;

// Whether a size item makes the label a size the user typed rather than the size of
// its text.
bool isCustomSize(qint64 sizeTag);

// The point size a size item forces on the whole text when it is picked: the items
// tagged 4 to 7 set 9, 7, 4 and 8 points (in that order, as documents have always
// stored them). The custom size and every other item leave the fonts alone.
std::optional<double> forcedFontSize(qint64 sizeTag);

// What the editor shows for a label size: width and height in the unit, each rounded
// up to hundredths (a label is never shown smaller than it is) and written with two
// decimals, and the translation key of the unit's short name.
struct SizeReadout
{
    QString width;         // "25.40"
    QString height;        // "12.70"
    const char* unitKey{}; // "Millimeters Shorthand" or "Inches Shorthand"

    bool operator==(const SizeReadout& other) const;
};

// The read-out of a label of width x height points in the unit.
SizeReadout sizeReadout(double width, double height, Metric metric);

// The translation context of the unit keys (see unitShorthand).
inline constexpr char kUnitTranslationContext[] = "Metric";

// The translation key of the unit's short name. The millimetre key keeps its American
// spelling: translations are looked up by it.
const char* unitShorthandKey(Metric metric);

// The unit's short name in the user's language ("mm", "in").
QString unitShorthand(Metric metric);

// The size label's text: "25.40 x 12.70 mm", given the unit's short name.
QString sizeLabelText(const SizeReadout& readout, const QString& unitShorthand);

// A custom size input (a decimal number in the unit) in points, or nothing when the text
// is not a number. The decimal separator is "." in every locale, the way the input
// filter lets users type it and documents store it.
std::optional<double> customInputToPoints(const QString& text, Metric metric);

// Whether two label sizes show the same to two decimals of a point; the editor does not
// resize a label to a size that looks the same as the one it has.
bool isSameSizeToTwoDecimals(const QSizeF& a, const QSizeF& b);

} // namespace lomir
