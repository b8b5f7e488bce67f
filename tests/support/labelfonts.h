#pragma once

#include "core/document/richtext/richtext.h"

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

} // namespace lomir::testing
