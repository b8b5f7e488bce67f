#include "gui/editor/centeredclipview.h"

#include "core/base/units.h"
#include "core/layout/centering.h"
#include "gui/editor/labelcell.h"
#include "gui/editor/labeltextview.h"

#include <QEvent>
#include <QGraphicsScene>
#include <QScrollBar>
#include <cmath>

namespace lomir {

CenteredClipView::CenteredClipView(QWidget* parent) : QGraphicsView(parent)
{
    setScene(new QGraphicsScene(this));
    // The view places the label itself: the scene's top-left corner is what is shown at
    // the top-left, and neither zooming nor resizing moves anything on Qt's own.
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setTransformationAnchor(QGraphicsView::NoAnchor);
    setResizeAnchor(QGraphicsView::NoAnchor);
    setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                   QPainter::SmoothPixmapTransform);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::StrongFocus);
    updateBackground();
}

CenteredClipView::~CenteredClipView() = default;

void CenteredClipView::setDocumentView(LabelCell* cell)
{
    m_cell = cell;
    scene()->addItem(cell);
    cell->setPixelsPerPoint(pixelsPerPoint());
    connect(cell, &LabelCell::frameChanged, this, &CenteredClipView::layoutLabel);
    LabelTextView* textView = cell->textView();
    connect(textView, &LabelTextView::textDidChange, this, &CenteredClipView::layoutLabel);
    connect(textView, &LabelTextView::selectionDidChange, this, &CenteredClipView::layoutLabel);
    layoutLabel();
}

void CenteredClipView::setMagnification(double magnification)
{
    const QPointF middle = visibleRect().center();
    m_magnification = magnification;
    const double scale = pixelsPerPoint();
    setTransform(QTransform::fromScale(scale, scale));
    if (m_cell)
        m_cell->setPixelsPerPoint(scale);
    Q_EMIT pixelsPerPointChanged(scale);
    QRectF proposed(QPointF(0.0, 0.0), QSizeF(viewport()->size()) / scale);
    proposed.moveCenter(middle);
    showBounds(proposed);
    layoutLabel();
}

void CenteredClipView::setContentInsets(const QMarginsF& insets)
{
    m_contentInsets = insets;
    layoutLabel();
}

double CenteredClipView::pixelsPerPoint() const
{
    return m_magnification * logicalDpiX() / kPointsPerInch;
}

QRectF CenteredClipView::visibleRect() const
{
    const double scale = pixelsPerPoint();
    return QRectF(mapToScene(QPoint(0, 0)), QSizeF(viewport()->size()) / scale);
}

void CenteredClipView::resizeEvent(QResizeEvent* event)
{
    QGraphicsView::resizeEvent(event);
    layoutLabel();
}

void CenteredClipView::showEvent(QShowEvent* event)
{
    QGraphicsView::showEvent(event);
    layoutLabel();
}

void CenteredClipView::scrollContentsBy(int dx, int dy)
{
    QGraphicsView::scrollContentsBy(dx, dy);
    if (!m_settingBounds)
        showBounds(visibleRect());
}

void CenteredClipView::changeEvent(QEvent* event)
{
    QGraphicsView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        updateBackground();
}

void CenteredClipView::showBounds(const QRectF& proposed)
{
    if (!m_cell || m_settingBounds)
        return;
    m_settingBounds = true;
    const double scale = pixelsPerPoint();
    QRectF wanted = proposed;
    // Scroll bars that come or go change the viewport's size, and with it what can be
    // shown; a second pass settles it.
    for (int pass = 0; pass < 3; ++pass) {
        const QRectF padded = m_cell->frame().marginsAdded(m_contentInsets);
        const QRectF bounds =
            constrainBoundsRect(wanted, m_shownWidth, m_cell->frame(), m_contentInsets, true,
                                scale * devicePixelRatioF());
        const QSize viewportSize = viewport()->size();
        const double left = std::round(bounds.left() * scale);
        const double top = std::round(bounds.top() * scale);
        // The scene reaches as far as the padded label and what is shown, so scrolling is
        // possible exactly where the label is larger than the view. Where it fits, the
        // scene is what is shown, half a pixel smaller so that rounding never asks for a
        // scroll bar, and its edge a quarter pixel out, where Qt's truncation to whole
        // pixels lands on the edge.
        QRectF scene = bounds.united(padded);
        if (padded.width() <= bounds.width()) {
            scene.setLeft((left + std::copysign(0.25, left)) / scale);
            scene.setWidth((viewportSize.width() - 0.5) / scale);
        }
        if (padded.height() <= bounds.height()) {
            scene.setTop((top + std::copysign(0.25, top)) / scale);
            scene.setHeight((viewportSize.height() - 0.5) / scale);
        }
        setSceneRect(scene);
        horizontalScrollBar()->setValue(int(left));
        verticalScrollBar()->setValue(int(top));
        m_shownWidth = bounds.width();
        if (viewport()->size() == viewportSize)
            break;
        // Scroll bars came or went: place the label again in what is now shown.
        wanted = QRectF(QPointF(0.0, 0.0), QSizeF(viewport()->size()) / scale);
        wanted.moveCenter(bounds.center());
    }
    m_settingBounds = false;
}

void CenteredClipView::layoutLabel()
{
    if (!m_cell)
        return;
    showBounds(visibleRect());
    // The caret, not the whole selection, is brought into view.
    const LabelTextView* textView = m_cell->textView();
    const QRectF caret = textView->mapRectToScene(textView->caretRect());
    const QRectF shown = visibleRect();
    if (shown.contains(caret) || !m_cell->frame().intersects(caret))
        return;
    QRectF proposed = shown;
    if (caret.left() < shown.left())
        proposed.moveLeft(caret.left());
    else if (caret.right() > shown.right())
        proposed.moveRight(caret.right());
    if (caret.top() < shown.top())
        proposed.moveTop(caret.top());
    else if (caret.bottom() > shown.bottom())
        proposed.moveBottom(caret.bottom());
    showBounds(proposed);
}

void CenteredClipView::updateBackground()
{
    setBackgroundBrush(palette().color(QPalette::Window));
}

} // namespace lomir
