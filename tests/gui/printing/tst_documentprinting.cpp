#include "core/app/reviewprompt.h"
#include "core/app/translations.h"
#include "core/layout/measurement.h"
#include "core/layout/sheetgeometry.h"
#include "core/layout/tilingtextview.h"
#include "core/printing/pageloop.h"
#include "core/printing/pagesetup.h"
#include "core/printing/paper.h"
#include "core/printing/printplan.h"
#include "gui/app/reviewwindows.h"
#include "gui/editor/labeltextview.h"
#include "gui/printing/pagesetupdialog.h"
#include "gui/printing/printcontroller.h"
#include "gui/printing/printpreview.h"
#include "gui/printing/printrun.h"
#include "support/documentwindows.h"
#include "support/editorwindows.h"
#include "support/labelimages.h"
#include "support/printedpdf.h"
#include "support/samplelabels.h"

#include <QApplication>
#include <QDoubleSpinBox>
#include <QFile>
#include <QFileInfo>
#include <QPageSize>
#include <QPainter>
#include <QPrinter>
#include <QProcess>
#include <QProgressDialog>
#include <QPushButton>
#include <QScrollBar>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>
#include <QTextDocument>
#include <cmath>

using namespace lomir;
using namespace lomir::testing;

namespace {

// Copies must land this close to where the geometry puts them, in points.
constexpr double kPlacementTolerance = 0.005;
// Written out here rather than taken from the code under test.
constexpr double kPointsInAMillimeter = 72.0 / 25.4;

// A label of a custom size in points with the text and fields given.
Content labelRecord(const QSizeF& size, const RichText& text, const QString& quantity,
                    const QString& serialStart, qint64 outputSpacing = 0)
{
    Content record = customSizeRecord(size.width(), size.height());
    record.labelText = AttributedString(text);
    record.quantity = quantity;
    record.serialStartFrom = serialStart;
    record.outputSpacing = outputSpacing;
    return record;
}

QPageLayout letter(const QMarginsF& margins)
{
    return QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Portrait, margins,
                       QPageLayout::Point);
}

// Checks that the PDF holds the numbered copies of a label of 100 x 50 points, side by
// side on Letter with half-inch margins, each where the geometry puts it.
void verifyCopiesOnLetter(const QString& pdf, qint64 quantity, qint64 serialStart,
                          int placeholderUnits)
{
    const PrintPlan plan =
        planForLabel(QSizeF(612.0, 792.0), QMarginsF(36.0, 36.0, 36.0, 36.0), QSizeF(100.0, 50.0),
                     0.0, quantity, serialStart, numberedLabel(placeholderUnits));
    const double error = compareCopies(printedCopies(pdfWords(pdf)),
                                       expectedCopies(plan, *makeTilingTextView(plan)));
    QVERIFY2(error >= 0.0 && error <= kPlacementTolerance,
             qPrintable(QStringLiteral("%1: %2").arg(pdf).arg(error)));
}

// Types a letter into the label and takes it back: the text is as it was, and the edit
// can be undone.
void makeAnUndoableEdit(const EditorWindow& opened)
{
    typeIntoLabel(opened, QStringLiteral("x"));
    pressInLabel(opened, Qt::Key_Backspace);
}

// Answers printing's questions from a script, so that nothing waits for a click.
class ScriptedPrinting final : public PrintUserInterface
{
public:
    // The print dialog: prints to this PDF file, after the change the user makes there,
    // or is cancelled.
    QString printFile;
    bool printsInDialog = true;
    std::function<void(QPrinter&)> changeInDialog;
    // What the print dialog was shown: the pages and the printer's paper.
    QList<qint64> dialogPageCounts;
    QList<QPageLayout> dialogLayouts;

    // The export dialog's answer; empty cancels.
    QString exportPath;
    int exportQuestions = 0;
    QString exportSuggested;

    // Page Setup: what it was shown, what the user does while it is open, and the answer.
    QList<PageSetupChoice> pageSetupShown;
    std::function<void(const std::function<void(const PageSetupChoice&)>&)> duringPageSetup;
    std::optional<PageSetupChoice> pageSetupAnswer;

    QStringList errors;

    void askToPrint(QWidget*, QPrinter& printer, qint64 pageCount,
                    std::function<void(bool)> answer) override
    {
        dialogPageCounts.append(pageCount);
        dialogLayouts.append(printer.pageLayout());
        if (!printsInDialog) {
            answer(false);
            return;
        }
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(printFile);
        if (changeInDialog)
            changeInDialog(printer);
        answer(true);
    }

    void askPdfPath(QWidget*, const QString& suggested,
                    std::function<void(const QString&)> answer) override
    {
        ++exportQuestions;
        exportSuggested = suggested;
        answer(exportPath);
    }

    void askPageSetup(QWidget*, const PageSetupChoice& current,
                      std::function<void(const PageSetupChoice&)> printCalibrationPage,
                      std::function<void(const std::optional<PageSetupChoice>&)> answer) override
    {
        pageSetupShown.append(current);
        if (duringPageSetup)
            duringPageSetup(printCalibrationPage);
        answer(pageSetupAnswer);
    }

    void showPrintError(QWidget*, const QString& message) override { errors.append(message); }
};

qint64 printCount()
{
    return storedPrintCount(QSettings());
}

class TestDocumentPrinting : public QObject
{
    Q_OBJECT

private:
    EditorWindows m_editors;

    // A window with the label, its printing scripted to print into print.pdf, on Letter
    // paper with the margins.
    struct PrintingWindow
    {
        EditorWindow opened;
        ScriptedPrinting* printing = nullptr;
        PrintController* printer() const { return opened.window->printController(); }
    };

    PrintingWindow openPrinting(const Content& record,
                                const QMarginsF& margins = QMarginsF(36.0, 36.0, 36.0, 36.0))
    {
        PrintingWindow made;
        made.opened = m_editors.open(record);
        auto printing = std::make_unique<ScriptedPrinting>();
        printing->printFile = m_editors.filePath(QStringLiteral("print.pdf"));
        QFile::remove(printing->printFile);
        made.printing = printing.get();
        made.printer()->setUserInterface(std::move(printing));
        made.printer()->setPageLayout(letter(margins));
        return made;
    }

    // Runs the command and waits until its print has ended; the print's success, or
    // nothing when no print ended.
    static std::optional<bool> printAndWait(const PrintingWindow& window, QAction* command)
    {
        QSignalSpy ended(window.printer(), &PrintController::printOperationDidRun);
        command->trigger();
        if (ended.isEmpty() && !ended.wait(120000))
            return std::nullopt;
        return ended.first().first().toBool();
    }

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        nameTestApplication(QStringLiteral("tst_documentprinting"));
        QVERIFY(m_editors.isValid());
        QVERIFY(installTranslations(*qApp));
        qRegisterMetaType<PrintRun*>();
        qRegisterMetaType<PrintPreviewDialog*>();
        qRegisterMetaType<PaintOutcome>();
    }

    void init() { QSettings().clear(); }

    void cleanup()
    {
        m_editors.closeAll();
        // A print a failed test left running would count into the next test's settings.
        for (PrintRun* run : qApp->findChildren<PrintRun*>(Qt::FindDirectChildrenOnly))
            run->cancel();
        QTRY_VERIFY(qApp->findChildren<PrintRun*>(Qt::FindDirectChildrenOnly).isEmpty());
        // A successful print at a due count asked the review question; it goes unanswered.
        ReviewPrompt& prompt = ReviewPrompt::application();
        if (prompt.reviewWindow())
            prompt.reviewWindow()->reject();
        if (prompt.feedbackWindow())
            prompt.feedbackWindow()->reject();
        QVERIFY(!prompt.isReviewWindowShown());
    }

    // --- The print commands ---

    void theFileMenuHasThePrintCommands()
    {
        const EditorWindow opened = m_editors.open();
        const CascadingWindowController* window = opened.window;
        QCOMPARE(window->printAction()->shortcut(), QKeySequence(QKeySequence::Print));
        QCOMPARE(window->printAction()->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_P));
        QCOMPARE(window->printFullPageAction()->shortcut(),
                 QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P));
        for (QAction* command :
             {window->pageSetupAction(), window->printPreviewAction(), window->exportPdfAction(),
              window->printAction(), window->printFullPageAction(),
              window->printCalibrationPageAction()})
            QVERIFY(command->isEnabled());
    }

    void threeLabelsOnLetterFillPartOfTheTopRow()
    {
        // Letter with the print settings' margins, a label of 100 x 50, spacing off,
        // quantity 3: one page, three cells in the top row.
        if (!popplerInstalled())
            QSKIP("poppler-utils is not installed");
        const QMarginsF margins(72.0, 90.0, 72.0, 90.0);
        const PrintingWindow window =
            openPrinting(labelRecord(QSizeF(100.0, 50.0), numberedLabel(1), QStringLiteral("3"),
                                     QStringLiteral("0")),
                         margins);
        QCOMPARE(printAndWait(window, window.opened.window->printAction()), true);
        QCOMPARE(window.printing->dialogPageCounts, QList<qint64>{1});
        const QString pdf = window.printing->printFile;
        QCOMPARE(pdfInfo(pdf).pages, 1);
        QCOMPARE(pdfInfo(pdf).pageSize, QSizeF(612.0, 792.0));
        const std::vector<PrintedCopy> printed = printedCopies(pdfWords(pdf));
        QCOMPARE(printed.size(), std::size_t(3));
        for (int column = 0; column < 3; ++column) {
            QCOMPARE(printed[column].page, 1);
            QVERIFY(std::abs(printed[column].topLeft.x() - (72.0 + 100.0 * column)) <=
                    kPlacementTolerance);
            QVERIFY(std::abs(printed[column].topLeft.y() - 90.0) <= kPlacementTolerance);
            QCOMPARE(printed[column].serial, QString::number(column));
        }
    }

    void aFullPageWithTheRunItNeedsLeavesTheTextAlone()
    {
        // 5 x 14 cells fit and the quantity is 10: 70 copies. Start 1 and a two-unit run:
        // 11 and 71 both have two digits, so the text is not touched.
        if (!popplerInstalled())
            QSKIP("poppler-utils is not installed");
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(2), QStringLiteral("10"), QStringLiteral("1")));
        // An edit the user can undo, which the print must not take away.
        makeAnUndoableEdit(window.opened);
        const RichText before = window.opened.editor->labelText();
        QVERIFY(window.opened.textView()->document()->isUndoAvailable());

        QCOMPARE(printAndWait(window, window.opened.window->printFullPageAction()), true);
        QCOMPARE(window.opened.editor->labelText(), before);
        QVERIFY(window.opened.textView()->document()->isUndoAvailable());
        QVERIFY(window.opened.alerts->shown.isEmpty());

        const QString pdf = window.printing->printFile;
        QCOMPARE(pdfInfo(pdf).pages, 1);
        verifyCopiesOnLetter(pdf, 70, 1, 2);
    }

    void aFullPageWidensTheRunForThePrintOnly()
    {
        // Quantity 5 from 1 with a one-unit run, 70 cells: the page's numbers need two
        // digits, so the run is widened for the print, and the editor's text is back as
        // it was afterwards, its undo history empty.
        if (!popplerInstalled())
            QSKIP("poppler-utils is not installed");
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(1), QStringLiteral("5"), QStringLiteral("1")));
        makeAnUndoableEdit(window.opened);
        const RichText before = window.opened.editor->labelText();
        QCOMPARE(before, numberedLabel(1));

        QCOMPARE(printAndWait(window, window.opened.window->printFullPageAction()), true);
        QCOMPARE(window.opened.editor->labelText(), before);
        QVERIFY(!window.opened.textView()->document()->isUndoAvailable());
        QVERIFY(!window.opened.textView()->document()->isRedoAvailable());
        QVERIFY(window.opened.alerts->shown.isEmpty());

        const QString pdf = window.printing->printFile;
        QCOMPARE(pdfInfo(pdf).pages, 1);
        const std::vector<PrintedCopy> printed = printedCopies(pdfWords(pdf));
        QCOMPARE(printed.size(), std::size_t(70));
        QCOMPARE(printed.front().serial, QStringLiteral("01"));
        QCOMPARE(printed.back().serial, QStringLiteral("70"));
        verifyCopiesOnLetter(pdf, 70, 1, 2);

        // Typing goes on from the restored text: a refused edit would go back to it.
        typeIntoLabel(window.opened, QStringLiteral("a"));
        QCOMPARE(window.opened.text(),
                 QStringLiteral("No. ") + placeholderUnits(1) + QStringLiteral("a"));
    }

    void aFullPageOfALabelThatFollowsItsTextIsMeasuredAtTheZoom()
    {
        // When the run grows in a label that follows its text, the full page is counted
        // anew from the label's frame times the editor's zoom.
        if (!popplerInstalled())
            QSKIP("poppler-utils is not installed");
        Content record;
        record.labelText = AttributedString(numberedLabel(1));
        record.quantity = QStringLiteral("5");
        record.serialStartFrom = QStringLiteral("1");
        record.outputSpacing = 0;
        record.magnification = 200.0;
        const PrintingWindow window = openPrinting(record);
        const QSizeF before = window.opened.editor->labelSize();
        QCOMPARE(before, QSizeF(widestLineWidth(numberedLabel(1)),
                                textHeight(numberedLabel(1), labelFont())));
        // The page holds this many labels of the first size: their numbers need 3 digits.
        const qint64 firstCount = qint64(540.0 / before.width()) * qint64(720.0 / before.height());
        QCOMPARE(numberOfDigits(firstCount + 1), qint64(3));

        QCOMPARE(printAndWait(window, window.opened.window->printFullPageAction()), true);
        // The label grew with the run of three units, and stays as large.
        const QSizeF after = window.opened.editor->labelSize();
        QCOMPARE(after.width(), widestLineWidth(numberedLabel(3)));
        QCOMPARE(window.opened.editor->labelText(), numberedLabel(1));
        // The cells are the grown label at 200%.
        const qint64 count =
            qint64(540.0 / (2.0 * after.width())) * qint64(720.0 / (2.0 * after.height()));
        QCOMPARE(numberOfDigits(count + 1), qint64(3));
        const std::vector<PrintedCopy> printed =
            printedCopies(pdfWords(window.printing->printFile));
        QCOMPARE(qint64(printed.size()), count);
        QCOMPARE(printed.front().serial, QStringLiteral("001"));
        QCOMPARE(printed.back().serial, QStringLiteral("%1").arg(count, 3, 10, QLatin1Char('0')));
    }

    void aCanceledPrintDialogCountsNothing()
    {
        QSettings().setValue(QString::fromLatin1(kPrintCountKey), 4);
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(1), QStringLiteral("3"), QStringLiteral("0")));
        window.printing->printsInDialog = false;
        QCOMPARE(printAndWait(window, window.opened.window->printAction()), false);
        QCOMPARE(printCount(), qint64(4));
        QVERIFY(!QFile::exists(window.printing->printFile));
    }

    void aSuccessfulPrintCountsOne()
    {
        QSettings().setValue(QString::fromLatin1(kPrintCountKey), 4);
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(1), QStringLiteral("3"), QStringLiteral("0")));
        QCOMPARE(printAndWait(window, window.opened.window->printAction()), true);
        QCOMPARE(printCount(), qint64(5));
        QCOMPARE(printAndWait(window, window.opened.window->printFullPageAction()), true);
        QCOMPARE(printCount(), qint64(6));
    }

    void theFifthSuccessfulPrintAsksForAReview()
    {
        // The print count reaches 5 only with a print that succeeded: the window's print
        // then runs the application's review check, which opens the question.
        QSettings().setValue(QString::fromLatin1(kPrintCountKey), 4);
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(1), QStringLiteral("3"), QStringLiteral("0")));
        ReviewPrompt& prompt = ReviewPrompt::application();
        window.printing->printsInDialog = false;
        QCOMPARE(printAndWait(window, window.opened.window->printAction()), false);
        QVERIFY(!prompt.isReviewWindowShown());
        window.printing->printsInDialog = true;
        QCOMPARE(printAndWait(window, window.opened.window->printAction()), true);
        QCOMPARE(printCount(), qint64(5));
        QVERIFY(prompt.isReviewWindowShown());
        QVERIFY(prompt.reviewWindow() && prompt.reviewWindow()->isVisible());

        // Not now: the question comes again at a later count, not at the next print.
        prompt.reviewWindow()->noButton()->click();
        QVERIFY(prompt.feedbackWindow() && prompt.feedbackWindow()->isVisible());
        prompt.feedbackWindow()->notNowButton()->click();
        QVERIFY(!prompt.isReviewWindowShown());
        QCOMPARE(printAndWait(window, window.opened.window->printFullPageAction()), true);
        QCOMPARE(printCount(), qint64(6));
        QVERIFY(!prompt.isReviewWindowShown());
    }

    void spacedApartLabelsHaveLargerCells()
    {
        // The spacing item with tag 1 and a label of 100 x 50: cells of 104 x 54, each
        // copy 2 points in from its cell's corner.
        if (!popplerInstalled())
            QSKIP("poppler-utils is not installed");
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(1), QStringLiteral("7"), QStringLiteral("0"), 1));
        QCOMPARE(printAndWait(window, window.opened.window->printAction()), true);
        const std::vector<PrintedCopy> printed =
            printedCopies(pdfWords(window.printing->printFile));
        QCOMPARE(printed.size(), std::size_t(7));
        // 540 points hold five cells of 104.
        for (std::size_t copy = 0; copy < printed.size(); ++copy) {
            const int column = int(copy % 5);
            const int row = int(copy / 5);
            QVERIFY(std::abs(printed[copy].topLeft.x() - (36.0 + 2.0 + 104.0 * column)) <=
                    kPlacementTolerance);
            QVERIFY(std::abs(printed[copy].topLeft.y() - (36.0 + 2.0 + 54.0 * row)) <=
                    kPlacementTolerance);
        }
    }

    void aLabelLargerThanThePaperIsRefused()
    {
        QSettings().setValue(QString::fromLatin1(kPrintCountKey), 4);
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(540.000001, 50.0), numberedLabel(1), QStringLiteral("3"), QStringLiteral("0")));
        QSignalSpy ended(window.printer(), &PrintController::printOperationDidRun);
        QSignalSpy started(window.printer(), &PrintController::printStarted);
        window.opened.window->printAction()->trigger();
        window.opened.window->exportPdfAction()->trigger();
        window.opened.window->printPreviewAction()->trigger();
        QCOMPARE(window.opened.alerts->shown.size(), 3);
        const EditorAlert expected{
            QCoreApplication::translate("lomir::MainViewController", "Cell Size Alert Message"),
            QCoreApplication::translate("lomir::MainViewController", "Cell Size Alert Informative"),
            false};
        QCOMPARE(window.opened.alerts->shown.first(), expected);
        // The texts are the English ones, not their keys.
        QVERIFY(expected.message != QStringLiteral("Cell Size Alert Message"));
        QVERIFY(window.printing->dialogPageCounts.isEmpty());
        QCOMPARE(window.printing->exportQuestions, 0);
        QVERIFY(ended.isEmpty());
        QVERIFY(started.isEmpty());
        QCOMPARE(printCount(), qint64(4));
        QVERIFY(window.opened.window->findChildren<PrintPreviewDialog*>().isEmpty());
    }

    void aLabelAsWideAsThePrintableAreaPrints()
    {
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(540.0, 50.0), numberedLabel(1), QStringLiteral("3"), QStringLiteral("0")));
        QCOMPARE(printAndWait(window, window.opened.window->printAction()), true);
        QVERIFY(window.opened.alerts->shown.isEmpty());
        QCOMPARE(window.printing->dialogPageCounts, QList<qint64>{1});
    }

    // --- The print dialog ---

    void thePrintDialogShowsTheDocumentsPaper()
    {
        const PrintingWindow window =
            openPrinting(labelRecord(QSizeF(100.0, 50.0), numberedLabel(1), QStringLiteral("3"),
                                     QStringLiteral("0")),
                         QMarginsF(10.0, 20.0, 30.0, 40.0));
        QCOMPARE(printAndWait(window, window.opened.window->printAction()), true);
        const PaperSettings shown = paperSettings(window.printing->dialogLayouts.first());
        QCOMPARE(shown.paper, QSizeF(612.0, 792.0));
        QCOMPARE(shown.margins, QMarginsF(10.0, 20.0, 30.0, 40.0));
    }

    void aRangeOfPagesPrintsThosePages()
    {
        if (!popplerInstalled())
            QSKIP("poppler-utils is not installed");
        // 70 copies a page: 300 copies take 5 pages.
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(3), QStringLiteral("300"), QStringLiteral("0")));
        window.printing->changeInDialog = [](QPrinter& printer) {
            printer.setPrintRange(QPrinter::PageRange);
            printer.setFromTo(2, 3);
        };
        QCOMPARE(printAndWait(window, window.opened.window->printAction()), true);
        QCOMPARE(window.printing->dialogPageCounts, QList<qint64>{5});
        const QString pdf = window.printing->printFile;
        QCOMPARE(pdfInfo(pdf).pages, 2);
        const std::vector<PrintedCopy> printed = printedCopies(pdfWords(pdf));
        QCOMPARE(printed.size(), std::size_t(140));
        QCOMPARE(printed.front().serial, QStringLiteral("070"));
        QCOMPARE(printed.back().serial, QStringLiteral("209"));
    }

    void paperChosenInThePrintDialogBecomesTheDocumentsPaper()
    {
        if (!popplerInstalled())
            QSKIP("poppler-utils is not installed");
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(3), QStringLiteral("100"), QStringLiteral("0")));
        window.printing->changeInDialog = [](QPrinter& printer) {
            printer.setPageSize(QPageSize(QPageSize::A5));
        };
        QCOMPARE(printAndWait(window, window.opened.window->printAction()), true);
        const PaperSettings now = paperSettings(window.printer()->pageLayout());
        QCOMPARE(now.paper.toSize(), QSize(420, 595));
        // The margins are still the document's.
        QCOMPARE(now.margins, QMarginsF(36.0, 36.0, 36.0, 36.0));
        const QString pdf = window.printing->printFile;
        QCOMPARE(pdfInfo(pdf).pageSize.toSize(), QSize(420, 595));
        // A5 less the margins holds 3 columns and 10 rows: 100 copies take 4 pages.
        QCOMPARE(pdfInfo(pdf).pages, 4);
    }

    // --- Page Setup ---

    void pageSetupIsTheDocumentsAndNewDocumentsStartFromIt()
    {
        const PrintingWindow first = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(1), QStringLiteral("3"), QStringLiteral("0")));
        const EditorWindow openBefore = m_editors.open();
        const QPageLayout before = openBefore.window->printController()->pageLayout();

        PageSetupChoice chosen;
        chosen.layout = QPageLayout(QPageSize(QPageSize::A5), QPageLayout::Landscape,
                                    QMarginsF(5.0, 6.0, 7.0, 8.0), QPageLayout::Millimeter);
        first.printing->pageSetupAnswer = chosen;
        first.opened.window->pageSetupAction()->trigger();
        QCOMPARE(first.printing->pageSetupShown.size(), 1);
        QVERIFY(first.printer()->pageLayout().isEquivalentTo(chosen.layout));
        // A window open already keeps its own.
        QVERIFY(openBefore.window->printController()->pageLayout().isEquivalentTo(before));
        // A new document starts from the last choice, as does the next launch.
        const EditorWindow later = m_editors.open();
        QVERIFY(later.window->printController()->pageLayout().isEquivalentTo(chosen.layout));
        QVERIFY(storedPageLayout(QSettings()).isEquivalentTo(chosen.layout));
    }

    void aCanceledPageSetupChangesNothing()
    {
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(1), QStringLiteral("3"), QStringLiteral("0")));
        const QPageLayout before = window.printer()->pageLayout();
        window.opened.window->pageSetupAction()->trigger();
        QCOMPARE(window.printing->pageSetupShown.size(), 1);
        QVERIFY(window.printing->pageSetupShown.first().layout.isEquivalentTo(before));
        QVERIFY(window.printer()->pageLayout().isEquivalentTo(before));
    }

    void pageSetupStoresEachPrintersCalibration()
    {
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(1), QStringLiteral("3"), QStringLiteral("0")));
        PageSetupChoice chosen;
        chosen.layout = window.printer()->pageLayout();
        chosen.printerName = QStringLiteral("Shop/Roll");
        chosen.calibrations[QStringLiteral("Shop/Roll")] = PrinterCalibration{1.5, -2.0, 98.5};
        chosen.calibrations[QStringLiteral("Office")] = PrinterCalibration{0.0, 0.5, 100.0};
        window.printing->pageSetupAnswer = chosen;
        window.opened.window->pageSetupAction()->trigger();
        QCOMPARE(storedCalibration(QSettings(), QStringLiteral("Shop/Roll")),
                 (PrinterCalibration{1.5, -2.0, 98.5}));
        QCOMPARE(storedCalibration(QSettings(), QStringLiteral("Office")),
                 (PrinterCalibration{0.0, 0.5, 100.0}));
        QCOMPARE(storedCalibration(QSettings(), QStringLiteral("Shop")), PrinterCalibration());
        // Page Setup shows that printer's calibration the next time.
        window.opened.window->pageSetupAction()->trigger();
        const PageSetupChoice shown = window.printing->pageSetupShown.last();
        QCOMPARE(shown.printerName, QStringLiteral("Shop/Roll"));
        QCOMPARE(shown.calibration(), (PrinterCalibration{1.5, -2.0, 98.5}));
    }

    void calibrationDoesNotMoveAPdf()
    {
        // The pages go to a PDF file, not to a printer: no calibration, whatever printer
        // has one.
        if (!popplerInstalled())
            QSKIP("poppler-utils is not installed");
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(1), QStringLiteral("3"), QStringLiteral("0")));
        QSettings settings;
        storeCalibration(settings, QString(), PrinterCalibration{5.0, 5.0, 90.0});
        storeCalibration(settings, QStringLiteral("Office"), PrinterCalibration{5.0, 5.0, 90.0});
        QCOMPARE(printAndWait(window, window.opened.window->printAction()), true);
        window.printing->exportPath = m_editors.filePath(QStringLiteral("export.pdf"));
        QCOMPARE(printAndWait(window, window.opened.window->exportPdfAction()), true);
        verifyCopiesOnLetter(window.printing->printFile, 3, 0, 1);
        verifyCopiesOnLetter(window.printing->exportPath, 3, 0, 1);
    }

    void theCalibrationPagePrintsOnePageOfMarks()
    {
        if (!popplerInstalled())
            QSKIP("poppler-utils is not installed");
        QSettings().setValue(QString::fromLatin1(kPrintCountKey), 4);
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(1), QStringLiteral("3"), QStringLiteral("0")));
        QSignalSpy started(window.printer(), &PrintController::printStarted);
        window.opened.window->printCalibrationPageAction()->trigger();
        QCOMPARE(started.size(), 1);
        auto* run = started.first().first().value<PrintRun*>();
        QSignalSpy finished(run, &PrintRun::finished);
        QVERIFY(finished.wait(60000));
        QCOMPARE(finished.first().first().value<PaintOutcome>(), PaintOutcome::Finished);
        QCOMPARE(window.printing->dialogPageCounts, QList<qint64>{1});
        const QString pdf = window.printing->printFile;
        QCOMPARE(pdfInfo(pdf).pages, 1);
        QCOMPARE(pdfInfo(pdf).pageSize, QSizeF(612.0, 792.0));
        // The top ruler's numbered ticks, 10 mm apart, from 20 mm on.
        std::vector<PdfWord> ticks;
        for (const PdfWord& word : pdfWords(pdf)) {
            if (word.text == QStringLiteral("50") && word.box.top() < 72.0)
                ticks.push_back(word);
        }
        QCOMPARE(ticks.size(), std::size_t(1));
        QVERIFY(std::abs(ticks.front().box.center().x() - 50.0 * kPointsInAMillimeter) < 0.5);
        // A calibration page is not a print of labels.
        QCOMPARE(printCount(), qint64(4));
    }

    void pageSetupPrintsACalibrationPageWithTheCalibrationBeingSetUp()
    {
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(1), QStringLiteral("3"), QStringLiteral("0")));
        PageSetupChoice beingSetUp;
        beingSetUp.layout = QPageLayout(QPageSize(QPageSize::A6), QPageLayout::Portrait,
                                        QMarginsF(), QPageLayout::Millimeter);
        QSignalSpy started(window.printer(), &PrintController::printStarted);
        window.printing->duringPageSetup =
            [&](const std::function<void(const PageSetupChoice&)>& printCalibrationPage) {
                printCalibrationPage(beingSetUp);
            };
        window.opened.window->pageSetupAction()->trigger();
        QCOMPARE(started.size(), 1);
        auto* run = started.first().first().value<PrintRun*>();
        QSignalSpy finished(run, &PrintRun::finished);
        QVERIFY(finished.wait(60000));
        // The page is on the paper being set up; the document's paper has not changed.
        QCOMPARE(paperSettings(window.printing->dialogLayouts.first()).paper.toSize(),
                 QSize(298, 420));
        QCOMPARE(paperSettings(window.printer()->pageLayout()).paper, QSizeF(612.0, 792.0));
        // A6, in the whole points Qt gives a PDF page.
        if (popplerInstalled())
            QCOMPARE(pdfInfo(window.printing->printFile).pageSize, QSizeF(297.0, 420.0));
    }

    // --- Paper the size of a label ---

    void aRollOfLabelSizedPaperPrintsOneLabelAPage()
    {
        if (!popplerInstalled())
            QSKIP("poppler-utils is not installed");
        const QSizeF label(62.0 * kPointsInAMillimeter, 29.0 * kPointsInAMillimeter);
        const PrintingWindow window = openPrinting(
            labelRecord(label, numberedLabel(1), QStringLiteral("5"), QStringLiteral("1")));
        PageSetupChoice roll;
        roll.layout = QPageLayout(
            QPageSize(QSizeF(62.0, 29.0), QPageSize::Millimeter, QString(), QPageSize::ExactMatch),
            QPageLayout::Portrait, QMarginsF(), QPageLayout::Millimeter);
        window.printing->pageSetupAnswer = roll;
        window.opened.window->pageSetupAction()->trigger();
        QCOMPARE(printAndWait(window, window.opened.window->printAction()), true);
        QVERIFY(window.opened.alerts->shown.isEmpty());
        const QString pdf = window.printing->printFile;
        QCOMPARE(pdfInfo(pdf).pages, 5);
        // Qt gives a PDF page whole points; the labels are placed from its top-left corner.
        QVERIFY(std::abs(pdfInfo(pdf).pageSize.width() - label.width()) <= 0.5);
        QVERIFY(std::abs(pdfInfo(pdf).pageSize.height() - label.height()) <= 0.5);
        const std::vector<PrintedCopy> printed = printedCopies(pdfWords(pdf));
        QCOMPARE(printed.size(), std::size_t(5));
        for (int copy = 0; copy < 5; ++copy) {
            QCOMPARE(printed[copy].page, copy + 1);
            QCOMPARE(printed[copy].serial, QString::number(copy + 1));
            QVERIFY(std::abs(printed[copy].topLeft.x()) <= kPlacementTolerance);
            QVERIFY(std::abs(printed[copy].topLeft.y()) <= kPlacementTolerance);
        }
    }

    // --- Export as PDF ---

    void exportAsPdfNeedsNoPrinter()
    {
        if (!popplerInstalled())
            QSKIP("poppler-utils is not installed");
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(2), QStringLiteral("12"), QStringLiteral("0")));
        window.printing->exportPath = m_editors.filePath(QStringLiteral("labels.pdf"));
        QCOMPARE(printAndWait(window, window.opened.window->exportPdfAction()), true);
        // The document's name, with ".pdf" in place of its own extension.
        const QString suggested = QFileInfo(window.printing->exportSuggested).fileName();
        QCOMPARE(suggested,
                 QFileInfo(window.opened.window->document()->displayName()).completeBaseName() +
                     QStringLiteral(".pdf"));
        QVERIFY(window.printing->dialogPageCounts.isEmpty());
        QCOMPARE(printCount(), qint64(1));
        verifyCopiesOnLetter(window.printing->exportPath, 12, 0, 2);
    }

    void aCanceledExportDialogWritesNothing()
    {
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(2), QStringLiteral("12"), QStringLiteral("0")));
        window.printing->exportPath.clear();
        QCOMPARE(printAndWait(window, window.opened.window->exportPdfAction()), false);
        QCOMPARE(window.printing->exportQuestions, 1);
        QCOMPARE(printCount(), qint64(0));
    }

    void anExportThatCannotBeWrittenIsReported()
    {
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(2), QStringLiteral("12"), QStringLiteral("0")));
        window.printing->exportPath =
            m_editors.filePath(QStringLiteral("no-such-folder/labels.pdf"));
        QCOMPARE(printAndWait(window, window.opened.window->exportPdfAction()), false);
        QCOMPARE(window.printing->errors.size(), 1);
        QVERIFY(window.printing->errors.first().contains(QStringLiteral("labels.pdf")));
        QCOMPARE(printCount(), qint64(0));
    }

    // --- Long prints ---

    void aLongPrintShowsItsProgressAndCanBeCanceled()
    {
        QSettings().setValue(QString::fromLatin1(kPrintCountKey), 4);
        // Labels of 20 x 10 points: 27 x 72 to a page; 400 pages.
        const qint64 quantity = 27 * 72 * 400;
        const PrintingWindow window =
            openPrinting(labelRecord(QSizeF(20.0, 10.0), RichText(placeholderUnits(6), arial(4.0)),
                                     QString::number(quantity), QStringLiteral("0")));
        window.printing->exportPath = m_editors.filePath(QStringLiteral("long.pdf"));
        QFile::remove(window.printing->exportPath);
        QSignalSpy started(window.printer(), &PrintController::printStarted);
        QSignalSpy ended(window.printer(), &PrintController::printOperationDidRun);
        window.opened.window->exportPdfAction()->trigger();
        QCOMPARE(started.size(), 1);
        auto* run = started.first().first().value<PrintRun*>();
        QCOMPARE(run->pageCount(), qint64(400));
        QSignalSpy pages(run, &PrintRun::pagePainted);
        QSignalSpy finished(run, &PrintRun::finished);

        auto* progress = window.opened.window->findChild<QProgressDialog*>();
        QVERIFY(progress);
        QVERIFY(progress->isVisible());
        QCOMPARE(progress->maximum(), 400);
        QVERIFY(pages.wait(60000));
        QTRY_VERIFY(progress->value() >= 1);

        // The window answers while the pages are painted: the label takes typing.
        QVERIFY(run->isRunning());
        window.opened.window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.opened.window));
        typeIntoLabel(window.opened, QStringLiteral("Z"));
        QVERIFY(window.opened.text().endsWith(QStringLiteral("Z")));
        QVERIFY(run->isRunning());

        auto* cancel = progress->findChild<QPushButton*>();
        QVERIFY(cancel);
        QTest::mouseClick(cancel, Qt::LeftButton);
        const qint64 paintedWhenCanceled = run->pagesPainted();
        QVERIFY(finished.wait(60000));
        QCOMPARE(finished.first().first().value<PaintOutcome>(), PaintOutcome::Canceled);
        // Cancelling stops once the page being painted is done.
        QVERIFY2(run->pagesPainted() <= paintedWhenCanceled + 1,
                 qPrintable(QStringLiteral("%1 pages when cancelled, %2 at the end")
                                .arg(paintedWhenCanceled)
                                .arg(run->pagesPainted())));
        QVERIFY(run->pagesPainted() < 400);
        QTRY_COMPARE(ended.size(), 1);
        QCOMPARE(ended.first().first().toBool(), false);
        QCOMPARE(printCount(), qint64(4));
        QVERIFY(!QFile::exists(window.printing->exportPath));
        QTRY_VERIFY(window.opened.window->findChildren<QProgressDialog*>().isEmpty());
    }

    void aShortPrintShowsNoProgress()
    {
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(3), QString::number(70 * 3), QStringLiteral("0")));
        QSignalSpy started(window.printer(), &PrintController::printStarted);
        QCOMPARE(printAndWait(window, window.opened.window->printAction()), true);
        QCOMPARE(started.first().first().value<PrintRun*>()->pageCount(), qint64(3));
        QVERIFY(window.opened.window->findChildren<QProgressDialog*>().isEmpty());
    }

    void aPrintGoesOnWhenItsWindowCloses()
    {
        if (!popplerInstalled())
            QSKIP("poppler-utils is not installed");
        QSettings().setValue(QString::fromLatin1(kPrintCountKey), 4);
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(3), QString::number(70 * 20), QStringLiteral("0")));
        QSignalSpy started(window.printer(), &PrintController::printStarted);
        window.opened.window->printAction()->trigger();
        QCOMPARE(started.size(), 1);
        QPointer<PrintRun> run = started.first().first().value<PrintRun*>();
        QSignalSpy finished(run.data(), &PrintRun::finished);
        // The window takes its print controller and the scripted dialogs with it.
        const QString pdf = window.printing->printFile;
        delete window.opened.window;
        if (finished.isEmpty())
            QVERIFY(finished.wait(60000));
        QCOMPARE(finished.first().first().value<PaintOutcome>(), PaintOutcome::Finished);
        QCOMPARE(printCount(), qint64(5));
        QCOMPARE(pdfInfo(pdf).pages, 20);
        QTRY_VERIFY(run.isNull());
    }

    // --- Preview ---

    void thePreviewPaintsThePagesInViewThroughThePagePainter()
    {
        // 70 copies a page: 7000 copies take 100 pages.
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(4), QStringLiteral("7000"), QStringLiteral("0")));
        QSignalSpy shown(window.printer(), &PrintController::previewShown);
        window.opened.window->printPreviewAction()->trigger();
        QCOMPARE(shown.size(), 1);
        auto* preview = shown.first().first().value<PrintPreviewDialog*>();
        QVERIFY(QTest::qWaitForWindowExposed(preview));
        PrintPreviewView* pages = preview->pages();
        QCOMPARE(pages->pageCount(), qint64(100));
        QCOMPARE(preview->pageNumberBox()->maximum(), 100);
        // Only what is in view is painted.
        QTRY_VERIFY(pages->pagesPainted() > 0);
        QVERIFY2(pages->pagesPainted() <= 4, qPrintable(QString::number(pages->pagesPainted())));

        // The first sheet shows what paintPage paints, at the preview's scale.
        const QImage viewport = pages->viewport()->grab().toImage().convertToFormat(
            QImage::Format_ARGB32_Premultiplied);
        const double scale = pages->pixelsPerPoint() * viewport.devicePixelRatio();
        const QSize sheet = (QSizeF(612.0, 792.0) * scale).toSize();
        const int left =
            std::max(PrintPreviewView::kPageGap,
                     int((pages->viewport()->width() - 612.0 * pages->pixelsPerPoint()) / 2.0));
        const QRect visible =
            QRect(QPoint(left, PrintPreviewView::kPageGap), sheet).intersected(viewport.rect());
        QImage expected(sheet, QImage::Format_ARGB32_Premultiplied);
        expected.fill(Qt::white);
        {
            const PrintPlan plan =
                planForLabel(QSizeF(612.0, 792.0), QMarginsF(36.0, 36.0, 36.0, 36.0),
                             QSizeF(100.0, 50.0), 0.0, 7000, 0, numberedLabel(4));
            const auto view = makeTilingTextView(plan);
            QPainter painter(&expected);
            painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
            painter.scale(scale, scale);
            paintPage(painter, *view, plan.margins, 0);
        }
        const QImage shownPart = viewport.copy(visible);
        const QImage expectedPart = expected.copy(QRect(QPoint(0, 0), visible.size()));
        QVERIFY(inkShare(shownPart) > 0.01);
        const double share = differingShare(shownPart, expectedPart);
        QVERIFY2(share < 0.001, qPrintable(QString::number(share)));

        // Going to a page far down paints that page, not those before it.
        const qint64 before = pages->pagesPainted();
        preview->pageNumberBox()->setValue(80);
        QCOMPARE(pages->currentPage(), qint64(79));
        QTRY_VERIFY(pages->pagesPainted() > before);
        QVERIFY(pages->pagesPainted() - before <= 4);
    }

    void printingFromThePreviewPrintsWhatItShows()
    {
        const PrintingWindow window = openPrinting(labelRecord(
            QSizeF(100.0, 50.0), numberedLabel(3), QStringLiteral("150"), QStringLiteral("0")));
        QSignalSpy shown(window.printer(), &PrintController::previewShown);
        window.opened.window->printPreviewAction()->trigger();
        auto* preview = shown.first().first().value<PrintPreviewDialog*>();
        QSignalSpy ended(window.printer(), &PrintController::printOperationDidRun);
        preview->printAction()->trigger();
        QVERIFY(ended.wait(60000));
        QCOMPARE(window.printing->dialogPageCounts, QList<qint64>{3});
        QCOMPARE(printCount(), qint64(1));
    }

    // --- The label on paper ---

    void thePrintedLabelLooksAsTheEditorShowsIt()
    {
        // The editor's label and the first copy printed into a PDF, rendered at the same
        // scale, agree pixel for pixel but for the smoothing of the letters' edges.
        if (QStandardPaths::findExecutable(QStringLiteral("pdftoppm")).isEmpty())
            QSKIP("poppler-utils is not installed");
        const QSizeF label(90.0, 40.0);
        const PrintingWindow window = openPrinting(
            labelRecord(label, wrappingLabel(), QStringLiteral("1"), QStringLiteral("0"), 1));
        window.printing->exportPath = m_editors.filePath(QStringLiteral("label.pdf"));
        QCOMPARE(printAndWait(window, window.opened.window->exportPdfAction()), true);

        const QImage shown = editorImage(*window.opened.labelContainer());
        // The copy stands 36 points in, and half the spacing more.
        const QPoint corner((QPointF(38.0, 38.0) * kComparisonScale).toPoint());
        const QSize size = shown.size();
        QProcess pdftoppm;
        const QString prefix = m_editors.filePath(QStringLiteral("label"));
        pdftoppm.start(QStringLiteral("pdftoppm"),
                       {QStringLiteral("-r"), QString::number(72.0 * kComparisonScale),
                        QStringLiteral("-x"), QString::number(corner.x()), QStringLiteral("-y"),
                        QString::number(corner.y()), QStringLiteral("-W"),
                        QString::number(size.width()), QStringLiteral("-H"),
                        QString::number(size.height()), QStringLiteral("-png"),
                        QStringLiteral("-singlefile"), window.printing->exportPath, prefix});
        QVERIFY(pdftoppm.waitForFinished(60000));
        const QImage printed = QImage(prefix + QStringLiteral(".png"))
                                   .convertToFormat(QImage::Format_ARGB32_Premultiplied);
        QCOMPARE(printed.size(), size);
        QVERIFY(inkShare(shown) > 0.02);
        QVERIFY(inkShare(printed) > 0.02);
        // poppler and Qt smooth the letters' edges differently: about 2% of the pixels
        // differ. The same copy moved by an eighth of a point differs in over 5%.
        const double share = differingShare(shown, printed);
        QVERIFY2(share < 0.035, qPrintable(QStringLiteral("%1 of the pixels differ").arg(share)));
    }
};

} // namespace

QTEST_MAIN(TestDocumentPrinting)
#include "tst_documentprinting.moc"
