#include "editor/labellimits.h"

#include "layout/labeltextlayout.h"
#include "layout/measurement.h"

#include <algorithm>

namespace lomir {

namespace {

// The needed height is measured 2 points narrower than the label: the limit allows for
// a point on each side, and so stays on the safe side of where lines break.
constexpr double kMeasuredWidthAllowance = 2.0;

double measuredTextWidth(double labelWidth)
{
    // A label narrower than the allowance still wraps, one character to a line, rather
    // than not at all.
    return std::max(0.0, labelWidth - kMeasuredWidthAllowance);
}

} // namespace

double neededTextHeight(const RichText& text, const FontSpec& editorFont, double labelWidth)
{
    // An empty text has no lines; the label still needs one line of the editor's font
    // for the caret. The layout would give an empty document a line in the default font.
    double laidOut = 0.0;
    if (!text.isEmpty())
        laidOut = LabelTextLayout(text, measuredTextWidth(labelWidth)).size().height();
    const double oneLine = minimumTextHeight(editorFont);
    return laidOut <= oneLine ? oneLine : laidOut;
}

bool textFitsLabel(const RichText& text, const FontSpec& editorFont, double labelWidth,
                   double labelHeight)
{
    return labelHeight >= neededTextHeight(text, editorFont, labelWidth);
}

RichText trimmedToLabel(RichText text, const FontSpec& editorFont, double labelWidth,
                        double labelHeight)
{
    // One character at a time from the end, as a user deleting would, so a wrapped line
    // that comes back up is noticed at the first character that lets it.
    while (!text.isEmpty() && neededTextHeight(text, editorFont, labelWidth) > labelHeight)
        text.deleteLastCharacter();
    return text;
}

} // namespace lomir
