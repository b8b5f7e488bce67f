#pragma once

#include <QColor>
#include <QGraphicsObject>
#include <QRectF>

class QGraphicsDropShadowEffect;
class QGraphicsRectItem;

namespace lomir {

class LabelTextView;

// The label as the editor shows it: a white card of the label's size in points with a
// soft drop shadow, holding the label's text. Its frame is set only by the editor's label
// resize, never by the view around it.
class LabelCell final : public QGraphicsObject
{
    Q_OBJECT

public:
    explicit LabelCell(QGraphicsItem* parent = nullptr);
    ~LabelCell() override;

    LabelTextView* textView() const { return m_textView; }

    // The label's rectangle in the scene, in points.
    QRectF frame() const { return QRectF(pos(), m_size); }
    void setFrame(const QRectF& frame);

    // The shadow's colour; its opacity comes from the label's appearance constants.
    QColor shadowColor() const;
    void setShadowColor(const QColor& color);
    // The shadow is drawn in device pixels: its offset and blur follow the zoom.
    void setPixelsPerPoint(double pixelsPerPoint);

    QRectF boundingRect() const override;
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

Q_SIGNALS:
    void frameChanged();

private:
    QSizeF m_size;
    double m_pixelsPerPoint = 1.0;
    // The white card carries the shadow; the text sits in a clipping sibling above it, so
    // a blinking caret does not redraw the shadow.
    QGraphicsRectItem* m_card;
    QGraphicsDropShadowEffect* m_shadow;
    QGraphicsRectItem* m_textClip;
    LabelTextView* m_textView;
};

} // namespace lomir
