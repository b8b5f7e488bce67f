#pragma once

// The label as images: the editor's label rendered as the screen shows it, and the ways
// two images of a label are compared.

#include "gui/editor/centeredclipview.h"
#include "gui/editor/labelcell.h"
#include "support/samplelabels.h"

#include <QGraphicsScene>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cstdlib>

namespace lomir::testing {

// A label that shows where its text wraps and how wide it is laid out, in 90 points: two
// paragraphs of Arial 6 that wrap, the second aligned right and ending in a bold word in
// a larger size.
inline RichText wrappingLabel()
{
    TextAttributes right = arial(6.0);
    ParagraphStyle rightAligned;
    rightAligned.alignment = TextAlignment::Right;
    right.paragraph = rightAligned;
    RichText label(QStringLiteral("Quince and apple jelly, made in small batches\n"), arial(6.0));
    label.append(QStringLiteral("Best before the end of May, keep cool"), right);
    label.append(QStringLiteral(" BOLD"), arial(9.0, true));
    return label;
}

// Pixels per point the label is compared at: a 4-point letter is 32 pixels high.
inline constexpr double kComparisonScale = 8.0;

// The label as the editor shows it, card and text, kComparisonScale pixels per point,
// without the caret (the label loses the keyboard focus).
inline QImage editorImage(CenteredClipView& view)
{
    LabelCell* cell = view.documentView();
    view.scene()->setFocusItem(nullptr);
    const QRectF frame = cell->frame();
    QImage image((frame.size() * kComparisonScale).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    view.scene()->render(&painter, QRectF(QPointF(0.0, 0.0), QSizeF(image.size())), frame);
    return image;
}

// The share of pixels whose colour differs by more than a quarter of the range in any
// channel.
inline double differingShare(const QImage& a, const QImage& b)
{
    if (a.size() != b.size())
        return 1.0;
    qint64 differing = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            const int difference =
                std::max({std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)),
                          std::abs(qBlue(p) - qBlue(q))});
            if (difference > 64)
                ++differing;
        }
    }
    return double(differing) / double(qint64(a.width()) * a.height());
}

// The share of pixels that are not white: how much ink there is to compare.
inline double inkShare(const QImage& image)
{
    qint64 ink = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qGray(image.pixel(x, y)) < 192)
                ++ink;
        }
    }
    return double(ink) / double(qint64(image.width()) * image.height());
}

} // namespace lomir::testing
