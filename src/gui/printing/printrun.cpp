#include "gui/printing/printrun.h"

#include "core/layout/tilingtextview.h"

#include <QFile>
#include <QPainter>
#include <QPdfWriter>
#include <QPrinter>
#include <QSaveFile>
#include <QThread>

namespace lomir {

PrinterDestination::PrinterDestination(std::shared_ptr<QPrinter> printer,
                                       const QPageLayout& printSettings)
    : m_printer(std::move(printer)), m_printSettings(printSettings)
{
}

PrinterDestination::~PrinterDestination() = default;

QPagedPaintDevice* PrinterDestination::open()
{
    // The painter's origin is the paper's corner; the labels keep the margins themselves.
    m_printer->setFullPage(true);
    if (!m_printer->setPageLayout(fullPaperLayout(m_printSettings)))
        return nullptr;
    return m_printer.get();
}

void PrinterDestination::abandon()
{
    m_printer->abort();
}

bool PrinterDestination::finish(PaintOutcome outcome)
{
    if (outcome == PaintOutcome::Finished)
        return m_printer->printerState() != QPrinter::Error;
    // A file is complete or not there at all.
    if (!m_printer->outputFileName().isEmpty())
        QFile::remove(m_printer->outputFileName());
    return false;
}

struct PdfFileDestination::Output
{
    QSaveFile file;
    std::unique_ptr<QPdfWriter> writer;
};

PdfFileDestination::PdfFileDestination(QString path, const QPageLayout& printSettings,
                                       QString title)
    : m_path(std::move(path)), m_printSettings(printSettings), m_title(std::move(title))
{
}

PdfFileDestination::~PdfFileDestination() = default;

QPagedPaintDevice* PdfFileDestination::open()
{
    m_output = std::make_unique<Output>();
    m_output->file.setFileName(m_path);
    if (!m_output->file.open(QIODevice::WriteOnly))
        return nullptr;
    m_output->writer = std::make_unique<QPdfWriter>(&m_output->file);
    m_output->writer->setTitle(m_title);
    m_output->writer->setCreator(QStringLiteral("Lomir"));
    if (!m_output->writer->setPageLayout(fullPaperLayout(m_printSettings)))
        return nullptr;
    return m_output->writer.get();
}

bool PdfFileDestination::finish(PaintOutcome outcome)
{
    if (!m_output)
        return false;
    // The writer has flushed its last page when the painter ended.
    m_output->writer.reset();
    bool kept = false;
    if (outcome == PaintOutcome::Finished && m_output->file.isOpen())
        kept = m_output->file.commit();
    else
        m_output->file.cancelWriting();
    m_output.reset();
    return kept;
}

PrintRun::PrintRun(std::unique_ptr<PrintDestination> destination, qint64 pageCount,
                   Painting painting, QObject* parent)
    : QObject(parent), m_destination(std::move(destination)), m_pageCount(pageCount),
      m_painting(std::move(painting))
{
}

PrintRun::~PrintRun()
{
    cancel();
    if (m_thread)
        m_thread->wait();
}

PrintRun* PrintRun::forLabels(std::unique_ptr<PrintDestination> destination,
                              std::unique_ptr<TilingTextView> view, const QMarginsF& margins,
                              const PagePainting& options, QObject* parent)
{
    const PageRange pages = options.pages.value_or(allPages(*view));
    std::shared_ptr<TilingTextView> shared = std::move(view);
    Painting painting = [shared, margins, options](QPainter& painter, QPagedPaintDevice& device,
                                                   const PageProgress& progress) {
        PagePainting withProgress = options;
        withProgress.progress = progress;
        return paintPages(painter, device, *shared, margins, withProgress);
    };
    return new PrintRun(std::move(destination), pages.count, std::move(painting), parent);
}

void PrintRun::start()
{
    if (m_thread)
        return;
    m_running = true;
    m_thread.reset(QThread::create([this] { run(); }));
    m_thread->start();
}

void PrintRun::cancel()
{
    m_canceled = true;
}

void PrintRun::run()
{
    // The painting and all it holds (the laid-out label) live and die on this thread.
    Painting painting = std::move(m_painting);
    PaintOutcome outcome = PaintOutcome::DeviceFailed;
    if (QPagedPaintDevice* device = m_destination->open()) {
        QPainter painter;
        if (painter.begin(device)) {
            const PageProgress progress = [this](qint64 painted, qint64 count) {
                m_pagesPainted = painted;
                QMetaObject::invokeMethod(
                    this, [this, painted, count] { Q_EMIT pagePainted(painted, count); },
                    Qt::QueuedConnection);
                return !m_canceled;
            };
            outcome = m_canceled ? PaintOutcome::Canceled : painting(painter, *device, progress);
            if (outcome == PaintOutcome::Canceled)
                m_destination->abandon();
            painter.end();
        }
    }
    if (!m_destination->finish(outcome) && outcome == PaintOutcome::Finished)
        outcome = PaintOutcome::DeviceFailed;
    painting = nullptr;
    QMetaObject::invokeMethod(
        this, [this, outcome] { end(outcome); }, Qt::QueuedConnection);
}

void PrintRun::end(PaintOutcome outcome)
{
    m_thread->wait();
    m_running = false;
    Q_EMIT finished(outcome);
}

} // namespace lomir
