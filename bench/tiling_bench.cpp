// Prints sheets of numbered labels to a PDF the way a print job does, and reports how
// fast and in how much memory. The last line on stdout is the result:
//   labels=N pages=P seconds=T labels_per_s=R peak_rss_mb=M

#include "document/richtext.h"
#include "layout/labeltextlayout.h"
#include "layout/measurement.h"
#include "layout/serialnumber.h"
#include "layout/sheetgeometry.h"
#include "layout/tilingtextview.h"

#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QStringList>
#include <QTemporaryFile>
#include <cstdio>
#include <optional>
#include <sys/resource.h>

using namespace lomir;

namespace {

constexpr int kUsageExit = 2;
constexpr int kDoesNotFitExit = 1;

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

TextAttributes face(const QString& family, double size, bool bold, bool italic, Rgba colour)
{
    TextAttributes attributes;
    attributes.font = FontSpec{family, QString(), size, bold, italic};
    attributes.foreground = colour;
    return attributes;
}

// The built-in rich label: a bold centred line, a grey "Serial No. " and a red serial
// whose second digit is bold, and an italic green note that wraps.
RichText richLabel(qint64 digits)
{
    const QString sans = QStringLiteral("Arial");
    const QString serif = QStringLiteral("Liberation Serif");
    ParagraphStyle centred;
    centred.alignment = TextAlignment::Center;
    TextAttributes title = face(sans, 11.0, true, false, Rgba{20, 20, 60, 255});
    title.paragraph = centred;
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

double peakResidentMegabytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0; // kilobytes on Linux
}

// Processor time so far (user and system); unlike the wall clock it does not count the
// time other programs on a busy machine take.
double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto seconds = [](const timeval& time) { return double(time.tv_sec) + time.tv_usec / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
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

    const QSizeF area = printableArea(options.paper, options.margins);
    const CellSize cell = cellSize(label.width(), label.height(), options.spacing);
    if (!cellFits(cell, area)) {
        std::fprintf(stderr,
                     "tiling-bench: a label of %.2f x %.2f points does not fit the printable "
                     "area of %.2f x %.2f points; choose a smaller label or larger paper.\n",
                     cell.width, cell.height, area.width(), area.height());
        return kDoesNotFitExit;
    }

    QTemporaryFile temporary(QDir::tempPath() + QStringLiteral("/tiling-bench-XXXXXX.pdf"));
    QString output = options.output;
    if (output.isEmpty()) {
        if (!temporary.open()) {
            std::fputs("tiling-bench: cannot make a temporary file\n", stderr);
            return kDoesNotFitExit;
        }
        output = temporary.fileName();
    }
    QPdfWriter writer(output);
    writer.setPageSize(QPageSize(options.paper, QPageSize::Point));
    if (!writer.setPageMargins(options.margins, QPageLayout::Point)) {
        std::fputs("tiling-bench: the margins do not fit the paper\n", stderr);
        return kUsageExit;
    }

    QElapsedTimer timer;
    timer.start();
    const double processorStart = processorSeconds();

    // The print job's view, set up in the print job's order.
    const SheetGrid grid = sheetGrid(options.quantity, cell, area);
    TilingTextView view(grid.frame);
    view.setText(text);
    view.setQuantity(options.quantity);
    view.setSerialStartFrom(options.serialStart);
    view.setSerialDigitCount(digits);
    view.setCellWidth(cell.width);
    view.setCellHeight(cell.height);
    view.setPageWidth(area.width());
    view.setPageHeight(area.height());
    view.setNumberOfColumns(grid.numberOfColumns);
    view.setNumberOfRows(grid.numberOfRows);
    view.setNumberOfRowsOnAPage(grid.numberOfRowsOnAPage);
    view.setNumberOfPages(grid.numberOfPages);
    view.setSerialStringRange(locateSerialRun(text.string(), digits));
    view.setSpacing(options.spacing);
    if (!view.serialStringRange())
        std::fputs("tiling-bench: the text has no placeholder run of the needed length; "
                   "copies are not numbered\n",
                   stderr);

    QPainter painter(&writer);
    const double pointsToDevice = writer.resolution() / 72.0;
    const qint64 pages = grid.numberOfPages;
    const qint64 progressStep = std::max<qint64>(1, pages / 20);
    for (qint64 page = 0; page < pages; ++page) {
        if (page > 0)
            writer.newPage();
        // The painter's origin is the printable area's top-left corner; the view is the
        // pages stacked downwards, so each page's rectangle is moved up onto the paper.
        const QRectF rect(0.0, double(page) * area.height(), area.width(), area.height());
        painter.save();
        painter.scale(pointsToDevice, pointsToDevice);
        painter.translate(0.0, -rect.top());
        view.drawRect(painter, rect);
        painter.restore();
        if ((page + 1) % progressStep == 0 || page + 1 == pages)
            std::fprintf(stderr, "page %lld of %lld\n", static_cast<long long>(page + 1),
                         static_cast<long long>(pages));
    }
    painter.end();

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
