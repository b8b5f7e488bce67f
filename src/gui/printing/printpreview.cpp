#include "gui/printing/printpreview.h"

#include "core/layout/tilingtextview.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QKeySequence>
#include <QLabel>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QSpinBox>
#include <QToolBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <limits>

namespace lomir {

namespace {

constexpr double kSmallestPixelsPerPoint = 0.05;
constexpr double kLargestPixelsPerPoint = 8.0;
constexpr double kZoomStep = 1.25;
constexpr int kShadowOffset = 2;

// Whole pixels a length takes; a length a hair over a whole number (a sheet zoomed to fit
// the view exactly) does not take one more.
double wholePixels(double length)
{
    return std::ceil(length - 1e-6);
}

} // namespace

PrintPreviewView::PrintPreviewView(std::unique_ptr<TilingTextView> view, const PaperSettings& paper,
                                   QWidget* parent)
    : QAbstractScrollArea(parent), m_view(std::move(view)), m_paper(paper),
      m_pageCount(allPages(*m_view).count)
{
    viewport()->setBackgroundRole(QPalette::Dark);
    viewport()->setAutoFillBackground(true);
    verticalScrollBar()->setSingleStep(kPageGap * 2);
    horizontalScrollBar()->setSingleStep(kPageGap * 2);
    setFocusPolicy(Qt::StrongFocus);
}

PrintPreviewView::~PrintPreviewView() = default;

QSizeF PrintPreviewView::sheetSize() const
{
    return m_paper.paper * m_pixelsPerPoint;
}

double PrintPreviewView::pageStride() const
{
    return wholePixels(sheetSize().height()) + kPageGap;
}

qint64 PrintPreviewView::currentPage() const
{
    const double stride = pageStride();
    const auto page = qint64((verticalScrollBar()->value() + stride / 2.0) / stride);
    return std::clamp<qint64>(page, 0, m_pageCount - 1);
}

void PrintPreviewView::showPage(qint64 page)
{
    page = std::clamp<qint64>(page, 0, m_pageCount - 1);
    verticalScrollBar()->setValue(
        int(std::min<double>(double(page) * pageStride(), verticalScrollBar()->maximum())));
}

void PrintPreviewView::setPixelsPerPoint(double pixelsPerPoint)
{
    m_fit = Fit::None;
    const qint64 page = currentPage();
    m_pixelsPerPoint = std::clamp(pixelsPerPoint, kSmallestPixelsPerPoint, kLargestPixelsPerPoint);
    updateScrollBars();
    showPage(page);
    viewport()->update();
}

void PrintPreviewView::fitWidth()
{
    m_fit = Fit::Width;
    applyFit();
}

void PrintPreviewView::fitPage()
{
    m_fit = Fit::Page;
    applyFit();
}

void PrintPreviewView::applyFit()
{
    const QSize room = viewport()->size() - QSize(2 * kPageGap, 2 * kPageGap);
    if (room.width() <= 0 || room.height() <= 0)
        return;
    double fitted = room.width() / m_paper.paper.width();
    if (m_fit == Fit::Page)
        fitted = std::min(fitted, room.height() / m_paper.paper.height());
    const Fit fit = m_fit;
    setPixelsPerPoint(fitted);
    m_fit = fit;
}

void PrintPreviewView::updateScrollBars()
{
    const QSize shown = viewport()->size();
    // Scroll bars count in ints: a print too long for them is capped (2^31 pixels hold
    // over two million Letter pages at full width on a large screen).
    const double height = std::min(double(m_pageCount) * pageStride() + kPageGap,
                                   double(std::numeric_limits<int>::max()) - shown.height());
    const double width = wholePixels(sheetSize().width()) + 2 * kPageGap;
    verticalScrollBar()->setPageStep(shown.height());
    verticalScrollBar()->setRange(0, std::max(0, int(height) - shown.height()));
    horizontalScrollBar()->setPageStep(shown.width());
    horizontalScrollBar()->setRange(0, std::max(0, int(width) - shown.width()));
}

void PrintPreviewView::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    if (m_fit != Fit::None)
        applyFit();
    else
        updateScrollBars();
}

void PrintPreviewView::scrollContentsBy(int, int)
{
    viewport()->update();
    const qint64 page = currentPage();
    if (page != m_shownPage) {
        m_shownPage = page;
        Q_EMIT currentPageChanged(page);
    }
}

void PrintPreviewView::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                           QPainter::SmoothPixmapTransform);
    const QSizeF sheet = sheetSize();
    const double stride = pageStride();
    const int scrollY = verticalScrollBar()->value();
    const double left = std::max<double>(kPageGap, (viewport()->width() - sheet.width()) / 2.0) -
                        horizontalScrollBar()->value();
    const QRect exposed = event->rect();
    const qint64 first = std::max<qint64>(0, qint64((scrollY + exposed.top() - kPageGap) / stride));
    const qint64 last =
        std::min<qint64>(m_pageCount - 1, qint64((scrollY + exposed.bottom()) / stride));
    for (qint64 page = first; page <= last; ++page) {
        const double top = kPageGap + double(page) * stride - scrollY;
        const QRectF paper(left, top, sheet.width(), sheet.height());
        if (!paper.intersects(exposed))
            continue;
        painter.fillRect(paper.translated(kShadowOffset, kShadowOffset),
                         palette().color(QPalette::Shadow));
        painter.fillRect(paper, Qt::white);
        painter.save();
        painter.setClipRect(paper);
        painter.translate(paper.topLeft());
        painter.scale(m_pixelsPerPoint, m_pixelsPerPoint);
        paintPage(painter, *m_view, m_paper.margins, page);
        painter.restore();
        ++m_pagesPainted;
    }
}

PrintPreviewDialog::PrintPreviewDialog(std::unique_ptr<TilingTextView> view,
                                       const PaperSettings& paper, const QString& documentName,
                                       QWidget* parent)
    : QDialog(parent), m_pages(new PrintPreviewView(std::move(view), paper, this)),
      m_pageNumber(new QSpinBox(this)), m_pageTotal(new QLabel(this)),
      m_print(new QAction(tr("&Print…"), this))
{
    setWindowTitle(tr("Print Preview of “%1”").arg(documentName));
    resize(720, 820);

    auto* toolBar = new QToolBar(this);
    QAction* previous = toolBar->addAction(tr("Previous Page"));
    previous->setShortcut(QKeySequence::MoveToPreviousPage);
    m_pageNumber->setRange(
        1, int(std::min<qint64>(m_pages->pageCount(), std::numeric_limits<int>::max())));
    m_pageNumber->setKeyboardTracking(false);
    toolBar->addWidget(m_pageNumber);
    m_pageTotal->setText(tr("of %1").arg(m_pages->pageCount()));
    toolBar->addWidget(m_pageTotal);
    QAction* next = toolBar->addAction(tr("Next Page"));
    next->setShortcut(QKeySequence::MoveToNextPage);
    toolBar->addSeparator();
    QAction* zoomOut = toolBar->addAction(tr("Zoom Out"));
    zoomOut->setShortcut(QKeySequence::ZoomOut);
    QAction* zoomIn = toolBar->addAction(tr("Zoom In"));
    zoomIn->setShortcut(QKeySequence::ZoomIn);
    QAction* fitWidth = toolBar->addAction(tr("Fit Width"));
    QAction* fitPage = toolBar->addAction(tr("Fit Page"));
    toolBar->addSeparator();
    toolBar->addAction(m_print);
    m_print->setShortcut(QKeySequence::Print);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(toolBar);
    layout->addWidget(m_pages, 1);
    auto* buttonRow = new QVBoxLayout;
    buttonRow->setContentsMargins(8, 0, 8, 8);
    buttonRow->addWidget(buttons);
    layout->addLayout(buttonRow);

    connect(previous, &QAction::triggered, this,
            [this] { m_pages->showPage(m_pages->currentPage() - 1); });
    connect(next, &QAction::triggered, this,
            [this] { m_pages->showPage(m_pages->currentPage() + 1); });
    connect(m_pageNumber, &QSpinBox::valueChanged, this,
            [this](int number) { m_pages->showPage(number - 1); });
    connect(m_pages, &PrintPreviewView::currentPageChanged, this, [this](qint64 page) {
        const QSignalBlocker quiet(m_pageNumber);
        m_pageNumber->setValue(int(page + 1));
    });
    connect(zoomIn, &QAction::triggered, this,
            [this] { m_pages->setPixelsPerPoint(m_pages->pixelsPerPoint() * kZoomStep); });
    connect(zoomOut, &QAction::triggered, this,
            [this] { m_pages->setPixelsPerPoint(m_pages->pixelsPerPoint() / kZoomStep); });
    connect(fitWidth, &QAction::triggered, m_pages, &PrintPreviewView::fitWidth);
    connect(fitPage, &QAction::triggered, m_pages, &PrintPreviewView::fitPage);
    connect(m_print, &QAction::triggered, this, &PrintPreviewDialog::printRequested);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    m_pages->setFocus();
}

PrintPreviewDialog::~PrintPreviewDialog() = default;

} // namespace lomir
