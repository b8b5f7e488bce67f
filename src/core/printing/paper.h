#pragma once

#include <QMarginsF>
#include <QPageLayout>
#include <QSizeF>

namespace lomir {

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

} // namespace lomir
