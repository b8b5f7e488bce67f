#pragma once

#include "core/printing/pageloop.h"
#include "core/printing/paper.h"

#include <QMarginsF>
#include <QObject>
#include <QPageLayout>
#include <QString>
#include <atomic>
#include <functional>
#include <memory>

class QPagedPaintDevice;
class QPainter;
class QPrinter;
class QThread;

namespace lomir {

class TilingTextView;

// Where the pages of a print go. A destination is opened, painted on and finished on the
// print's own thread.
class PrintDestination
{
public:
    virtual ~PrintDestination() = default;

    // The device to paint on, its page the whole paper (see fullPaperLayout); null when
    // it cannot be opened.
    virtual QPagedPaintDevice* open() = 0;
    // Called while the painter is still active when the print was cancelled: a printer
    // drops the job instead of printing what it has.
    virtual void abandon() {}
    // Called once the painter has ended: keeps the output of a finished print and drops
    // that of any other. Returns false when the output could not be kept.
    [[nodiscard]] virtual bool finish(PaintOutcome outcome) = 0;
};

// A printer set up by the print dialog. A cancelled print is aborted; when the printer
// writes to a file, the file of a print that did not finish is removed.
class PrinterDestination final : public PrintDestination
{
public:
    // The printer's page is laid out here as the whole paper of the print settings.
    PrinterDestination(std::shared_ptr<QPrinter> printer, const QPageLayout& printSettings);
    ~PrinterDestination() override;

    QPagedPaintDevice* open() override;
    void abandon() override;
    bool finish(PaintOutcome outcome) override;

private:
    std::shared_ptr<QPrinter> m_printer;
    QPageLayout m_printSettings;
};

// A PDF file, written as a whole or not at all: the pages go to a temporary file that
// replaces the file only when the print finishes.
class PdfFileDestination final : public PrintDestination
{
public:
    PdfFileDestination(QString path, const QPageLayout& printSettings, QString title);
    ~PdfFileDestination() override;

    QPagedPaintDevice* open() override;
    bool finish(PaintOutcome outcome) override;

private:
    struct Output;
    QString m_path;
    QPageLayout m_printSettings;
    QString m_title;
    std::unique_ptr<Output> m_output;
};

// One print on its way to its destination. The pages are painted on a thread of the
// run's own, so that the windows stay responsive however long the print takes; the run
// reports every page painted, and its end, on the thread that made it. Cancelling stops
// the print once the page being painted is done.
class PrintRun final : public QObject
{
    Q_OBJECT

public:
    // What the run does on its thread: paints the print with the painter, which is
    // active on the device, and calls the progress callback after each page (a false
    // answer means the run was cancelled).
    using Painting = std::function<PaintOutcome(QPainter& painter, QPagedPaintDevice& device,
                                                const PageProgress& progress)>;

    PrintRun(std::unique_ptr<PrintDestination> destination, qint64 pageCount, Painting painting,
             QObject* parent = nullptr);
    // Cancels the print and waits for its thread.
    ~PrintRun() override;

    // A run of the labels of a tiling view: the pages of the options (every page when
    // empty), with the calibration the options give.
    static PrintRun* forLabels(std::unique_ptr<PrintDestination> destination,
                               std::unique_ptr<TilingTextView> view, const QMarginsF& margins,
                               const PagePainting& options, QObject* parent = nullptr);

    qint64 pageCount() const { return m_pageCount; }
    // The pages painted so far; read from any thread.
    qint64 pagesPainted() const { return m_pagesPainted; }
    bool isRunning() const { return m_running; }

    void start();
    void cancel();

Q_SIGNALS:
    void pagePainted(qint64 pagesPainted, qint64 pageCount);
    // The print ended: Finished when every page reached the destination and its output
    // was kept.
    void finished(lomir::PaintOutcome outcome);

private:
    void run();
    void end(PaintOutcome outcome);

    std::unique_ptr<PrintDestination> m_destination;
    qint64 m_pageCount = 0;
    Painting m_painting;
    std::unique_ptr<QThread> m_thread;
    std::atomic<bool> m_canceled{false};
    std::atomic<qint64> m_pagesPainted{0};
    bool m_running = false;
};

} // namespace lomir
