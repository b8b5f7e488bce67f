#pragma once

#include <QTransform>

class QPaintDevice;

namespace lomir {

// A printer's correction of where it puts the page: the page is scaled about the paper's
// top-left corner and then moved. Positive offsets move the print right and down. It
// applies to the pages sent to that printer only, never to PDF export or preview.
struct PrinterCalibration
{
    double horizontalOffsetMillimeters = 0.0;
    double verticalOffsetMillimeters = 0.0;
    double scalePercent = 100.0;
    bool operator==(const PrinterCalibration&) const = default;
};

// The calibration as a transform of points on the paper.
QTransform calibrationTransform(const PrinterCalibration& calibration);

// Maps points from the paper's top-left corner, corrected by the calibration, to the
// device's pixels. The device's page must be laid out with fullPaperLayout.
QTransform paperToDevice(const QPaintDevice& device, const PrinterCalibration& calibration = {});

} // namespace lomir
