#pragma once

#include "core/document/richtext/richtext.h"

namespace lomir {

// Qt makes fonts in whole device pixels, so at screen resolution a 4 point font is not
// 4 points. Labels are therefore measured and laid out for printing at 100 layout units
// per point (7200 dpi), where every size given to two decimals is a whole number of
// pixels, with hinting off, and the results are divided back into points. Measuring and
// printing share this resolution so that a label measured to fit its cell also fits
// when it is printed.
inline constexpr int kLayoutDpi = 7200;

// The tab stops of a paragraph that sets none: every 28 points, where the programs that
// write the RTF and archives Lomir opens put them, so that a tab lands where it did there.
inline constexpr double kDefaultTabInterval = 28.0;

// The resolution for a text whose largest type is largestPointSize: 7200 dpi, or less
// when faces would grow past 10000 pixels. From about 20000 pixels on, Qt's FreeType
// engine reports a font's ascent and descent as 0 (its fixed-point metrics overflow).
int layoutDpi(double largestPointSize);

// The largest point size in the text, runs without a font counting at the default
// font's size.
double largestPointSize(const RichText& text);

} // namespace lomir
