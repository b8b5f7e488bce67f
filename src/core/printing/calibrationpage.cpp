#include "core/printing/calibrationpage.h"

#include "core/base/units.h"
#include "core/document/richtext/richtext.h"
#include "core/layout/labeltextlayout.h"

#include <QPainter>
#include <QTextBlock>
#include <QTextLayout>
#include <algorithm>
#include <cmath>

namespace lomir {

namespace {

constexpr int kCornerInsetMillimeters = 10;
constexpr double kCrosshairArmMillimeters = 5.0;
constexpr double kCrosshairCircleMillimeters = 2.0;
// Ticks: every millimetre short, every fifth longer, every tenth longest and numbered.
constexpr double kShortTickMillimeters = 1.0;
constexpr double kMiddleTickMillimeters = 1.75;
constexpr double kLongTickMillimeters = 2.5;
// Thin enough to measure to a tenth of a millimetre, thick enough for any printer.
constexpr double kLineWidthPoints = 0.25;
constexpr double kLabelPointSize = 6.0;
constexpr double kLabelGapPoints = 1.0;
constexpr double kCaptionPointSize = 9.0;

double millimeters(double points)
{
    return points / kPointsPerMillimeter;
}

// Corner crosshairs 10 mm in, or a quarter of a small paper's side in whole millimetres,
// so that the marks of opposite corners stay apart.
int cornerInset(double paperPoints)
{
    return std::min(kCornerInsetMillimeters, int(std::floor(millimeters(paperPoints) / 4.0)));
}

double tickLength(int millimeter)
{
    if (millimeter % 10 == 0)
        return kLongTickMillimeters * kPointsPerMillimeter;
    if (millimeter % 5 == 0)
        return kMiddleTickMillimeters * kPointsPerMillimeter;
    return kShortTickMillimeters * kPointsPerMillimeter;
}

QString tickLabel(int millimeter)
{
    return millimeter % 10 == 0 ? QString::number(millimeter) : QString();
}

// From the top of a one-line text to the middle of its letters: half its ascent plus
// descent, without the leading Qt adds below the line.
double middleOfLine(const LabelTextLayout& layout)
{
    const QTextLine line = layout.document().firstBlock().layout()->lineAt(0);
    return (line.ascent() + line.descent()) / 2.0 / layout.unitsPerPoint();
}

RichText labelText(const QString& text, double pointSize)
{
    TextAttributes attributes;
    attributes.font = FontSpec{QStringLiteral("Arial"), QString(), pointSize, false, false};
    return RichText(text, attributes);
}

} // namespace

CalibrationMarks calibrationMarks(const QSizeF& paper)
{
    CalibrationMarks marks;
    const int insetX = cornerInset(paper.width());
    const int insetY = cornerInset(paper.height());
    marks.insetX = insetX * kPointsPerMillimeter;
    marks.insetY = insetY * kPointsPerMillimeter;
    const double right = paper.width() - marks.insetX;
    const double bottom = paper.height() - marks.insetY;
    // The middle one sits on whole millimetres too, at or just before the paper's middle.
    const double middleX = std::floor(millimeters(paper.width()) / 2.0) * kPointsPerMillimeter;
    const double middleY = std::floor(millimeters(paper.height()) / 2.0) * kPointsPerMillimeter;
    marks.crosshairs = {{marks.insetX, marks.insetY},
                        {right, marks.insetY},
                        {marks.insetX, bottom},
                        {right, bottom},
                        {middleX, middleY}};
    marks.crosshairArm =
        std::min({kCrosshairArmMillimeters * kPointsPerMillimeter, marks.insetX, marks.insetY});

    // The rulers run from the top-left crosshair to the top-right and bottom-left ones,
    // ticking each whole millimetre from the paper's edge; their ticks point inwards.
    const int lastX = int(std::floor(millimeters(right) + 1e-9));
    for (int mm = insetX; mm <= lastX; ++mm) {
        const double x = mm * kPointsPerMillimeter;
        marks.horizontalTicks.push_back(
            {mm, QLineF(x, marks.insetY, x, marks.insetY + tickLength(mm)), tickLabel(mm)});
    }
    const int lastY = int(std::floor(millimeters(bottom) + 1e-9));
    for (int mm = insetY; mm <= lastY; ++mm) {
        const double y = mm * kPointsPerMillimeter;
        marks.verticalTicks.push_back(
            {mm, QLineF(marks.insetX, y, marks.insetX + tickLength(mm), y), tickLabel(mm)});
    }
    return marks;
}

void paintCalibrationPage(QPainter& painter, const QSizeF& paper, const QString& caption)
{
    const CalibrationMarks marks = calibrationMarks(paper);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::black, kLineWidthPoints, Qt::SolidLine, Qt::FlatCap));
    painter.setBrush(Qt::NoBrush);

    const double arm = marks.crosshairArm;
    const double circle = std::min(kCrosshairCircleMillimeters * kPointsPerMillimeter, arm / 2.0);
    for (const QPointF& center : marks.crosshairs) {
        painter.drawLine(QLineF(center.x() - arm, center.y(), center.x() + arm, center.y()));
        painter.drawLine(QLineF(center.x(), center.y() - arm, center.x(), center.y() + arm));
        painter.drawEllipse(center, circle, circle);
    }

    if (!marks.horizontalTicks.empty()) {
        painter.drawLine(QLineF(marks.horizontalTicks.front().line.p1(),
                                marks.horizontalTicks.back().line.p1()));
    }
    if (!marks.verticalTicks.empty()) {
        painter.drawLine(
            QLineF(marks.verticalTicks.front().line.p1(), marks.verticalTicks.back().line.p1()));
    }
    // A label is centred on its tick, below the top ruler's ticks and beside the left
    // ruler's; the ticks at the corner crosshair go unnumbered, where the rulers meet.
    for (const RulerTick& tick : marks.horizontalTicks) {
        painter.drawLine(tick.line);
        if (tick.label.isEmpty() || tick.millimeters == marks.horizontalTicks.front().millimeters)
            continue;
        const LabelTextLayout label(labelText(tick.label, kLabelPointSize), std::nullopt);
        const QSizeF size = label.size();
        label.draw(painter, QRectF(QPointF(tick.line.x2() - size.width() / 2.0,
                                           tick.line.y2() + kLabelGapPoints),
                                   size));
    }
    for (const RulerTick& tick : marks.verticalTicks) {
        painter.drawLine(tick.line);
        if (tick.label.isEmpty() || tick.millimeters == marks.verticalTicks.front().millimeters)
            continue;
        const LabelTextLayout label(labelText(tick.label, kLabelPointSize), std::nullopt);
        const QSizeF size = label.size();
        label.draw(painter, QRectF(QPointF(tick.line.x2() + kLabelGapPoints,
                                           tick.line.y2() - middleOfLine(label)),
                                   size));
    }

    if (!caption.isEmpty()) {
        const QPointF middle = marks.crosshairs.back();
        const double left = marks.insetX + arm;
        const double width = paper.width() - 2.0 * left;
        if (width > 0.0) {
            const QRectF area(left, middle.y() + arm + kLabelGapPoints, width,
                              paper.height() - marks.insetY - (middle.y() + arm));
            drawLabelText(painter, labelText(caption, kCaptionPointSize), area);
        }
    }
    painter.restore();
}

} // namespace lomir
