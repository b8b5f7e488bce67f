#pragma once

#include "core/document/richtext/richtext.h"

namespace lomir {

// The name of the setting that is true once the user asked not to be warned again when
// typing does not fit the label.
inline constexpr char kSpaceLimitAlertSuppressedKey[] = "8091238dklmssdscnjdhjkf8e2d";

// The height in points the text needs in a label of a custom size labelWidth wide: the
// text laid out as printing lays it out, wrapped at the label's width less 2 points (the
// limit's own allowance; the editor and the paper wrap at the full width), but never less
// than one line of the editor's font (its ascent and descent plus 1 point), so that an
// empty label, which is measured as it is, still holds a line.
double neededTextHeight(const RichText& text, const FontSpec& editorFont, double labelWidth);

// Whether the text fits a label of a custom size: the editor refuses a change after
// which the label's height is less than the height the text needs.
bool textFitsLabel(const RichText& text, const FontSpec& editorFont, double labelWidth,
                   double labelHeight);

// The text cut to a label made smaller: user-perceived characters are deleted from the
// end while the text needs more than labelHeight, down to an empty text at most. The
// result is a prefix of the text, so the editor can delete the rest from its own
// document.
RichText trimmedToLabel(RichText text, const FontSpec& editorFont, double labelWidth,
                        double labelHeight);

} // namespace lomir
