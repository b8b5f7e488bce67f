#pragma once

#include "core/printing/calibration.h"

#include <QMarginsF>
#include <QtGlobal>
#include <functional>
#include <optional>

class QPagedPaintDevice;
class QPaintDevice;
class QPainter;

namespace lomir {

class TilingTextView;

// Pages of a print, by index from 0.
struct PageRange
{
    qint64 first = 0;
    qint64 count = 0;
    bool operator==(const PageRange&) const = default;
};

// Every page of the view.
PageRange allPages(const TilingTextView& view);

// Called after each page with the pages painted so far and the pages asked for; returning
// false cancels the pages that are left (a progress dialog's cancel button).
using PageProgress = std::function<bool(qint64 pagesPainted, qint64 pageCount)>;

enum class PaintOutcome
{
    Finished,
    Canceled,     // the progress callback stopped it; the device holds the pages so far
    DeviceFailed, // the device would not start a new page
};

struct PagePainting
{
    std::optional<PageRange> pages; // every page when empty
    PrinterCalibration calibration; // only for a printer
    PageProgress progress;          // none when empty
};

// Paints one page of the view: the painter's coordinates are points from the paper's
// top-left corner, and the printable area begins at the margins. A preview paints the
// pages it shows with this.
void paintPage(QPainter& painter, const TilingTextView& view, const QMarginsF& margins,
               qint64 page);

// Paints pages of the view onto the device the painter is active on, one after another
// with newPage() between them: a printer, a PDF writer or a print preview. Each page is
// sent to the device as it is painted, so memory does not grow with the number of pages.
// The device's page must be laid out with fullPaperLayout. A range outside the view's
// pages stops the program. The caller ends the painter (or, for a cancelled print on a
// printer, aborts the printer first).
[[nodiscard]] PaintOutcome paintPages(QPainter& painter, QPagedPaintDevice& device,
                                      const TilingTextView& view, const QMarginsF& margins,
                                      const PagePainting& options = {});

} // namespace lomir
