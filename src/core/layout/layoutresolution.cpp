#include "core/layout/layoutresolution.h"

#include "core/base/units.h"
#include "core/document/richtext/richtextdocument.h"

#include <algorithm>

namespace lomir {

namespace {

constexpr double kLargestPixelSize = 10000.0;

} // namespace

int layoutDpi(double largestPointSize)
{
    if (largestPointSize * kLayoutDpi / kPointsPerInch <= kLargestPixelSize)
        return kLayoutDpi;
    return std::max(1, int(kLargestPixelSize * kPointsPerInch / largestPointSize));
}

double largestPointSize(const RichText& text)
{
    double largest = 0.0;
    text.forEachRun(0, text.length(), [&](const TextAttributes& attributes, int, int) {
        largest = std::max(largest, attributes.font.value_or(defaultFont()).pointSize);
    });
    return largest;
}

} // namespace lomir
