#include "layout/printjob.h"

#include "base/fatal.h"
#include "layout/tilingtextview.h"

#include <QPageSize>
#include <QPagedPaintDevice>
#include <QPainter>

namespace lomir {

namespace {

constexpr double kPointsPerInch = 72.0;

} // namespace

double pointsPerUnit(QPageLayout::Unit unit)
{
    switch (unit) {
    case QPageLayout::Millimeter:
        return kPointsPerMillimetre;
    case QPageLayout::Point:
        return 1.0;
    case QPageLayout::Inch:
        return kPointsPerInch;
    case QPageLayout::Pica:
        return 12.0;
    // Qt's own definitions of the two continental units.
    case QPageLayout::Didot:
        return 1.065826771;
    case QPageLayout::Cicero:
        return 12.789921252;
    }
    fatalError("Unknown page layout unit");
}

PaperSettings paperSettings(const QPageLayout& layout)
{
    const QPageSize& size = layout.pageSize();
    // QPageSize and QPageLayout share their units, in the same order.
    const double sizeScale = pointsPerUnit(QPageLayout::Unit(size.definitionUnits()));
    QSizeF paper = size.definitionSize() * sizeScale;
    if (layout.orientation() == QPageLayout::Landscape)
        paper.transpose();
    const double marginScale = pointsPerUnit(layout.units());
    const QMarginsF margins = layout.margins();
    return {paper, QMarginsF(margins.left() * marginScale, margins.top() * marginScale,
                             margins.right() * marginScale, margins.bottom() * marginScale)};
}

QPageLayout fullPaperLayout(const QPageLayout& printSettings)
{
    QPageLayout layout(printSettings.pageSize(), printSettings.orientation(), QMarginsF(),
                       QPageLayout::Point);
    layout.setMode(QPageLayout::FullPageMode);
    return layout;
}

QPageLayout fullPaperLayout(const QSizeF& paper)
{
    return fullPaperLayout(
        QPageLayout(QPageSize(paper, QPageSize::Point, QString(), QPageSize::ExactMatch),
                    QPageLayout::Portrait, QMarginsF(), QPageLayout::Point));
}

QTransform calibrationTransform(const PrinterCalibration& calibration)
{
    const double scale = calibration.scalePercent / 100.0;
    // Scale first, then move: x' = offset + scale * x.
    return QTransform(scale, 0.0, 0.0, scale,
                      calibration.horizontalOffsetMillimetres * kPointsPerMillimetre,
                      calibration.verticalOffsetMillimetres * kPointsPerMillimetre);
}

QTransform paperToDevice(const QPaintDevice& device, const PrinterCalibration& calibration)
{
    return calibrationTransform(calibration) *
           QTransform::fromScale(device.logicalDpiX() / kPointsPerInch,
                                 device.logicalDpiY() / kPointsPerInch);
}

PageRange allPages(const TilingTextView& view)
{
    if (!view.numberOfPages())
        fatalError("TilingTextView: numberOfPages is not set");
    return {0, *view.numberOfPages()};
}

void paintPage(QPainter& painter, const TilingTextView& view, const QMarginsF& margins, qint64 page)
{
    if (!view.pageWidth() || !view.pageHeight())
        fatalError("TilingTextView: the page size is not set");
    const double pageHeight = *view.pageHeight();
    // The view stacks its pages downwards; the page's rectangle is moved up onto the
    // paper, to the corner of the printable area.
    const QRectF rect(0.0, double(page) * pageHeight, *view.pageWidth(), pageHeight);
    painter.save();
    painter.translate(margins.left(), margins.top() - rect.top());
    view.drawRect(painter, rect);
    painter.restore();
}

PaintOutcome paintPages(QPainter& painter, QPagedPaintDevice& device, const TilingTextView& view,
                        const QMarginsF& margins, const PagePainting& options)
{
    const PageRange all = allPages(view);
    const PageRange pages = options.pages.value_or(all);
    if (pages.first < 0 || pages.count < 0 || pages.first > all.count - pages.count)
        fatalError("The pages to paint lie outside the print");

    const QTransform toDevice = paperToDevice(device, options.calibration);
    for (qint64 done = 0; done < pages.count; ++done) {
        if (done > 0 && !device.newPage())
            return PaintOutcome::DeviceFailed;
        painter.save();
        painter.setWorldTransform(toDevice, true);
        paintPage(painter, view, margins, pages.first + done);
        painter.restore();
        if (options.progress && !options.progress(done + 1, pages.count) && done + 1 < pages.count)
            return PaintOutcome::Cancelled;
    }
    return PaintOutcome::Finished;
}

} // namespace lomir
