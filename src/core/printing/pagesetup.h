#pragma once

#include "core/printing/calibration.h"

#include <QLocale>
#include <QPageLayout>
#include <QString>

class QSettings;

namespace lomir {

// The margins of the default page layout: half an inch, in points, clear of what desktop
// printers cannot reach on every side.
inline constexpr double kDefaultMarginPoints = 36.0;

// The paper and margins a document prints on until the user chooses others, in the window
// and on the command line alike: US Letter where the locale's printers take it, A4
// elsewhere, upright, kDefaultMarginPoints from every edge.
QPageLayout defaultPageLayout(const QLocale& paperLocale);

// The locale that decides the default paper: LC_ALL, LC_PAPER or LANG, as the C library
// reads them; the C locale when none is set.
QLocale paperLocale();

// Whether the margins leave some of the paper to print on.
bool leavesRoom(const QPageLayout& layout);

// The paper and margins last chosen in Page Setup, which new documents start from; the
// default for the system's locale until one is chosen, or when what is stored cannot
// make a valid layout.
QPageLayout storedPageLayout(const QSettings& settings);
void storePageLayout(QSettings& settings, const QPageLayout& layout);

// The calibration a printer can be given, in the units the user measures in: offsets
// in millimetres either way, the scale in percent.
inline constexpr double kLargestCalibrationOffsetMillimeters = 50.0;
inline constexpr double kSmallestCalibrationScalePercent = 50.0;
inline constexpr double kLargestCalibrationScalePercent = 200.0;

// Whether every value lies in the ranges above (and is a number at all).
bool isValidCalibration(const PrinterCalibration& calibration);

// The calibration stored for the printer of that name: none (offsets 0, scale 100%)
// until one is stored, or when what is stored is out of range.
PrinterCalibration storedCalibration(const QSettings& settings, const QString& printerName);
// Stores the printer's calibration; a calibration that changes nothing removes the entry.
void storeCalibration(QSettings& settings, const QString& printerName,
                      const PrinterCalibration& calibration);

} // namespace lomir
