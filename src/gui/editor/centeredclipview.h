#pragma once

#include <QGraphicsView>
#include <QMarginsF>
#include <QPointer>

namespace lomir {

class LabelCell;

// The editor's zoomable view of the label. At magnification 1 a point of the label is a
// point of the screen (1/72 inch at the screen's logical resolution), as word processors
// show a page at 100%. A label smaller than the view is kept centred, a larger one is
// scrolled no further than its edges (constrainBoundsRect decides), and after every
// change the caret is scrolled into view.
class CenteredClipView final : public QGraphicsView
{
    Q_OBJECT

public:
    explicit CenteredClipView(QWidget* parent = nullptr);
    ~CenteredClipView() override;

    // The label cell the view shows and keeps centred; the view does not own it.
    void setDocumentView(LabelCell* cell);
    LabelCell* documentView() const { return m_cell; }

    double magnification() const { return m_magnification; }
    // Zooms about the middle of what is shown.
    void setMagnification(double magnification);
    // Device-independent pixels per point at the current magnification.
    double pixelsPerPoint() const;

    // The part of the scene that is shown, in points.
    QRectF visibleRect() const;

    // Room kept around the label, in points (none by default).
    QMarginsF contentInsets() const { return m_contentInsets; }
    void setContentInsets(const QMarginsF& insets);

Q_SIGNALS:
    void pixelsPerPointChanged(double pixelsPerPoint);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void changeEvent(QEvent* event) override;

private:
    // Shows the proposed rectangle as constrainBoundsRect places it.
    void showBounds(const QRectF& proposed);
    // After a layout change: keep the label in place and the caret in view.
    void layoutLabel();
    void updateBackground();

    QPointer<LabelCell> m_cell;
    QMarginsF m_contentInsets;
    double m_magnification = 1.0;
    double m_shownWidth = 0.0;
    bool m_settingBounds = false;
};

} // namespace lomir
