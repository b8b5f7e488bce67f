#pragma once

#include "core/base/result.h"
#include "core/printing/pagesetup.h"

#include <QLocale>
#include <QMarginsF>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <optional>

namespace lomir {

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
    QMarginsF margins{kDefaultMarginPoints, kDefaultMarginPoints, kDefaultMarginPoints,
                      kDefaultMarginPoints};

    bool operator==(const PrintCommandOptions&) const = default;
};

// A paper size as the command line names it: a paper name Qt knows ("A4", "letter",
// "Legal", "A5"; any case), or WIDTHxHEIGHT with a unit, "100x150mm", "4x6in",
// "288x432pt". The size in points, upright; or a sentence saying what is wrong.
Result<QSizeF> paperSizeFromText(const QString& text);

// Margins as LEFT,TOP,RIGHT,BOTTOM in points, each a number of at least 0; or a sentence
// saying what is wrong.
Result<QMarginsF> marginsFromText(const QString& text);

// The paper of the default page layout for the locale, in points, upright.
QSizeF defaultPaperForLocale(const QLocale& locale);

// The arguments of `lomir print` (after the word "print"), with the paper to use when
// --paper is not given. A usage error (code kExitUsage) names what is wrong.
Result<PrintCommandOptions> printCommandOptions(const QStringList& arguments,
                                                const QSizeF& defaultPaper);

} // namespace lomir
