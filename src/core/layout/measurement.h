#pragma once

#include "core/document/richtext/richtext.h"

#include <QtGlobal>
#include <optional>

class QTextDocument;

namespace lomir {

// The width in points of the widest line of the text, each line laid out unwrapped,
// plus 2 points. Lines are separated by line feeds only.
double widestLineWidth(const RichText& text);

// The font the editor gives a new label, and the one textHeight measures with when it is
// given none: Arial at 4 points.
FontSpec labelFont();

// One line of the font in points, its ascent plus descent, plus 1 point: the least
// height a label's text is given, so that an empty or tiny text still holds a line.
double minimumTextHeight(const FontSpec& font);

// The laid-out height in points of the text (an empty text measures as the letter
// "a" in the font), never less than the font's ascent plus descent plus 1 point.
// Without a font, Arial at 4 points.
double textHeight(const RichText& text, const std::optional<FontSpec>& font = std::nullopt);

// Sets every font of the text to the point size, keeping each face.
RichText withUniformFontSize(const RichText& text, double pointSize);
// The same on an editor's document: every run and the document's own font (the one
// new typing uses) take the size.
void setUniformFontSize(QTextDocument& document, double pointSize);

// How many decimal digits the value has, its sign not counted.
qint64 numberOfDigits(qint64 value);

enum class RoundingRule
{
    ToNearestOrAwayFromZero,
    ToNearestOrEven,
    Up,   // toward +infinity
    Down, // toward -infinity
    TowardZero,
    AwayFromZero,
};

// The value rounded to a number of decimal places by the rule.
double roundToPlaces(int places, RoundingRule rule, double value);

} // namespace lomir
