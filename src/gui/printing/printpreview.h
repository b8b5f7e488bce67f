#pragma once

#include "core/printing/pageloop.h"
#include "core/printing/paper.h"

#include <QAbstractScrollArea>
#include <QDialog>
#include <QMarginsF>
#include <QSizeF>
#include <QtGlobal>
#include <memory>

class QAction;
class QLabel;
class QSpinBox;

namespace lomir {

class TilingTextView;

// The pages of a print, one below the other, each painted by the print's own page
// painter (paintPage) onto a white sheet of the paper's size. Only the pages in view are
// painted, when they are shown and nothing is kept of them, so a print of thousands of
// pages opens at once and takes no more memory when the user pages through it.
class PrintPreviewView final : public QAbstractScrollArea
{
    Q_OBJECT

public:
    // The gap between two pages and around them, in device-independent pixels.
    static constexpr int kPageGap = 16;

    PrintPreviewView(std::unique_ptr<TilingTextView> view, const PaperSettings& paper,
                     QWidget* parent = nullptr);
    ~PrintPreviewView() override;

    qint64 pageCount() const { return m_pageCount; }
    // The page whose sheet is at the top of the view, from 0.
    qint64 currentPage() const;
    // Scrolls the page's top to the top of the view.
    void showPage(qint64 page);

    // Device-independent pixels per point; 72 / the screen's logical dpi shows the paper
    // at its real size.
    double pixelsPerPoint() const { return m_pixelsPerPoint; }
    void setPixelsPerPoint(double pixelsPerPoint);
    // Zooms so that a sheet is as wide as the view, or fits it whole.
    void fitWidth();
    void fitPage();

    // How many pages have been painted since the view was made, for the curious.
    qint64 pagesPainted() const { return m_pagesPainted; }

Q_SIGNALS:
    void currentPageChanged(qint64 page);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    enum class Fit
    {
        None,
        Width,
        Page
    };
    QSizeF sheetSize() const;
    double pageStride() const;
    void updateScrollBars();
    void applyFit();

    std::unique_ptr<TilingTextView> m_view;
    PaperSettings m_paper;
    qint64 m_pageCount = 0;
    double m_pixelsPerPoint = 1.0;
    Fit m_fit = Fit::Width;
    qint64 m_shownPage = -1;
    qint64 m_pagesPainted = 0;
};

// The preview window of a print: the pages, a page number to go to, zoom, and a button
// that prints what is shown.
class PrintPreviewDialog final : public QDialog
{
    Q_OBJECT

public:
    PrintPreviewDialog(std::unique_ptr<TilingTextView> view, const PaperSettings& paper,
                       const QString& documentName, QWidget* parent = nullptr);
    ~PrintPreviewDialog() override;

    PrintPreviewView* pages() const { return m_pages; }
    QSpinBox* pageNumberBox() const { return m_pageNumber; }
    QAction* printAction() const { return m_print; }

Q_SIGNALS:
    // The user asked to print what the preview shows.
    void printRequested();

private:
    PrintPreviewView* m_pages;
    QSpinBox* m_pageNumber;
    QLabel* m_pageTotal;
    QAction* m_print;
};

} // namespace lomir
