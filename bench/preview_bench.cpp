// Opens the print preview of a long print from a document window, as the Print Preview
// command does, then pages through every page of it, and reports how long the preview
// took to show its first page and how much memory the process held. With --stock it
// measures the same print in Qt's own QPrintPreviewDialog instead, which paints every
// page before it shows the first. The last line on stdout is the result:
//   preview=ours|stock labels=N pages=P open_s=T paging_s=S peak_rss_mb_before=A
//   peak_rss_mb_open=B peak_rss_mb=C

#include "core/document/content.h"
#include "core/document/document.h"
#include "core/layout/serialnumber.h"
#include "core/layout/tilingtextview.h"
#include "core/printing/pageloop.h"
#include "core/printing/paper.h"
#include "core/printing/printroutine.h"
#include "gui/app/cascadingwindowcontroller.h"
#include "gui/app/scene.h"
#include "gui/editor/mainviewcontroller.h"
#include "gui/printing/printcontroller.h"
#include "gui/printing/printpreview.h"
#include "processusage.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QPageSize>
#include <QPainter>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QTemporaryDir>
#include <QWindow>
#include <cstdio>
#include <memory>

using namespace lomir;
using lomir::bench::peakResidentMegabytes;

namespace {

constexpr int kUsageExit = 2;
constexpr int kFailureExit = 1;

struct Options
{
    qint64 quantity = 70000;
    bool stock = false;
};

std::optional<Options> parseOptions(const QStringList& arguments)
{
    Options options;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        if (arguments[i] == QStringLiteral("--stock")) {
            options.stock = true;
        } else if (arguments[i] == QStringLiteral("--quantity") && i + 1 < arguments.size()) {
            bool ok = false;
            options.quantity = arguments[++i].toLongLong(&ok);
            if (!ok || options.quantity < 1)
                return std::nullopt;
        } else {
            return std::nullopt;
        }
    }
    return options;
}

// The label of the tiling benchmark: "Batch No. " and a serial, Arial 12, as large as its
// text, with no spacing, on Letter paper with half-inch margins.
Content benchLabel(qint64 quantity)
{
    TextAttributes arial;
    arial.font = FontSpec{QStringLiteral("Arial"), QStringLiteral("ArialMT"), 12.0, false, false};
    Content record;
    record.labelText = AttributedString(RichText(
        QStringLiteral("Batch No. ") + serialPlaceholder(serialDigitCount(quantity, 0)), arial));
    record.quantity = QString::number(quantity);
    record.serialStartFrom = QStringLiteral("0");
    record.outputSpacing = 0;
    record.magnification = 100.0;
    return record;
}

QPageLayout letterWithHalfInchMargins()
{
    return QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Portrait,
                       QMarginsF(36.0, 36.0, 36.0, 36.0), QPageLayout::Point);
}

// Runs the event loop until the condition holds.
template <typename Condition> void processEventsUntil(Condition condition)
{
    while (!condition())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

} // namespace

int main(int argc, char* argv[])
{
    // Headless, and with settings of its own: the print controller stores its page layout.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.filePath(QStringLiteral("config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", home.filePath(QStringLiteral("data")).toLocal8Bit());
    QApplication app(argc, argv);
    const std::optional<Options> options = parseOptions(QApplication::arguments());
    if (!options) {
        std::fputs("Usage: preview-bench [--quantity N] [--stock]\n", stderr);
        return kUsageExit;
    }

    // A document window with the label, as the user has it open.
    const QString path = home.filePath(QStringLiteral("label.lomir"));
    const Result<QByteArray> json = benchLabel(options->quantity).encode();
    QFile file(path);
    if (!json || !file.open(QIODevice::WriteOnly) || file.write(*json) != json->size()) {
        std::fputs("preview-bench: cannot write the label\n", stderr);
        return kFailureExit;
    }
    file.close();
    auto* window = instantiateController<CascadingWindowController>(kDocumentWindowScene);
    auto* document = new Document(window);
    if (!document->readFromFile(path, QStringLiteral("com.brenvik.lomir-doc"))) {
        std::fputs("preview-bench: cannot read the label\n", stderr);
        return kFailureExit;
    }
    window->setDocument(document, nullptr);
    window->printController()->setPageLayout(letterWithHalfInchMargins());
    window->show();
    processEventsUntil(
        [&] { return window->windowHandle() && window->windowHandle()->isExposed(); });
    const double rssBefore = peakResidentMegabytes();

    QElapsedTimer timer;
    qint64 pages = 0;
    double openSeconds = 0.0;
    double rssOpen = 0.0;
    double pagingSeconds = 0.0;
    if (!options->stock) {
        PrintPreviewDialog* preview = nullptr;
        QObject::connect(window->printController(), &PrintController::previewShown,
                         [&](PrintPreviewDialog* shown) { preview = shown; });
        timer.start();
        window->printPreviewAction()->trigger();
        if (!preview) {
            std::fputs("preview-bench: no preview opened\n", stderr);
            return kFailureExit;
        }
        processEventsUntil([&] { return preview->pages()->pagesPainted() > 0; });
        openSeconds = double(timer.nsecsElapsed()) / 1e9;
        rssOpen = peakResidentMegabytes();

        // The user pages through the whole print, one page after another.
        PrintPreviewView* view = preview->pages();
        pages = view->pageCount();
        timer.restart();
        for (qint64 page = 0; page < pages; ++page) {
            view->showPage(page);
            view->viewport()->repaint();
        }
        pagingSeconds = double(timer.nsecsElapsed()) / 1e9;
    } else {
        // The same plan, in Qt's own preview.
        const std::optional<PrintPlan> plan =
            preparePrint(*window->editor(), paperSettings(letterWithHalfInchMargins()), false);
        if (!plan)
            return kFailureExit;
        const std::unique_ptr<TilingTextView> tiling = makeTilingTextView(*plan);
        pages = *tiling->numberOfPages();
        QPrinter printer(QPrinter::HighResolution);
        printer.setFullPage(true);
        printer.setPageLayout(fullPaperLayout(letterWithHalfInchMargins()));
        timer.start();
        QPrintPreviewDialog preview(&printer, window);
        bool painted = false;
        QObject::connect(&preview, &QPrintPreviewDialog::paintRequested, [&](QPrinter* target) {
            QPainter painter(target);
            (void)paintPages(painter, *target, *tiling, plan->margins);
            painted = true;
        });
        preview.show();
        processEventsUntil([&] { return painted; });
        QCoreApplication::processEvents();
        openSeconds = double(timer.nsecsElapsed()) / 1e9;
        rssOpen = peakResidentMegabytes();
    }

    std::printf("preview=%s labels=%lld pages=%lld open_s=%.3f paging_s=%.3f "
                "peak_rss_mb_before=%.1f peak_rss_mb_open=%.1f peak_rss_mb=%.1f\n",
                options->stock ? "stock" : "ours", static_cast<long long>(options->quantity),
                static_cast<long long>(pages), openSeconds, pagingSeconds, rssBefore, rssOpen,
                peakResidentMegabytes());
    delete window;
    return 0;
}
