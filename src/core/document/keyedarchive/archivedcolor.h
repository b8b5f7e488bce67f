#pragma once

#include "core/base/result.h"
#include "core/document/keyedarchive/archiveobjectgraph.h"
#include "core/document/richtext/richtext.h"

namespace lomir::archive {

// Reads an NSColor of the archive as the 8-bit sRGB colour a label keeps, from whichever
// form it was archived in: UIKit's own components (a UIColor read through its NSColor
// hint), components in an ICC or named colour space (NSComponents with the
// NSColorSpace object of NSCustomColorSpace), the calibrated, device or CMYK values of
// its colour model, or the colour a catalog colour stood for. Colours of other RGB
// spaces are converted to sRGB (colorspaces.h).
Result<Rgba> readColor(ArchiveObjectGraph& graph, const Object& object);

} // namespace lomir::archive
