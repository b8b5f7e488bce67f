#include "core/printing/paper.h"

#include "core/base/fatal.h"
#include "core/base/units.h"

#include <QPageSize>

namespace lomir {

double pointsPerUnit(QPageLayout::Unit unit)
{
    switch (unit) {
    case QPageLayout::Millimeter:
        return kPointsPerMillimeter;
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

} // namespace lomir
