#pragma once

#include <QMarginsF>
#include <QRectF>

namespace lomir {

// The part of the label the editor's zoomable view shows, kept in place: a label smaller
// than the view is centred in it, and a larger one is scrolled no further than its
// edges. Content insets pad the label (scaled to a magnification that is changing), and
// the result lies on whole device pixels so the label is drawn sharp.
//
// All rectangles are in the coordinates the label's frame (documentFrame) is given in,
// such as a graphics scene's. visible is the rectangle the view is about to show there;
// only its origin moves, and then every edge is rounded to the nearest device pixel.
// currentVisibleWidth is the width shown before this change (0 when nothing has been
// shown yet). flipped says whether y points down, which decides whether the top inset is
// at the low-y or the high-y edge. pixelsPerUnit is the device pixels per unit of those
// coordinates: the device pixel ratio times the magnification.
QRectF constrainBoundsRect(const QRectF& visible, double currentVisibleWidth,
                           const QRectF& documentFrame, const QMarginsF& contentInsets,
                           bool flipped, double pixelsPerUnit);

} // namespace lomir
