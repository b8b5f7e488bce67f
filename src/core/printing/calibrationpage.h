#pragma once

#include <QLineF>
#include <QPointF>
#include <QSizeF>
#include <QString>
#include <vector>

class QPainter;

namespace lomir {

// A mark of a calibration ruler: a tick at a whole number of millimetres from the paper's
// left edge (the ruler along the top) or top edge (the ruler down the left side).
struct RulerTick
{
    int millimeters = 0;
    QLineF line;   // in points from the paper's top-left corner
    QString label; // the millimetres on every tenth tick, empty on the others

    bool operator==(const RulerTick&) const = default;
};

// Where the marks of a calibration page go, in points from the paper's top-left corner.
// Every mark lies a whole number of millimetres from the paper's edges, so the user can
// measure with a ruler how far the printer puts it from where it belongs: a crosshair
// near each corner, inset 10 mm from both edges (less on paper under 40 mm), one in the
// middle, and two rulers that join the top-left crosshair to the top-right and the
// bottom-left ones, their ticks numbered with their distance from the edge.
struct CalibrationMarks
{
    double insetX = 0.0;                    // the corner crosshairs' distance from the
    double insetY = 0.0;                    // left and right, top and bottom edges
    std::vector<QPointF> crosshairs;        // centres: top left, top right, bottom left,
                                            // bottom right, middle
    double crosshairArm = 0.0;              // from the centre to the end of each line
    std::vector<RulerTick> horizontalTicks; // along the top, left to right
    std::vector<RulerTick> verticalTicks;   // down the left side, top to bottom
};

CalibrationMarks calibrationMarks(const QSizeF& paper);

// Paints the calibration page of paper of that size in points: the painter's coordinates
// are points from the paper's top-left corner (see paperToDevice). The caption, if any,
// is set below the middle crosshair: a sentence that tells the user what to measure.
void paintCalibrationPage(QPainter& painter, const QSizeF& paper,
                          const QString& caption = QString());

} // namespace lomir
