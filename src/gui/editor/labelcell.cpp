#include "gui/editor/labelcell.h"

#include "core/label/appearance.h"
#include "gui/editor/labeltextview.h"

#include <QBrush>
#include <QGraphicsDropShadowEffect>
#include <QGraphicsRectItem>
#include <QPen>

namespace lomir {

LabelCell::LabelCell(QGraphicsItem* parent)
    : QGraphicsObject(parent), m_card(new QGraphicsRectItem(this)),
      m_shadow(new QGraphicsDropShadowEffect), m_textClip(new QGraphicsRectItem(this)),
      m_textView(new LabelTextView(m_textClip))
{
    m_card->setPen(Qt::NoPen);
    m_card->setBrush(Qt::white);
    m_card->setGraphicsEffect(m_shadow);
    m_textClip->setPen(Qt::NoPen);
    m_textClip->setBrush(Qt::NoBrush);
    m_textClip->setFlag(QGraphicsItem::ItemClipsChildrenToShape);
    // The text starts at the label's top-left corner, as a printed copy starts at its
    // cell's.
    m_textView->setPos(0.0, 0.0);
    setShadowColor(labelShadowColor(false));
    setPixelsPerPoint(1.0);
}

LabelCell::~LabelCell() = default;

void LabelCell::setFrame(const QRectF& frame)
{
    prepareGeometryChange();
    setPos(frame.topLeft());
    m_size = frame.size();
    const QRectF local(QPointF(0.0, 0.0), m_size);
    m_card->setRect(local);
    m_textClip->setRect(local);
    // The text wraps at the label's width, as a printed copy wraps at its cell's.
    m_textView->setWrapWidth(m_size.width());
    Q_EMIT frameChanged();
}

QColor LabelCell::shadowColor() const
{
    return m_shadow->color();
}

void LabelCell::setShadowColor(const QColor& color)
{
    QColor withOpacity = color;
    withOpacity.setAlphaF(kLabelShadowOpacity);
    m_shadow->setColor(withOpacity);
}

void LabelCell::setPixelsPerPoint(double pixelsPerPoint)
{
    m_pixelsPerPoint = pixelsPerPoint;
    m_shadow->setOffset(kLabelShadowOffset * pixelsPerPoint);
    m_shadow->setBlurRadius(kLabelShadowRadius * pixelsPerPoint);
    m_textView->setPixelsPerPoint(pixelsPerPoint);
}

QRectF LabelCell::boundingRect() const
{
    return QRectF(QPointF(0.0, 0.0), m_size);
}

void LabelCell::paint(QPainter*, const QStyleOptionGraphicsItem*, QWidget*)
{
    // The card and the text draw themselves.
}

} // namespace lomir
