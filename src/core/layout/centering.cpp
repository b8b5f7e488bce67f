#include "core/layout/centering.h"

#include <cmath>

namespace lomir {

namespace {

// The origin along one axis: centred when the padded label is the smaller, kept within
// its edges when it is the larger, left alone when both are equal.
double constrainedOrigin(double visibleMin, double visibleLength, double paddedMin,
                         double paddedLength)
{
    const double visibleMax = visibleMin + visibleLength;
    const double paddedMax = paddedMin + paddedLength;
    if (paddedLength < visibleLength)
        return paddedMin - (visibleLength - paddedLength) * 0.5;
    if (visibleLength < paddedLength) {
        if (paddedMax < visibleMax)
            return paddedMax - visibleLength;
        if (visibleMin < paddedMin)
            return paddedMin;
    }
    return visibleMin;
}

double toNearestPixel(double value, double pixelsPerUnit)
{
    return std::round(value * pixelsPerUnit) / pixelsPerUnit;
}

} // namespace

QRectF constrainBoundsRect(const QRectF& visible, double currentVisibleWidth,
                           const QRectF& documentFrame, const QMarginsF& contentInsets,
                           bool flipped, double pixelsPerUnit)
{
    // The insets are in the view's units; while the magnification changes, the visible
    // width changes with it, and the insets are scaled alike.
    const double scale = currentVisibleWidth > 0.0 ? visible.width() / currentVisibleWidth : 1.0;
    const QMarginsF insets = contentInsets * scale;
    const double lowYInset = flipped ? insets.top() : insets.bottom();
    const double highYInset = flipped ? insets.bottom() : insets.top();
    const QRectF padded(documentFrame.x() - insets.left(), documentFrame.y() - lowYInset,
                        insets.left() + insets.right() + documentFrame.width(),
                        lowYInset + highYInset + documentFrame.height());

    const double x = constrainedOrigin(visible.x(), visible.width(), padded.x(), padded.width());
    const double y = constrainedOrigin(visible.y(), visible.height(), padded.y(), padded.height());

    // Every edge to the nearest device pixel, so the label is drawn sharp.
    const double left = toNearestPixel(x, pixelsPerUnit);
    const double top = toNearestPixel(y, pixelsPerUnit);
    const double right = toNearestPixel(x + visible.width(), pixelsPerUnit);
    const double bottom = toNearestPixel(y + visible.height(), pixelsPerUnit);
    return QRectF(left, top, right - left, bottom - top);
}

} // namespace lomir
