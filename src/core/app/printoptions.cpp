#include "core/app/printoptions.h"

#include "core/base/errors.h"
#include "core/base/result.h"
#include "core/base/units.h"
#include "core/label/numberinput.h"
#include "core/printing/pagesetup.h"
#include "core/printing/paper.h"

#include <QCoreApplication>
#include <QPageSize>
#include <QRegularExpression>
#include <algorithm>
#include <array>
#include <limits>

namespace lomir {

namespace {

struct PrintOptionsText
{
    Q_DECLARE_TR_FUNCTIONS(CommandLine)
};

// A command line that was not understood exits with status 2; its errors carry it.
constexpr int kUsageExitStatus = 2;

Error usageError(const QString& sentence)
{
    return Error{QString(kUsageErrorDomain), kUsageExitStatus, sentence};
}

// The size of one of Qt's paper sizes in points, exact to the unit it is defined in.
QSizeF paperSizeInPoints(QPageSize::PageSizeId id)
{
    return QPageSize::definitionSize(id) *
           pointsPerUnit(QPageLayout::Unit(QPageSize::definitionUnits(id)));
}

std::optional<QPageSize::PageSizeId> paperNamed(const QString& name)
{
    for (int raw = 0; raw <= int(QPageSize::LastPageSize); ++raw) {
        const auto id = QPageSize::PageSizeId(raw);
        if (id == QPageSize::Custom)
            continue;
        // The key is the name printers use ("A4", "Letter", "EnvC5"); the name is the one
        // Qt shows ("Letter / ANSI A").
        if (name.compare(QPageSize::key(id), Qt::CaseInsensitive) == 0 ||
            name.compare(QPageSize::name(id), Qt::CaseInsensitive) == 0)
            return id;
    }
    return std::nullopt;
}

// A positive, finite length.
std::optional<double> positiveNumber(const QString& text)
{
    const std::optional<double> number = parseDecimalInput(text);
    if (!number || !(*number > 0.0))
        return std::nullopt;
    return number;
}

double pointsPerPaperUnit(const QString& unit)
{
    if (unit.compare(u"mm", Qt::CaseInsensitive) == 0)
        return kPointsPerMillimeter;
    if (unit.compare(u"in", Qt::CaseInsensitive) == 0)
        return kPointsPerInch;
    return 1.0; // pt
}

// The value of an option that takes a whole number, or a sentence naming the option.
Result<qint64> wholeNumberOption(const QString& option, const QString& text, qint64 smallest)
{
    bool digitsOnly = !text.isEmpty();
    for (const QChar character : text)
        digitsOnly = digitsOnly && character >= u'0' && character <= u'9';
    const std::optional<qint64> number = digitsOnly ? parseWholeNumber(text) : std::nullopt;
    if (!number || *number < smallest)
        return usageError(PrintOptionsText::tr("%1 takes a whole number of at least %2, not “%3”.")
                              .arg(option, QString::number(smallest), text));
    return *number;
}

} // namespace

Result<QSizeF> paperSizeFromText(const QString& text)
{
    if (const std::optional<QPageSize::PageSizeId> id = paperNamed(text.trimmed()))
        return paperSizeInPoints(*id);

    static const QRegularExpression custom(
        QStringLiteral("^\\s*([0-9.]+)\\s*[x×]\\s*([0-9.]+)\\s*(mm|in|pt)\\s*$"),
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = custom.match(text);
    if (match.hasMatch()) {
        const std::optional<double> width = positiveNumber(match.captured(1));
        const std::optional<double> height = positiveNumber(match.captured(2));
        if (width && height) {
            const double scale = pointsPerPaperUnit(match.captured(3));
            return QSizeF(*width * scale, *height * scale);
        }
    }
    return usageError(PrintOptionsText::tr("Unknown paper “%1”: give a paper name such as A4 or "
                                           "Letter, or a size such as 100x150mm, 4x6in or "
                                           "288x432pt.")
                          .arg(text));
}

Result<QMarginsF> marginsFromText(const QString& text)
{
    const QStringList parts = text.split(u',');
    std::array<double, 4> values{};
    bool ok = parts.size() == 4;
    for (qsizetype i = 0; ok && i < 4; ++i) {
        const std::optional<double> value = parseDecimalInput(parts[i].trimmed());
        ok = value && *value >= 0.0;
        values[size_t(i)] = value.value_or(0.0);
    }
    if (!ok)
        return usageError(PrintOptionsText::tr("The margins “%1” are not four numbers of points "
                                               "of at least 0, given as LEFT,TOP,RIGHT,BOTTOM.")
                              .arg(text));
    return QMarginsF(values[0], values[1], values[2], values[3]);
}

QSizeF defaultPaperForLocale(const QLocale& locale)
{
    return paperSettings(defaultPageLayout(locale)).paper;
}

Result<PrintCommandOptions> printCommandOptions(const QStringList& arguments,
                                                const QSizeF& defaultPaper)
{
    PrintCommandOptions options;
    options.paper = defaultPaper;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (argument == u"--full-page") {
            options.fullPage = true;
            continue;
        }
        static const QStringList valueOptions = {
            QStringLiteral("-o"),         QStringLiteral("--printer"),
            QStringLiteral("--quantity"), QStringLiteral("--serial-start"),
            QStringLiteral("--paper"),    QStringLiteral("--margins")};
        if (valueOptions.contains(argument)) {
            if (i + 1 >= arguments.size())
                return usageError(
                    PrintOptionsText::tr("%1 needs a value; see “lomir --help”.").arg(argument));
            const QString& value = arguments[++i];
            if (argument == u"-o") {
                options.pdfPath = value;
            } else if (argument == u"--printer") {
                options.printerName = value;
            } else if (argument == u"--quantity") {
                const Result<qint64> quantity = wholeNumberOption(argument, value, 1);
                LOMIR_RETURN_IF_ERROR(quantity);
                options.quantity = *quantity;
            } else if (argument == u"--serial-start") {
                const Result<qint64> start = wholeNumberOption(argument, value, 0);
                LOMIR_RETURN_IF_ERROR(start);
                options.serialStart = *start;
            } else if (argument == u"--paper") {
                const Result<QSizeF> paper = paperSizeFromText(value);
                LOMIR_RETURN_IF_ERROR(paper);
                options.paper = *paper;
            } else {
                const Result<QMarginsF> margins = marginsFromText(value);
                LOMIR_RETURN_IF_ERROR(margins);
                options.margins = *margins;
            }
            continue;
        }
        if (argument.startsWith(u'-') && argument.size() > 1)
            return usageError(
                PrintOptionsText::tr("Unknown option “%1” for “print”; see “lomir --help”.")
                    .arg(argument));
        if (!options.file.isEmpty())
            return usageError(PrintOptionsText::tr("“print” takes one label file, not “%1” as "
                                                   "well; see “lomir --help”.")
                                  .arg(argument));
        options.file = argument;
    }

    if (options.file.isEmpty())
        return usageError(
            PrintOptionsText::tr("“print” needs a label file to print; see “lomir --help”."));
    if (options.pdfPath.isEmpty() == options.printerName.isEmpty())
        return usageError(PrintOptionsText::tr("“print” needs either -o OUT.pdf or --printer "
                                               "NAME, and not both; see “lomir --help”."));
    // The numbers go up to first number + quantity, which must be countable.
    const qint64 quantity = options.quantity.value_or(1);
    const qint64 start = options.serialStart.value_or(0);
    if (start > std::numeric_limits<qint64>::max() - quantity)
        return usageError(PrintOptionsText::tr("The first serial number and the quantity "
                                               "together pass the largest number Lomir counts "
                                               "to (9223372036854775807)."));
    return options;
}

} // namespace lomir
