// Prints sheets of numbered labels to a PDF through the print job's own path (a plan, its
// tiling view, the page loop), and reports how fast and in how much memory. The last line
// on stdout is the result:
//   labels=N pages=P seconds=T labels_per_s=R peak_rss_mb=M

#include "core/document/richtext/richtext.h"
#include "core/layout/labeltextlayout.h"
#include "core/layout/measurement.h"
#include "core/layout/serialnumber.h"
#include "core/layout/sheetgeometry.h"
#include "core/layout/tilingtextview.h"
#include "core/printing/pageloop.h"
#include "core/printing/paper.h"
#include "core/printing/printplan.h"
#include "processusage.h"

#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPainter>
#include <QPdfWriter>
#include <QStringList>
#include <QTemporaryFile>
#include <cstdio>
#include <optional>

using namespace lomir;
using lomir::bench::peakResidentMegabytes;
using lomir::bench::processorSeconds;

namespace {

constexpr int kUsageExit = 2;
constexpr int kFailureExit = 1; // the label does not fit, or the PDF cannot be written

struct Options
{
    qint64 quantity = 70000;
    qint64 serialStart = 0;
    std::optional<QString> text;
    QString fontFamily = QStringLiteral("Arial");
    double fontSize = 12.0;
    bool rich = false;
    std::optional<QSizeF> label;
    double spacing = 0.0;
    QSizeF paper{612.0, 792.0};
    QMarginsF margins{36.0, 36.0, 36.0, 36.0};
    QString output;
};

void printUsage()
{
    std::fputs(
        "Usage: tiling-bench [options]\n"
        "  --quantity N        copies to print (default 70000)\n"
        "  --serial-start S    number of the first copy (default 0)\n"
        "  --text TEXT         label text; every # is one serial digit (default \"Batch No. \"\n"
        "                      and as many # as the numbers need)\n"
        "  --font FAMILY       font of the text (default Arial)\n"
        "  --size PT           font size in points (default 12)\n"
        "  --rich              a built-in label of several runs: a bold line, a coloured\n"
        "                      serial with one bold digit and an italic line that wraps\n"
        "  --label WxH         label size in points (default: the text's measured size)\n"
        "  --spacing 0|4       gap between labels in points (default 0)\n"
        "  --paper WxH         paper size in points (default 612x792)\n"
        "  --margins L,T,R,B   margins in points (default 36,36,36,36)\n"
        "  -o FILE.pdf         where to write the PDF (default a temporary file)\n",
        stderr);
}

std::optional<QSizeF> parseSize(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char('x'));
    if (parts.size() != 2)
        return std::nullopt;
    bool widthOk = false;
    bool heightOk = false;
    const QSizeF size(parts[0].toDouble(&widthOk), parts[1].toDouble(&heightOk));
    if (!widthOk || !heightOk || !(size.width() > 0.0) || !(size.height() > 0.0))
        return std::nullopt;
    return size;
}

std::optional<QMarginsF> parseMargins(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    if (parts.size() != 4)
        return std::nullopt;
    double values[4] = {};
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        values[i] = parts[i].toDouble(&ok);
        if (!ok || values[i] < 0.0)
            return std::nullopt;
    }
    return QMarginsF(values[0], values[1], values[2], values[3]);
}

// The options, or nothing when they cannot be read (the reason is printed).
std::optional<Options> parseOptions(const QStringList& arguments)
{
    Options options;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString& option = arguments[i];
        if (option == QStringLiteral("--rich")) {
            options.rich = true;
            continue;
        }
        static const QStringList valueOptions = {
            QStringLiteral("--quantity"), QStringLiteral("--serial-start"),
            QStringLiteral("--text"),     QStringLiteral("--font"),
            QStringLiteral("--size"),     QStringLiteral("--label"),
            QStringLiteral("--spacing"),  QStringLiteral("--paper"),
            QStringLiteral("--margins"),  QStringLiteral("-o")};
        if (!valueOptions.contains(option)) {
            std::fprintf(stderr, "tiling-bench: unknown option %s\n", qPrintable(option));
            return std::nullopt;
        }
        if (i + 1 >= arguments.size()) {
            std::fprintf(stderr, "tiling-bench: %s needs a value\n", qPrintable(option));
            return std::nullopt;
        }
        const QString value = arguments[++i];
        bool ok = true;
        if (option == QStringLiteral("--quantity")) {
            options.quantity = value.toLongLong(&ok);
            ok = ok && options.quantity > 0;
        } else if (option == QStringLiteral("--serial-start")) {
            options.serialStart = value.toLongLong(&ok);
        } else if (option == QStringLiteral("--text")) {
            options.text = value;
        } else if (option == QStringLiteral("--font")) {
            options.fontFamily = value;
            ok = !value.isEmpty();
        } else if (option == QStringLiteral("--size")) {
            options.fontSize = value.toDouble(&ok);
            ok = ok && options.fontSize > 0.0;
        } else if (option == QStringLiteral("--label")) {
            options.label = parseSize(value);
            ok = options.label.has_value();
        } else if (option == QStringLiteral("--spacing")) {
            ok = value == QStringLiteral("0") || value == QStringLiteral("4");
            options.spacing = value == QStringLiteral("4") ? kLabelSpacing : 0.0;
        } else if (option == QStringLiteral("--paper")) {
            const std::optional<QSizeF> paper = parseSize(value);
            ok = paper.has_value();
            options.paper = paper.value_or(QSizeF());
        } else if (option == QStringLiteral("--margins")) {
            const std::optional<QMarginsF> margins = parseMargins(value);
            ok = margins.has_value();
            options.margins = margins.value_or(QMarginsF());
        } else { // -o
            options.output = value;
            ok = !value.isEmpty();
        }
        if (!ok) {
            std::fprintf(stderr, "tiling-bench: bad value for %s: %s\n", qPrintable(option),
                         qPrintable(value));
            return std::nullopt;
        }
    }
    return options;
}

QString placeholderRun(qint64 units)
{
    QString run;
    for (qint64 unit = 0; unit < units; ++unit)
        run += QString::fromUtf16(kSerialPlaceholderUnit, kSerialPlaceholderUnitLength);
    return run;
}

// The plain label: every "#" of the text becomes one placeholder unit.
RichText plainLabel(const Options& options, qint64 digits)
{
    QString text = options.text.value_or(QStringLiteral("Batch No. ") + QString(digits, u'#'));
    text.replace(QLatin1Char('#'), placeholderRun(1));
    TextAttributes attributes;
    attributes.font = FontSpec{options.fontFamily, QString(), options.fontSize, false, false};
    return RichText(text, attributes);
}

TextAttributes face(const QString& family, double size, bool bold, bool italic, Rgba color)
{
    TextAttributes attributes;
    attributes.font = FontSpec{family, QString(), size, bold, italic};
    attributes.foreground = color;
    return attributes;
}

// The built-in rich label: a bold centred line, a grey "Serial No. " and a red serial
// whose second digit is bold, and an italic green note that wraps.
RichText richLabel(qint64 digits)
{
    const QString sans = QStringLiteral("Arial");
    const QString serif = QStringLiteral("Liberation Serif");
    ParagraphStyle centered;
    centered.alignment = TextAlignment::Center;
    TextAttributes title = face(sans, 11.0, true, false, Rgba{20, 20, 60, 255});
    title.paragraph = centered;
    const TextAttributes label = face(sans, 9.0, false, false, Rgba{90, 90, 90, 255});
    const TextAttributes serial = face(sans, 10.0, false, false, Rgba{200, 20, 20, 255});
    const TextAttributes serialBold = face(sans, 10.0, true, false, Rgba{200, 20, 20, 255});
    const TextAttributes note = face(serif, 8.0, false, true, Rgba{0, 110, 40, 255});

    RichText text(QStringLiteral("Lot 42 \u2013 Premium Blend\n"), title);
    text.append(QStringLiteral("Serial No. "), label);
    for (qint64 digit = 0; digit < digits; ++digit)
        text.append(placeholderRun(1), digit == 1 ? serialBold : serial);
    text.append(QStringLiteral("\n"), label);
    text.append(QStringLiteral("Store in a cool, dry place away from direct sunlight."), note);
    return text;
}

} // namespace

int main(int argc, char* argv[])
{
    // A benchmark runs headless.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);

    const std::optional<Options> parsed = parseOptions(QGuiApplication::arguments());
    if (!parsed) {
        printUsage();
        return kUsageExit;
    }
    const Options& options = *parsed;
    const qint64 digits = serialDigitCount(options.quantity, options.serialStart);

    // The label and its size: the measured text, or for the rich label as wide as its
    // first two lines, so that the note wraps, and as tall as it then is.
    const RichText text = options.rich ? richLabel(digits) : plainLabel(options, digits);
    QSizeF label;
    if (options.label) {
        label = *options.label;
    } else if (options.rich) {
        const int noteStart = int(text.string().lastIndexOf(QLatin1Char('\n')));
        const double width = widestLineWidth(text.mid(0, noteStart));
        label = QSizeF(width, LabelTextLayout(text, width).size().height() + 1.0);
    } else {
        label = QSizeF(widestLineWidth(text), textHeight(text));
    }

    const PrintPlan plan = planForLabel(options.paper, options.margins, label, options.spacing,
                                        options.quantity, options.serialStart, text);
    if (!planFits(plan)) {
        const QSizeF area = printableSize(plan);
        std::fprintf(stderr,
                     "tiling-bench: a label of %.2f x %.2f points does not fit the printable "
                     "area of %.2f x %.2f points; choose a smaller label or larger paper.\n",
                     plan.cell.width, plan.cell.height, area.width(), area.height());
        return kFailureExit;
    }

    QTemporaryFile temporary(QDir::tempPath() + QStringLiteral("/tiling-bench-XXXXXX.pdf"));
    QString output = options.output;
    if (output.isEmpty()) {
        if (!temporary.open()) {
            std::fputs("tiling-bench: cannot make a temporary file\n", stderr);
            return kFailureExit;
        }
        output = temporary.fileName();
    }
    QPdfWriter writer(output);
    if (!writer.setPageLayout(fullPaperLayout(options.paper))) {
        std::fputs("tiling-bench: the paper size cannot be used\n", stderr);
        return kUsageExit;
    }

    QElapsedTimer timer;
    timer.start();
    const double processorStart = processorSeconds();

    const std::unique_ptr<TilingTextView> view = makeTilingTextView(plan);
    if (!view->serialStringRange())
        std::fputs("tiling-bench: the text has no placeholder run of the needed length; "
                   "copies are not numbered\n",
                   stderr);

    QPainter painter;
    if (!painter.begin(&writer)) {
        std::fprintf(stderr, "tiling-bench: cannot write %s\n", qPrintable(output));
        return kFailureExit;
    }
    const qint64 pages = *view->numberOfPages();
    const qint64 progressStep = std::max<qint64>(1, pages / 20);
    PagePainting painting;
    painting.progress = [&](qint64 painted, qint64 count) {
        if (painted % progressStep == 0 || painted == count)
            std::fprintf(stderr, "page %lld of %lld\n", static_cast<long long>(painted),
                         static_cast<long long>(count));
        return true;
    };
    const PaintOutcome outcome = paintPages(painter, writer, *view, plan.margins, painting);
    painter.end();
    if (outcome != PaintOutcome::Finished) {
        std::fprintf(stderr, "tiling-bench: the PDF writer stopped taking pages\n");
        return kFailureExit;
    }

    const double seconds = double(timer.nsecsElapsed()) / 1.0e9;
    const double processor = processorSeconds() - processorStart;
    std::fprintf(stderr, "processor seconds %.3f (%.0f labels per processor second)\n", processor,
                 double(options.quantity) / processor);
    std::fflush(stderr);
    std::printf("labels=%lld pages=%lld seconds=%.3f labels_per_s=%.0f peak_rss_mb=%.1f\n",
                static_cast<long long>(options.quantity), static_cast<long long>(pages), seconds,
                double(options.quantity) / seconds, peakResidentMegabytes());
    return 0;
}
