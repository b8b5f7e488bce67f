#include "core/printing/calibration.h"

#include "core/base/units.h"

#include <QPaintDevice>

namespace lomir {

QTransform calibrationTransform(const PrinterCalibration& calibration)
{
    const double scale = calibration.scalePercent / 100.0;
    // Scale first, then move: x' = offset + scale * x.
    return QTransform(scale, 0.0, 0.0, scale,
                      calibration.horizontalOffsetMillimeters * kPointsPerMillimeter,
                      calibration.verticalOffsetMillimeters * kPointsPerMillimeter);
}

QTransform paperToDevice(const QPaintDevice& device, const PrinterCalibration& calibration)
{
    return calibrationTransform(calibration) *
           QTransform::fromScale(device.logicalDpiX() / kPointsPerInch,
                                 device.logicalDpiY() / kPointsPerInch);
}

} // namespace lomir
