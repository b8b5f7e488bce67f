#pragma once

// The sample labels tests print, measure and save: one definition each, so that every test
// means the same label by the same name.

#include "core/document/richtext/richtext.h"

#include <QString>

namespace lomir::testing {

// Arial at a size, with the PostScript name the label's archive gives it, so that a text
// set in it comes back equal from a document or the clipboard.
inline TextAttributes arial(double size, bool bold = false)
{
    TextAttributes attributes;
    attributes.font = FontSpec{QStringLiteral("Arial"),
                               bold ? QStringLiteral("Arial-BoldMT") : QStringLiteral("ArialMT"),
                               size, bold, false};
    return attributes;
}

// n units of the serial placeholder: "#" and a zero-width joiner each.
inline QString placeholderUnits(int n)
{
    return QStringLiteral("#\u200D").repeated(n);
}

// "No. " and a run of n placeholder units in Arial 12: the numbered label of the print tests.
inline RichText numberedLabel(int n)
{
    return RichText(QStringLiteral("No. ") + placeholderUnits(n), arial(12.0));
}

} // namespace lomir::testing
