#include "core/layout/serialnumber.h"
#include "core/layout/sheetgeometry.h"
#include "core/layout/tilingtextview.h"
#include "core/printing/calibrationpage.h"
#include "core/printing/pageloop.h"
#include "core/printing/paper.h"
#include "core/printing/printplan.h"
#include "support/fatalstop.h"
#include "support/printedpdf.h"
#include "support/samplelabels.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <cmath>
#include <cstring>

Q_DECLARE_METATYPE(lomir::PaintOutcome)
Q_DECLARE_METATYPE(lomir::PrinterCalibration)

using namespace lomir;
using namespace lomir::testing;

namespace {

// Text must land this close to where the geometry puts it, in points.
constexpr double kPlacementTolerance = 0.005;
// Written out here rather than taken from the code under test.
constexpr double kPointsInAMillimeter = 72.0 / 25.4;

const QSizeF kLabel(100.0, 50.0);

QPageLayout letterWithHalfInchMargins()
{
    return QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Portrait,
                       QMarginsF(36.0, 36.0, 36.0, 36.0), QPageLayout::Point);
}

// A plan for the print settings' paper and margins.
PrintPlan planOn(const QPageLayout& printSettings, const QSizeF& label, double spacing,
                 qint64 quantity, qint64 serialStart)
{
    const PaperSettings settings = paperSettings(printSettings);
    return planForLabel(settings.paper, settings.margins, label, spacing, quantity, serialStart,
                        numberedLabel(int(serialDigitCount(quantity, serialStart))));
}

// Prints a plan to a PDF file the way every print goes: the view made from the plan,
// the writer's page the whole paper, the pages painted one by one.
PaintOutcome printToPdf(const PrintPlan& plan, const QPageLayout& printSettings,
                        const QString& path, const PagePainting& options = {})
{
    const auto view = makeTilingTextView(plan);
    QPdfWriter writer(path);
    if (!writer.setPageLayout(fullPaperLayout(printSettings)))
        return PaintOutcome::DeviceFailed;
    QPainter painter(&writer);
    const PaintOutcome outcome = paintPages(painter, writer, *view, plan.margins, options);
    painter.end();
    return outcome;
}

// The ink-weighted middle of the dark pixels of a row (or a column) between from and to.
double inkCenter(const QImage& image, bool alongRow, int line, int from, int to)
{
    double weight = 0.0;
    double sum = 0.0;
    for (int i = std::max(from, 0); i <= to; ++i) {
        const int x = alongRow ? i : line;
        const int y = alongRow ? line : i;
        if (x >= image.width() || y >= image.height())
            break;
        const double ink = 255.0 - qGray(image.pixel(x, y));
        weight += ink;
        sum += ink * (double(i) + 0.5);
    }
    return weight > 0.0 ? sum / weight : -1.0;
}

int runFatalCase(const char* name)
{
    QTemporaryDir directory;
    const PrintPlan plan = planOn(letterWithHalfInchMargins(), kLabel, 0.0, 100, 1);
    PagePainting options;
    if (std::strcmp(name, "rangePastTheEnd") == 0)
        options.pages = PageRange{1, 2};
    else if (std::strcmp(name, "negativeFirstPage") == 0)
        options.pages = PageRange{-1, 1};
    else if (std::strcmp(name, "negativeCount") == 0)
        options.pages = PageRange{1, -1};
    else if (std::strcmp(name, "harmless") == 0)
        options.pages = PageRange{1, 1};
    else
        return 2;
    (void)printToPdf(plan, letterWithHalfInchMargins(),
                     directory.filePath(QStringLiteral("range.pdf")), options);
    return 0;
}

} // namespace

class TestPrintJob : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void paperSettings_data()
    {
        QTest::addColumn<QPageLayout>("layout");
        QTest::addColumn<QSizeF>("paper");
        QTest::addColumn<QMarginsF>("margins");

        const double mm = kPointsInAMillimeter;
        QTest::newRow("A4 in millimetres")
            << QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait,
                           QMarginsF(10.0, 12.5, 10.0, 12.5), QPageLayout::Millimeter)
            << QSizeF(210.0 * mm, 297.0 * mm)
            << QMarginsF(10.0 * mm, 12.5 * mm, 10.0 * mm, 12.5 * mm);
        QTest::newRow("Letter in points") << letterWithHalfInchMargins() << QSizeF(612.0, 792.0)
                                          << QMarginsF(36.0, 36.0, 36.0, 36.0);
        QTest::newRow("Letter landscape, fractional points")
            << QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Landscape,
                           QMarginsF(18.3, 20.7, 18.4, 20.6), QPageLayout::Point)
            << QSizeF(792.0, 612.0) << QMarginsF(18.3, 20.7, 18.4, 20.6);
        QTest::newRow("label roll 62 x 29 mm")
            << QPageLayout(QPageSize(QSizeF(62.0, 29.0), QPageSize::Millimeter, QString(),
                                     QPageSize::ExactMatch),
                           QPageLayout::Portrait, QMarginsF(), QPageLayout::Millimeter)
            << QSizeF(62.0 * mm, 29.0 * mm) << QMarginsF();
        QTest::newRow("inches") << QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Portrait,
                                               QMarginsF(0.25, 0.5, 0.25, 0.5), QPageLayout::Inch)
                                << QSizeF(612.0, 792.0) << QMarginsF(18.0, 36.0, 18.0, 36.0);
    }

    void paperSettings()
    {
        QFETCH(QPageLayout, layout);
        QFETCH(QSizeF, paper);
        QFETCH(QMarginsF, margins);
        const PaperSettings settings = lomir::paperSettings(layout);
        // Exact to the last bits a conversion from the unit leaves, not to whole points.
        QVERIFY2(std::abs(settings.paper.width() - paper.width()) < 1e-9 &&
                     std::abs(settings.paper.height() - paper.height()) < 1e-9,
                 qPrintable(QStringLiteral("%1 x %2")
                                .arg(settings.paper.width(), 0, 'f', 6)
                                .arg(settings.paper.height(), 0, 'f', 6)));
        QVERIFY(std::abs(settings.margins.left() - margins.left()) < 1e-9);
        QVERIFY(std::abs(settings.margins.top() - margins.top()) < 1e-9);
        QVERIFY(std::abs(settings.margins.right() - margins.right()) < 1e-9);
        QVERIFY(std::abs(settings.margins.bottom() - margins.bottom()) < 1e-9);
    }

    void fullPaperLayoutKeepsThePaper()
    {
        const QPageLayout settings(QPageSize(QPageSize::A4), QPageLayout::Landscape,
                                   QMarginsF(10.0, 12.0, 10.0, 12.0), QPageLayout::Millimeter);
        const QPageLayout full = fullPaperLayout(settings);
        QCOMPARE(full.pageSize().id(), QPageSize::A4);
        QCOMPARE(full.orientation(), QPageLayout::Landscape);
        QCOMPARE(full.mode(), QPageLayout::FullPageMode);
        QCOMPARE(full.margins(), QMarginsF());
        QCOMPARE(lomir::paperSettings(full).paper, lomir::paperSettings(settings).paper);

        // Paper given in points keeps its fractions.
        const QPageLayout roll = fullPaperLayout(QSizeF(175.75, 82.2));
        QCOMPARE(roll.mode(), QPageLayout::FullPageMode);
        QCOMPARE(roll.margins(), QMarginsF());
        QCOMPARE(lomir::paperSettings(roll).paper, QSizeF(175.75, 82.2));
    }

    void calibrationTransform_data()
    {
        QTest::addColumn<double>("horizontal");
        QTest::addColumn<double>("vertical");
        QTest::addColumn<double>("scale");
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<QPointF>("mapped");

        const double mm = kPointsInAMillimeter;
        QTest::newRow("none") << 0.0 << 0.0 << 100.0 << QPointF(36.0, 500.0)
                              << QPointF(36.0, 500.0);
        QTest::newRow("1 mm right")
            << 1.0 << 0.0 << 100.0 << QPointF(36.0, 500.0) << QPointF(36.0 + mm, 500.0);
        QTest::newRow("1.5 mm left, 2 mm down") << -1.5 << 2.0 << 100.0 << QPointF(36.0, 500.0)
                                                << QPointF(36.0 - 1.5 * mm, 500.0 + 2.0 * mm);
        QTest::newRow("98% about the corner")
            << 0.0 << 0.0 << 98.0 << QPointF(100.0, 500.0) << QPointF(98.0, 490.0);
        QTest::newRow("the corner stays under scaling")
            << 0.0 << 0.0 << 101.5 << QPointF(0.0, 0.0) << QPointF(0.0, 0.0);
        QTest::newRow("scaled, then moved") << 2.0 << -1.0 << 102.0 << QPointF(100.0, 200.0)
                                            << QPointF(2.0 * mm + 102.0, -1.0 * mm + 204.0);
    }

    void calibrationTransform()
    {
        QFETCH(double, horizontal);
        QFETCH(double, vertical);
        QFETCH(double, scale);
        QFETCH(QPointF, point);
        QFETCH(QPointF, mapped);
        const QTransform transform =
            lomir::calibrationTransform(PrinterCalibration{horizontal, vertical, scale});
        const QPointF result = transform.map(point);
        QVERIFY2(std::abs(result.x() - mapped.x()) < 1e-9 &&
                     std::abs(result.y() - mapped.y()) < 1e-9,
                 qPrintable(QStringLiteral("(%1, %2)").arg(result.x()).arg(result.y())));
    }

    void paperToDeviceScalesPointsToPixels()
    {
        QTemporaryDir directory;
        QPdfWriter writer(directory.filePath(QStringLiteral("scale.pdf")));
        writer.setResolution(300);
        QCOMPARE(paperToDevice(writer).map(QPointF(72.0, 36.0)), QPointF(300.0, 150.0));
        // The calibration acts in points, before the device's scale.
        const QPointF moved =
            paperToDevice(writer, PrinterCalibration{25.4, 0.0, 50.0}).map(QPointF(72.0, 36.0));
        QVERIFY(std::abs(moved.x() - (72.0 + 36.0) * 300.0 / 72.0) < 1e-9);
        QVERIFY(std::abs(moved.y() - 18.0 * 300.0 / 72.0) < 1e-9);
    }

    void pdfPlacesEveryCopy_data()
    {
        QTest::addColumn<QPageLayout>("printSettings");
        QTest::addColumn<QSizeF>("label");
        QTest::addColumn<double>("spacing");
        QTest::addColumn<qint64>("quantity");
        QTest::addColumn<qint64>("serialStart");
        QTest::addColumn<int>("pages");

        const QPageLayout roll(
            QPageSize(QSizeF(62.0, 29.0), QPageSize::Millimeter, QString(), QPageSize::ExactMatch),
            QPageLayout::Portrait, QMarginsF(), QPageLayout::Millimeter);
        const QSizeF rollLabel(62.0 * kPointsInAMillimeter, 29.0 * kPointsInAMillimeter);

        QTest::newRow("Letter, half-inch margins, 100 from 1: 70 and 30")
            << letterWithHalfInchMargins() << kLabel << 0.0 << qint64(100) << qint64(1) << 2;
        QTest::newRow("Letter, spaced")
            << letterWithHalfInchMargins() << kLabel << 4.0 << qint64(80) << qint64(0) << 2;
        QTest::newRow("A4, margins in millimetres, spaced, 995 on")
            << QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait,
                           QMarginsF(12.7, 10.0, 12.7, 10.0), QPageLayout::Millimeter)
            << QSizeF(120.0, 40.0) << 4.0 << qint64(100) << qint64(995) << 2;
        QTest::newRow("A4, no spacing, fractional label")
            << QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait,
                           QMarginsF(6.35, 8.47, 6.35, 8.47), QPageLayout::Millimeter)
            << QSizeF(96.37, 33.9) << 0.0 << qint64(250) << qint64(7) << 3;
        QTest::newRow("Letter landscape, margins Qt would round")
            << QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Landscape,
                           QMarginsF(18.3, 20.7, 18.4, 20.6), QPageLayout::Point)
            << kLabel << 0.0 << qint64(30) << qint64(1) << 1;
        QTest::newRow("label roll: one label a page")
            << roll << rollLabel << 0.0 << qint64(5) << qint64(1) << 5;
        QTest::newRow("label roll, spaced: one label a page")
            << roll << rollLabel - QSizeF(4.0, 4.0) << 4.0 << qint64(3) << qint64(8) << 3;
    }

    void pdfPlacesEveryCopy()
    {
        if (!popplerInstalled())
            QSKIP("pdftotext and pdfinfo (poppler-utils) are needed to read the PDF back");
        QFETCH(QPageLayout, printSettings);
        QFETCH(QSizeF, label);
        QFETCH(double, spacing);
        QFETCH(qint64, quantity);
        QFETCH(qint64, serialStart);
        QFETCH(int, pages);

        const PrintPlan plan = planOn(printSettings, label, spacing, quantity, serialStart);
        QVERIFY(planFits(plan));
        QTemporaryDir directory;
        const QString pdf = directory.filePath(QStringLiteral("labels.pdf"));
        QCOMPARE(printToPdf(plan, printSettings, pdf), PaintOutcome::Finished);

        const PdfInfo info = pdfInfo(pdf);
        QCOMPARE(info.pages, pages);
        // Qt writes the paper in whole points.
        QVERIFY2(
            std::abs(info.pageSize.width() - plan.paper.width()) <= 0.5 &&
                std::abs(info.pageSize.height() - plan.paper.height()) <= 0.5,
            qPrintable(
                QStringLiteral("%1 x %2").arg(info.pageSize.width()).arg(info.pageSize.height())));

        const auto view = makeTilingTextView(plan);
        const double error =
            compareCopies(printedCopies(pdfWords(pdf)), expectedCopies(plan, *view));
        QVERIFY(error >= 0.0);
        qInfo("largest distance from the geometry: %.6f pt", error);
        QVERIFY2(error <= kPlacementTolerance, qPrintable(QString::number(error, 'f', 6)));
    }

    void calibrationMovesThePrint()
    {
        if (!popplerInstalled())
            QSKIP("pdftotext and pdfinfo (poppler-utils) are needed to read the PDF back");
        const PrintPlan plan = planOn(letterWithHalfInchMargins(), kLabel, 4.0, 24, 1);
        const PrinterCalibration calibration{1.5, -0.8, 98.0};
        QTemporaryDir directory;
        const QString pdf = directory.filePath(QStringLiteral("calibrated.pdf"));
        PagePainting options;
        options.calibration = calibration;
        QCOMPARE(printToPdf(plan, letterWithHalfInchMargins(), pdf, options),
                 PaintOutcome::Finished);

        // Every copy scaled to 98% about the paper's corner, then 1.5 mm right and 0.8 mm
        // up, written out here.
        QTransform expected;
        expected.translate(1.5 * kPointsInAMillimeter, -0.8 * kPointsInAMillimeter);
        expected.scale(0.98, 0.98);
        const auto view = makeTilingTextView(plan);
        const double error =
            compareCopies(printedCopies(pdfWords(pdf)), expectedCopies(plan, *view, expected));
        QVERIFY(error >= 0.0);
        QVERIFY2(error <= kPlacementTolerance, qPrintable(QString::number(error, 'f', 6)));
    }

    void rangeOfPages()
    {
        if (!popplerInstalled())
            QSKIP("pdftotext and pdfinfo (poppler-utils) are needed to read the PDF back");
        // 350 labels, 5 pages; the preview asks for the third and fourth.
        const PrintPlan plan = planOn(letterWithHalfInchMargins(), kLabel, 0.0, 350, 1);
        QTemporaryDir directory;
        const QString pdf = directory.filePath(QStringLiteral("range.pdf"));
        PagePainting options;
        options.pages = PageRange{2, 2};
        QCOMPARE(printToPdf(plan, letterWithHalfInchMargins(), pdf, options),
                 PaintOutcome::Finished);
        QCOMPARE(pdfInfo(pdf).pages, 2);
        const auto view = makeTilingTextView(plan);
        std::vector<ExpectedCopy> expected = expectedCopies(plan, *view, QTransform(), 2);
        expected.resize(140);
        const std::vector<PrintedCopy> printed = printedCopies(pdfWords(pdf));
        QCOMPARE(printed.front().serial, QStringLiteral("141"));
        QCOMPARE(printed.back().serial, QStringLiteral("280"));
        const double error = compareCopies(printed, expected);
        QVERIFY(error >= 0.0 && error <= kPlacementTolerance);
    }

    void progressAndCancel_data()
    {
        QTest::addColumn<int>("cancelAfter"); // 0: never
        QTest::addColumn<PaintOutcome>("outcome");
        QTest::addColumn<int>("pagesPrinted");
        QTest::newRow("to the end") << 0 << PaintOutcome::Finished << 5;
        QTest::newRow("cancelled after the second page") << 2 << PaintOutcome::Canceled << 2;
        QTest::newRow("cancelled after the first page") << 1 << PaintOutcome::Canceled << 1;
        QTest::newRow("cancel with the last page: all printed") << 5 << PaintOutcome::Finished << 5;
    }

    void progressAndCancel()
    {
        QFETCH(int, cancelAfter);
        QFETCH(PaintOutcome, outcome);
        QFETCH(int, pagesPrinted);
        const PrintPlan plan = planOn(letterWithHalfInchMargins(), kLabel, 0.0, 350, 1);
        QTemporaryDir directory;
        const QString pdf = directory.filePath(QStringLiteral("progress.pdf"));
        std::vector<std::pair<qint64, qint64>> calls;
        PagePainting options;
        options.progress = [&](qint64 painted, qint64 count) {
            calls.emplace_back(painted, count);
            return painted != cancelAfter;
        };
        QCOMPARE(printToPdf(plan, letterWithHalfInchMargins(), pdf, options), outcome);
        QCOMPARE(calls.size(), std::size_t(pagesPrinted));
        for (int call = 0; call < pagesPrinted; ++call)
            QCOMPARE(calls[std::size_t(call)], std::make_pair(qint64(call + 1), qint64(5)));
        if (popplerInstalled())
            QCOMPARE(pdfInfo(pdf).pages, pagesPrinted);
    }

    void pagesReachTheFileAsTheyArePainted()
    {
        // 40 pages: each page is handed to the writer as it is painted, so the file grows
        // during the print instead of at its end, and nothing piles up in memory.
        const PrintPlan plan = planOn(letterWithHalfInchMargins(), kLabel, 0.0, 2800, 1);
        QTemporaryDir directory;
        const QString pdf = directory.filePath(QStringLiteral("stream.pdf"));
        std::vector<qint64> sizes;
        PagePainting options;
        options.progress = [&](qint64, qint64) {
            sizes.push_back(QFileInfo(pdf).size());
            return true;
        };
        QCOMPARE(printToPdf(plan, letterWithHalfInchMargins(), pdf, options),
                 PaintOutcome::Finished);
        QCOMPARE(sizes.size(), std::size_t(40));
        QVERIFY(std::is_sorted(sizes.begin(), sizes.end()));
        QVERIFY2(
            sizes[20] > sizes[2] && sizes[39] > sizes[20],
            qPrintable(
                QStringLiteral("%1, %2, %3 bytes").arg(sizes[2]).arg(sizes[20]).arg(sizes[39])));
        QVERIFY(QFileInfo(pdf).size() > sizes.back());
    }

    void rangeOutsideThePrintStops_data()
    {
        QTest::addColumn<QString>("caseName");
        QTest::newRow("past the end") << QStringLiteral("rangePastTheEnd");
        QTest::newRow("negative first page") << QStringLiteral("negativeFirstPage");
        QTest::newRow("negative count") << QStringLiteral("negativeCount");
    }

    void rangeOutsideThePrintStops()
    {
        QFETCH(QString, caseName);
        lomir::testing::verifyStops(caseName,
                                    QStringLiteral("The pages to paint lie outside the print"));
    }

    void harmlessRangeRunsToEnd() { lomir::testing::verifyRunsToEnd(QStringLiteral("harmless")); }

    void calibrationMarks_data()
    {
        QTest::addColumn<QSizeF>("paper");
        QTest::addColumn<int>("insetX");
        QTest::addColumn<int>("insetY");
        QTest::addColumn<int>("middleX");
        QTest::addColumn<int>("middleY");
        QTest::addColumn<int>("lastHorizontalTick");
        QTest::addColumn<int>("lastVerticalTick");

        const double mm = kPointsInAMillimeter;
        QTest::newRow("A4") << QSizeF(210.0 * mm, 297.0 * mm) << 10 << 10 << 105 << 148 << 200
                            << 287;
        // 215.9 x 279.4 mm: the right crosshair at 205.9 mm, the last whole tick before it.
        QTest::newRow("Letter") << QSizeF(612.0, 792.0) << 10 << 10 << 107 << 139 << 205 << 269;
        QTest::newRow("label roll 62 x 29 mm")
            << QSizeF(62.0 * mm, 29.0 * mm) << 10 << 7 << 31 << 14 << 52 << 22;
    }

    void calibrationMarks()
    {
        QFETCH(QSizeF, paper);
        QFETCH(int, insetX);
        QFETCH(int, insetY);
        QFETCH(int, middleX);
        QFETCH(int, middleY);
        QFETCH(int, lastHorizontalTick);
        QFETCH(int, lastVerticalTick);

        const double mm = kPointsInAMillimeter;
        const CalibrationMarks marks = lomir::calibrationMarks(paper);
        QCOMPARE(marks.insetX, insetX * mm);
        QCOMPARE(marks.insetY, insetY * mm);
        const double right = paper.width() - insetX * mm;
        const double bottom = paper.height() - insetY * mm;
        const std::vector<QPointF> crosshairs = {{insetX * mm, insetY * mm},
                                                 {right, insetY * mm},
                                                 {insetX * mm, bottom},
                                                 {right, bottom},
                                                 {middleX * mm, middleY * mm}};
        QCOMPARE(marks.crosshairs, crosshairs);
        QVERIFY(marks.crosshairArm > 0.0 && marks.crosshairArm <= 5.0 * mm);

        QCOMPARE(marks.horizontalTicks.front().millimeters, insetX);
        QCOMPARE(marks.horizontalTicks.back().millimeters, lastHorizontalTick);
        QCOMPARE(int(marks.horizontalTicks.size()), lastHorizontalTick - insetX + 1);
        QCOMPARE(marks.verticalTicks.front().millimeters, insetY);
        QCOMPARE(marks.verticalTicks.back().millimeters, lastVerticalTick);
        for (const RulerTick& tick : marks.horizontalTicks) {
            QCOMPARE(tick.line.x1(), tick.millimeters * mm);
            QCOMPARE(tick.line.x2(), tick.millimeters * mm);
            QCOMPARE(tick.line.y1(), insetY * mm);
            QVERIFY(tick.line.y2() > tick.line.y1());
            QCOMPARE(tick.label,
                     tick.millimeters % 10 == 0 ? QString::number(tick.millimeters) : QString());
        }
        for (const RulerTick& tick : marks.verticalTicks) {
            QCOMPARE(tick.line.y1(), tick.millimeters * mm);
            QCOMPARE(tick.line.x1(), insetX * mm);
            QVERIFY(tick.line.x2() > tick.line.x1());
        }
    }

    void calibrationPageCrosshairsOnTheImage_data()
    {
        QTest::addColumn<PrinterCalibration>("calibration");
        QTest::newRow("as it is") << PrinterCalibration{};
        QTest::newRow("calibrated") << PrinterCalibration{2.0, -1.0, 99.0};
    }

    void calibrationPageCrosshairsOnTheImage()
    {
        // The page drawn at 4 pixels a point: each crosshair's lines cross where the marks
        // say, moved by the calibration.
        QFETCH(PrinterCalibration, calibration);
        const QSizeF paper(612.0, 792.0);
        const double scale = 4.0;
        QImage image(int(paper.width() * scale), int(paper.height() * scale),
                     QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        {
            QPainter painter(&image);
            painter.setWorldTransform(lomir::calibrationTransform(calibration) *
                                      QTransform::fromScale(scale, scale));
            paintCalibrationPage(painter, paper);
        }
        const CalibrationMarks marks = lomir::calibrationMarks(paper);
        const QTransform toImage =
            lomir::calibrationTransform(calibration) * QTransform::fromScale(scale, scale);
        const double armPixels = marks.crosshairArm * scale * calibration.scalePercent / 100.0;
        for (const QPointF& center : marks.crosshairs) {
            const QPointF expected = toImage.map(center);
            // Across the vertical line below the circle, and across the horizontal line
            // left of it, half-way between two ruler ticks: only the one line is there.
            const int below = int(expected.y() + armPixels * 0.7);
            const int left = int(expected.x() - armPixels * 0.7);
            const double x =
                inkCenter(image, true, below, int(expected.x()) - 8, int(expected.x()) + 8);
            const double y =
                inkCenter(image, false, left, int(expected.y()) - 8, int(expected.y()) + 8);
            QVERIFY2(std::abs(x - expected.x()) < 0.1 && std::abs(y - expected.y()) < 0.1,
                     qPrintable(QStringLiteral("crosshair at (%1, %2) pixels, expected (%3, %4)")
                                    .arg(x)
                                    .arg(y)
                                    .arg(expected.x())
                                    .arg(expected.y())));
        }
    }

    void calibrationPageRulerNumbersInThePdf()
    {
        if (!popplerInstalled())
            QSKIP("pdftotext and pdfinfo (poppler-utils) are needed to read the PDF back");
        const QPageLayout a4(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(),
                             QPageLayout::Point);
        const QSizeF paper = lomir::paperSettings(a4).paper;
        QTemporaryDir directory;
        const QString pdf = directory.filePath(QStringLiteral("calibration.pdf"));
        {
            QPdfWriter writer(pdf);
            QVERIFY(writer.setPageLayout(fullPaperLayout(a4)));
            QPainter painter(&writer);
            painter.setWorldTransform(paperToDevice(writer));
            paintCalibrationPage(painter, paper, QStringLiteral("Measure from the paper's edges."));
        }
        QCOMPARE(pdfInfo(pdf).pages, 1);
        const std::vector<PdfWord> words = pdfWords(pdf);
        const CalibrationMarks marks = lomir::calibrationMarks(paper);
        const double mm = kPointsInAMillimeter;

        // The top ruler's numbers are centred on their ticks, hung 1 point below the long
        // ticks; the left ruler's stand 1 point right of theirs, centred on them.
        const double topNumbersAt = marks.insetY + 2.5 * mm + 1.0;
        const double leftNumbersAt = marks.insetX + 2.5 * mm + 1.0;
        int top = 0;
        int left = 0;
        double largest = 0.0;
        for (const PdfWord& word : words) {
            bool isNumber = false;
            const int millimeters = word.text.toInt(&isNumber);
            if (!isNumber)
                continue;
            if (std::abs(word.box.top() - topNumbersAt) < 0.5) {
                ++top;
                largest = std::max({largest, std::abs(word.box.center().x() - millimeters * mm),
                                    std::abs(word.box.top() - topNumbersAt)});
            } else if (std::abs(word.box.left() - leftNumbersAt) < 0.5) {
                ++left;
                largest = std::max({largest, std::abs(word.box.center().y() - millimeters * mm),
                                    std::abs(word.box.left() - leftNumbersAt)});
            }
        }
        // 20 to 200 along the top, 20 to 280 down the side.
        QCOMPARE(top, 19);
        QCOMPARE(left, 27);
        qInfo("ruler numbers lie within %.6f pt of their ticks", largest);
        QVERIFY2(largest <= kPlacementTolerance, qPrintable(QString::number(largest, 'f', 6)));
        QVERIFY(std::any_of(words.begin(), words.end(), [](const PdfWord& word) {
            return word.text == QStringLiteral("Measure");
        }));
    }
};

LOMIR_TEST_MAIN_WITH_FATAL_CASES(QGuiApplication, TestPrintJob)

#include "tst_pageloop.moc"
