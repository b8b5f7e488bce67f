#pragma once

#include "core/document/richtext/richtext.h"

#include <array>

namespace lomir {

// Colour components as fractions, normally 0...1; conversions may leave the range.
using Rgb = std::array<double, 3>;

// The RGB spaces that archived colours come in. sRGB is what labels keep; the others are
// converted to it when read. All share the D65 white point.
//  - Generic RGB is macOS's "calibrated RGB" (NSCalibratedRGBColorSpace): Trinitron
//    primaries and a pure 1.8 gamma. Archives keep every colour in it as well (the NSRGB
//    string), for readers that predate colour spaces.
//  - Display P3: P3 primaries with the sRGB transfer curve.
Rgb genericRgbToSrgb(const Rgb& generic);
Rgb srgbToGenericRgb(const Rgb& srgb);
Rgb displayP3ToSrgb(const Rgb& displayP3);

// Rounds sRGB fractions to 8-bit channels, clamping each to 0...1 first (a value outside
// the sRGB gamut is reduced to its nearest edge).
Rgba rgbaFromFractions(const Rgb& srgb, double alpha);

// The fractions of an 8-bit colour (channel / 255).
Rgb fractionsOf(const Rgba& color);

} // namespace lomir
