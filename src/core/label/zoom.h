#pragma once

#include <QString>

namespace lomir {

// The zoom slider's value as a whole percentage, halves rounded away from zero, so the
// caption and the magnification agree.
double zoomPercent(double sliderValue);

// The label's magnification for the zoom slider's value: 149.5 shows it at 1.5 times.
double magnificationForZoom(double sliderValue);

// The caption beside the zoom slider, "Zoom (150%)", given "Zoom" in the user's language.
QString zoomCaption(const QString& zoomWord, double sliderValue);

} // namespace lomir
