#pragma once

#include "core/base/result.h"

#include <QLocale>
#include <QMarginsF>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <optional>

namespace lomir {

// The margins a print from the command line has unless told otherwise: half an inch on
// every side, in points.
inline constexpr double kDefaultCommandLineMargin = 36.0;

// What `lomir print` is asked to do. Lengths are in points.
struct PrintCommandOptions
{
    QString file;                      // the label document to print
    QString pdfPath;                   // -o: write the pages to this PDF file
    QString printerName;               // --printer: send the job to this print queue
    bool fullPage = false;             // one full page, whatever the quantity
    std::optional<qint64> quantity;    // typed into the quantity field when given
    std::optional<qint64> serialStart; // typed into the first serial number field
    QSizeF paper;
    QMarginsF margins{kDefaultCommandLineMargin, kDefaultCommandLineMargin,
                      kDefaultCommandLineMargin, kDefaultCommandLineMargin};

    bool operator==(const PrintCommandOptions&) const = default;
};

// A paper size as the command line names it: a paper name Qt knows ("A4", "letter",
// "Legal", "A5"; any case), or WIDTHxHEIGHT with a unit, "100x150mm", "4x6in",
// "288x432pt". The size in points, upright; or a sentence saying what is wrong.
Result<QSizeF> paperSizeFromText(const QString& text);

// Margins as LEFT,TOP,RIGHT,BOTTOM in points, each a number of at least 0; or a sentence
// saying what is wrong.
Result<QMarginsF> marginsFromText(const QString& text);

// The paper the locale prints on: US Letter in the Americas' Letter countries and the
// Philippines, A4 everywhere else. In points, upright.
QSizeF defaultPaperForLocale(const QLocale& locale);

// The locale that decides the paper, from the environment as the C library reads it for
// the paper category: LC_ALL, then LC_PAPER, then LANG. The C locale when none is set.
QLocale paperLocale();

// The arguments of `lomir print` (after the word "print"), with the paper to use when
// --paper is not given. A usage error (code kExitUsage) names what is wrong.
Result<PrintCommandOptions> printCommandOptions(const QStringList& arguments,
                                                const QSizeF& defaultPaper);

} // namespace lomir
