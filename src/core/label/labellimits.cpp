#include "core/label/labellimits.h"

#include "core/layout/labeltextlayout.h"
#include "core/layout/measurement.h"

#include <QTextBoundaryFinder>
#include <algorithm>
#include <vector>

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
    const auto fits = [&](const RichText& candidate) {
        return candidate.isEmpty() ||
               neededTextHeight(candidate, editorFont, labelWidth) <= labelHeight;
    };
    if (fits(text))
        return text;

    // The text's prefixes that deleting one user-perceived character at a time from the
    // end goes through: prefixEnds[count] is the length of the first count characters.
    std::vector<int> prefixEnds{0};
    QTextBoundaryFinder graphemes(QTextBoundaryFinder::Grapheme, text.string());
    for (qsizetype end = graphemes.toNextBoundary(); end > 0; end = graphemes.toNextBoundary())
        prefixEnds.push_back(int(end));
    const auto prefix = [&](std::size_t count) { return text.mid(0, prefixEnds[count]); };

    // A shorter prefix never needs more height than a longer one (its lines are the
    // longer one's lines, the last perhaps shorter), so the first prefix that fits on the
    // way down is found by halving rather than by laying out every one of them: first in
    // growing steps back from the end, as most trims take off a few characters, then
    // between the last prefix too tall and the first that fits.
    std::size_t tooTall = prefixEnds.size() - 1;
    std::size_t fitting = 0;
    for (std::size_t step = 1; tooTall > step; step *= 2) {
        if (fits(prefix(tooTall - step))) {
            fitting = tooTall - step;
            break;
        }
        tooTall -= step;
    }
    while (tooTall - fitting > 1) {
        const std::size_t middle = fitting + (tooTall - fitting) / 2;
        (fits(prefix(middle)) ? fitting : tooTall) = middle;
    }
    return prefix(fitting);
}

} // namespace lomir
