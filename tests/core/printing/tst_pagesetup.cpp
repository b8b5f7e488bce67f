#include "core/printing/calibration.h"
#include "core/printing/pagesetup.h"
#include "core/printing/paper.h"

#include <QCoreApplication>
#include <QPageSize>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>
#include <limits>
#include <memory>

Q_DECLARE_METATYPE(lomir::PrinterCalibration)

using namespace lomir;

namespace {

constexpr double kPointsInAMillimeter = 72.0 / 25.4;

class TestPageSetup : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    // Settings of the test's own, empty.
    std::unique_ptr<QSettings> freshSettings()
    {
        static int made = 0;
        auto settings = std::make_unique<QSettings>(
            m_folder.filePath(QStringLiteral("settings%1.ini").arg(++made)), QSettings::IniFormat);
        return settings;
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }

    void theDefaultPaperFollowsTheLocale()
    {
        // The window's default and the command line's are one: half-inch margins.
        const QPageLayout us = defaultPageLayout(QLocale(QLocale::English, QLocale::UnitedStates));
        QCOMPARE(us.pageSize().id(), QPageSize::Letter);
        QCOMPARE(paperSettings(us).margins, QMarginsF(36.0, 36.0, 36.0, 36.0));
        QCOMPARE(us.orientation(), QPageLayout::Portrait);
        QCOMPARE(defaultPageLayout(QLocale(QLocale::German, QLocale::Germany)).pageSize().id(),
                 QPageSize::A4);
        QCOMPARE(
            defaultPageLayout(QLocale(QLocale::English, QLocale::UnitedKingdom)).pageSize().id(),
            QPageSize::A4);
    }

    void nothingStoredGivesTheDefault()
    {
        const auto settings = freshSettings();
        QVERIFY(storedPageLayout(*settings).isEquivalentTo(defaultPageLayout(paperLocale())));
    }

    void aStoredLayoutComesBackExactly_data()
    {
        QTest::addColumn<QPageLayout>("layout");
        QTest::newRow("A5 landscape in millimetres")
            << QPageLayout(QPageSize(QPageSize::A5), QPageLayout::Landscape,
                           QMarginsF(5.0, 6.5, 7.0, 8.25), QPageLayout::Millimeter);
        QTest::newRow("Letter in points")
            << QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Portrait,
                           QMarginsF(18.3, 20.7, 18.4, 20.6), QPageLayout::Point);
        QTest::newRow("a roll's label-sized paper") << QPageLayout(
            QPageSize(QSizeF(62.0, 29.0), QPageSize::Millimeter, QString(), QPageSize::ExactMatch),
            QPageLayout::Portrait, QMarginsF(), QPageLayout::Millimeter);
        QTest::newRow("inches") << QPageLayout(
            QPageSize(QSizeF(4.0, 6.0), QPageSize::Inch, QString(), QPageSize::ExactMatch),
            QPageLayout::Landscape, QMarginsF(0.125, 0.25, 0.125, 0.25), QPageLayout::Inch);
    }

    void aStoredLayoutComesBackExactly()
    {
        QFETCH(QPageLayout, layout);
        const auto settings = freshSettings();
        storePageLayout(*settings, layout);
        const QPageLayout stored = storedPageLayout(*settings);
        QVERIFY(stored.isEquivalentTo(layout));
        QCOMPARE(stored.pageSize().id(), layout.pageSize().id());
        // Exact to the unit it was given in, not to Qt's whole points.
        QCOMPARE(paperSettings(stored), paperSettings(layout));
    }

    void aRollsPaperIsTheLabelsSize()
    {
        const auto settings = freshSettings();
        storePageLayout(*settings,
                        QPageLayout(QPageSize(QSizeF(62.0, 29.0), QPageSize::Millimeter, QString(),
                                              QPageSize::ExactMatch),
                                    QPageLayout::Portrait, QMarginsF(), QPageLayout::Millimeter));
        const QSizeF paper = paperSettings(storedPageLayout(*settings)).paper;
        QCOMPARE(paper.width(), 62.0 * kPointsInAMillimeter);
        QCOMPARE(paper.height(), 29.0 * kPointsInAMillimeter);
    }

    void unusableStoredValuesGiveTheDefault_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("value");
        QTest::newRow("width not a number") << "paperWidth" << QVariant(QStringLiteral("wide"));
        QTest::newRow("zero height") << "paperHeight" << QVariant(0.0);
        QTest::newRow("unknown unit") << "paperUnit" << QVariant(17);
        QTest::newRow("three margins") << "margins" << QVariant(QVariantList{1.0, 2.0, 3.0});
        QTest::newRow("negative margin")
            << "margins" << QVariant(QVariantList{1.0, -2.0, 3.0, 4.0});
        QTest::newRow("margins wider than the paper")
            << "margins" << QVariant(QVariantList{400.0, 2.0, 400.0, 4.0});
        QTest::newRow("sideways") << "orientation" << QVariant(QStringLiteral("sideways"));
    }

    void unusableStoredValuesGiveTheDefault()
    {
        QFETCH(QString, key);
        QFETCH(QVariant, value);
        const auto settings = freshSettings();
        storePageLayout(*settings,
                        QPageLayout(QPageSize(QPageSize::A5), QPageLayout::Landscape,
                                    QMarginsF(10.0, 10.0, 10.0, 10.0), QPageLayout::Point));
        settings->setValue(QStringLiteral("PageSetup/") + key, value);
        QVERIFY(storedPageLayout(*settings).isEquivalentTo(defaultPageLayout(paperLocale())));
    }

    void calibrationRanges_data()
    {
        QTest::addColumn<PrinterCalibration>("calibration");
        QTest::addColumn<bool>("valid");
        QTest::newRow("none") << PrinterCalibration() << true;
        QTest::newRow("at the limits") << PrinterCalibration{-50.0, 50.0, 50.0} << true;
        QTest::newRow("other limits") << PrinterCalibration{50.0, -50.0, 200.0} << true;
        QTest::newRow("too far right") << PrinterCalibration{50.01, 0.0, 100.0} << false;
        QTest::newRow("too far up") << PrinterCalibration{0.0, -50.01, 100.0} << false;
        QTest::newRow("too small") << PrinterCalibration{0.0, 0.0, 49.99} << false;
        QTest::newRow("too large") << PrinterCalibration{0.0, 0.0, 200.01} << false;
        QTest::newRow("not a number")
            << PrinterCalibration{std::numeric_limits<double>::quiet_NaN(), 0.0, 100.0} << false;
    }

    void calibrationRanges()
    {
        QFETCH(PrinterCalibration, calibration);
        QFETCH(bool, valid);
        QCOMPARE(isValidCalibration(calibration), valid);
    }

    void eachPrinterKeepsItsCalibration()
    {
        const auto settings = freshSettings();
        QCOMPARE(storedCalibration(*settings, QStringLiteral("Office")), PrinterCalibration());
        storeCalibration(*settings, QStringLiteral("Office"), PrinterCalibration{1.5, -0.5, 99.0});
        storeCalibration(*settings, QStringLiteral("Shop/Roll 62"),
                         PrinterCalibration{-2.0, 3.0, 101.5});
        QCOMPARE(storedCalibration(*settings, QStringLiteral("Office")),
                 (PrinterCalibration{1.5, -0.5, 99.0}));
        QCOMPARE(storedCalibration(*settings, QStringLiteral("Shop/Roll 62")),
                 (PrinterCalibration{-2.0, 3.0, 101.5}));
        // A slash in a name is part of the name, not a group of settings.
        QCOMPARE(storedCalibration(*settings, QStringLiteral("Shop")), PrinterCalibration());
        // Kept across launches: another settings object on the same file reads it.
        settings->sync();
        const QSettings again(settings->fileName(), QSettings::IniFormat);
        QCOMPARE(storedCalibration(again, QStringLiteral("Shop/Roll 62")),
                 (PrinterCalibration{-2.0, 3.0, 101.5}));
    }

    void aCalibrationThatChangesNothingIsRemoved()
    {
        const auto settings = freshSettings();
        storeCalibration(*settings, QStringLiteral("Office"), PrinterCalibration{1.0, 1.0, 100.0});
        storeCalibration(*settings, QStringLiteral("Office"), PrinterCalibration());
        QVERIFY(settings->allKeys().isEmpty());
    }

    void anUnusableStoredCalibrationIsNone()
    {
        const auto settings = freshSettings();
        storeCalibration(*settings, QStringLiteral("Office"), PrinterCalibration{1.0, 1.0, 100.0});
        settings->setValue(QStringLiteral("PrinterCalibration/Office/scalePercent"), 0.0);
        QCOMPARE(storedCalibration(*settings, QStringLiteral("Office")), PrinterCalibration());
        settings->setValue(QStringLiteral("PrinterCalibration/Office/scalePercent"),
                           QStringLiteral("big"));
        // A value that does not read is left at its default; the others stand.
        QCOMPARE(storedCalibration(*settings, QStringLiteral("Office")),
                 (PrinterCalibration{1.0, 1.0, 100.0}));
    }
};

} // namespace

QTEST_GUILESS_MAIN(TestPageSetup)
#include "tst_pagesetup.moc"
