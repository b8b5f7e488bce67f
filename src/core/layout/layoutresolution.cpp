#include "layout/layoutresolution.h"

#include "document/richtext/richtextdocument.h"

#include <algorithm>

namespace lomir {

namespace {

constexpr double kLargestPixelSize = 10000.0;

} // namespace

int layoutDpi(double largestPointSize)
{
    if (largestPointSize * kLayoutDpi / 72.0 <= kLargestPixelSize)
        return kLayoutDpi;
    return std::max(1, int(kLargestPixelSize * 72.0 / largestPointSize));
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
