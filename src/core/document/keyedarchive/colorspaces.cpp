#include "core/document/keyedarchive/colorspaces.h"

#include <algorithm>
#include <cmath>

namespace lomir {

namespace {

using Matrix = std::array<Rgb, 3>;

struct Chromaticity
{
    double x;
    double y;
};

constexpr Rgb xyzOf(Chromaticity c)
{
    return {c.x / c.y, 1.0, (1.0 - c.x - c.y) / c.y};
}

constexpr double determinant(const Matrix& m)
{
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
           m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

constexpr Matrix inverse(const Matrix& m)
{
    const double d = determinant(m);
    Matrix r{};
    r[0][0] = (m[1][1] * m[2][2] - m[1][2] * m[2][1]) / d;
    r[0][1] = (m[0][2] * m[2][1] - m[0][1] * m[2][2]) / d;
    r[0][2] = (m[0][1] * m[1][2] - m[0][2] * m[1][1]) / d;
    r[1][0] = (m[1][2] * m[2][0] - m[1][0] * m[2][2]) / d;
    r[1][1] = (m[0][0] * m[2][2] - m[0][2] * m[2][0]) / d;
    r[1][2] = (m[0][2] * m[1][0] - m[0][0] * m[1][2]) / d;
    r[2][0] = (m[1][0] * m[2][1] - m[1][1] * m[2][0]) / d;
    r[2][1] = (m[0][1] * m[2][0] - m[0][0] * m[2][1]) / d;
    r[2][2] = (m[0][0] * m[1][1] - m[0][1] * m[1][0]) / d;
    return r;
}

constexpr Rgb multiply(const Matrix& m, const Rgb& v)
{
    return {m[0][0] * v[0] + m[0][1] * v[1] + m[0][2] * v[2],
            m[1][0] * v[0] + m[1][1] * v[1] + m[1][2] * v[2],
            m[2][0] * v[0] + m[2][1] * v[1] + m[2][2] * v[2]};
}

constexpr Matrix multiply(const Matrix& a, const Matrix& b)
{
    Matrix r{};
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            r[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
    }
    return r;
}

// The matrix from linear RGB to CIE XYZ for a space given by its primaries and white
// point: the primaries' XYZ as columns, each scaled so that RGB (1, 1, 1) is the white.
constexpr Matrix rgbToXyz(Chromaticity red, Chromaticity green, Chromaticity blue,
                          Chromaticity white)
{
    const Rgb r = xyzOf(red);
    const Rgb g = xyzOf(green);
    const Rgb b = xyzOf(blue);
    const Matrix primaries{{{r[0], g[0], b[0]}, {r[1], g[1], b[1]}, {r[2], g[2], b[2]}}};
    const Rgb scale = multiply(inverse(primaries), xyzOf(white));
    Matrix m{};
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            m[i][j] = primaries[i][j] * scale[j];
    }
    return m;
}

constexpr Chromaticity kD65{0.3127, 0.3290};
constexpr Matrix kSrgbToXyz = rgbToXyz({0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}, kD65);
constexpr Matrix kGenericToXyz = rgbToXyz({0.630, 0.340}, {0.295, 0.605}, {0.155, 0.077}, kD65);
constexpr Matrix kDisplayP3ToXyz = rgbToXyz({0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}, kD65);

constexpr Matrix kGenericToSrgb = multiply(inverse(kSrgbToXyz), kGenericToXyz);
constexpr Matrix kSrgbToGeneric = multiply(inverse(kGenericToXyz), kSrgbToXyz);
constexpr Matrix kDisplayP3ToSrgb = multiply(inverse(kSrgbToXyz), kDisplayP3ToXyz);

constexpr double kGenericGamma = 1.8;

// The sRGB curve, mirrored for negative values so that out-of-gamut colours survive
// the round trip through linear light.
double srgbToLinear(double v)
{
    const double a = std::abs(v);
    const double linear = a <= 0.04045 ? a / 12.92 : std::pow((a + 0.055) / 1.055, 2.4);
    return std::copysign(linear, v);
}

double linearToSrgb(double v)
{
    const double a = std::abs(v);
    const double encoded = a <= 0.0031308 ? a * 12.92 : 1.055 * std::pow(a, 1.0 / 2.4) - 0.055;
    return std::copysign(encoded, v);
}

double genericToLinear(double v)
{
    return std::copysign(std::pow(std::abs(v), kGenericGamma), v);
}

double linearToGeneric(double v)
{
    return std::copysign(std::pow(std::abs(v), 1.0 / kGenericGamma), v);
}

template <typename Decode, typename Encode>
Rgb convert(const Rgb& in, const Matrix& matrix, Decode decode, Encode encode)
{
    const Rgb linear = multiply(matrix, Rgb{decode(in[0]), decode(in[1]), decode(in[2])});
    return {encode(linear[0]), encode(linear[1]), encode(linear[2])};
}

quint8 channel(double fraction)
{
    if (!(fraction > 0.0)) // also NaN
        return 0;
    if (fraction >= 1.0)
        return 255;
    return quint8(std::lround(fraction * 255.0));
}

} // namespace

Rgb genericRgbToSrgb(const Rgb& generic)
{
    return convert(generic, kGenericToSrgb, genericToLinear, linearToSrgb);
}

Rgb srgbToGenericRgb(const Rgb& srgb)
{
    return convert(srgb, kSrgbToGeneric, srgbToLinear, linearToGeneric);
}

Rgb displayP3ToSrgb(const Rgb& displayP3)
{
    return convert(displayP3, kDisplayP3ToSrgb, srgbToLinear, linearToSrgb);
}

Rgba rgbaFromFractions(const Rgb& srgb, double alpha)
{
    return Rgba{channel(srgb[0]), channel(srgb[1]), channel(srgb[2]), channel(alpha)};
}

Rgb fractionsOf(const Rgba& color)
{
    return {color.red / 255.0, color.green / 255.0, color.blue / 255.0};
}

} // namespace lomir
