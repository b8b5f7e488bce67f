#include "core/label/zoom.h"

#include <cmath>

namespace lomir {

double zoomPercent(double sliderValue)
{
    // std::round takes halves away from zero; adding zero turns -0 into 0, which is
    // written without a sign.
    return std::round(sliderValue) + 0.0;
}

double magnificationForZoom(double sliderValue)
{
    return zoomPercent(sliderValue) / 100.0;
}

QString zoomCaption(const QString& zoomWord, double sliderValue)
{
    return zoomWord + QStringLiteral(" (") + QString::number(zoomPercent(sliderValue), 'f', 0) +
           QStringLiteral("%)");
}

} // namespace lomir
