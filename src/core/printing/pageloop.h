#pragma once

#include <QMarginsF>
#include <QPageLayout>
#include <QSizeF>
#include <QTransform>
#include <QtGlobal>
#include <functional>
#include <optional>

class QPagedPaintDevice;
class QPaintDevice;
class QPainter;

namespace lomir {

class TilingTextView;

// A point is 1/72 inch; paper and printer offsets are measured in millimetres.
inline constexpr double kPointsPerMillimetre = 72.0 / 25.4;

// Points in one unit of Qt's page sizes and layouts.
double pointsPerUnit(QPageLayout::Unit unit);

// The paper and margins of print settings in points, exact to the unit they were given in.
// (Qt's own conversions to points round to whole points: an A4 sheet would be 595 x 842
// instead of 595.28 x 841.89.) The paper is as it lies in the printer: a landscape sheet
// is wider than high; the margins are those of that sheet.
struct PaperSettings
{
    QSizeF paper;
    QMarginsF margins;
    bool operator==(const PaperSettings&) const = default;
};
PaperSettings paperSettings(const QPageLayout& layout);

// The layout pages are painted on: the paper and orientation of the print settings with
// no margins, in full-page mode, so that the painter's origin is the paper's top-left
// corner. Qt would round the margins to whole points and place the printable area on
// whole device pixels; painting moves the labels by the margins itself instead.
QPageLayout fullPaperLayout(const QPageLayout& printSettings);
// The same for paper given in points, upright (the command line and the benchmark).
QPageLayout fullPaperLayout(const QSizeF& paper);

// A printer's correction of where it puts the page: the page is scaled about the paper's
// top-left corner and then moved. Positive offsets move the print right and down. It
// applies to the pages sent to that printer only, never to PDF export or preview.
struct PrinterCalibration
{
    double horizontalOffsetMillimetres = 0.0;
    double verticalOffsetMillimetres = 0.0;
    double scalePercent = 100.0;
    bool operator==(const PrinterCalibration&) const = default;
};

// The calibration as a transform of points on the paper.
QTransform calibrationTransform(const PrinterCalibration& calibration);

// Maps points from the paper's top-left corner, corrected by the calibration, to the
// device's pixels. The device's page must be laid out with fullPaperLayout.
QTransform paperToDevice(const QPaintDevice& device, const PrinterCalibration& calibration = {});

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
    Cancelled,    // the progress callback stopped it; the device holds the pages so far
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
