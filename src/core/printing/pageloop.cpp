#include "core/printing/pageloop.h"

#include "core/base/fatal.h"
#include "core/base/units.h"
#include "core/layout/tilingtextview.h"

#include <QPageSize>
#include <QPagedPaintDevice>
#include <QPainter>

namespace lomir {

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
            return PaintOutcome::Canceled;
    }
    return PaintOutcome::Finished;
}

} // namespace lomir
