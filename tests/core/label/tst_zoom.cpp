#include "core/label/zoom.h"

#include <QTest>

using namespace lomir;

class TestZoom : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void zoom_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<double>("magnification");
        QTest::addColumn<QString>("caption");

        QTest::newRow("149.5: half rounds up") << 149.5 << 1.5 << QStringLiteral("Zoom (150%)");
        QTest::newRow("149.4 rounds down") << 149.4 << 1.49 << QStringLiteral("Zoom (149%)");
        QTest::newRow("100") << 100.0 << 1.0 << QStringLiteral("Zoom (100%)");
        QTest::newRow("stored default 500") << 500.0 << 5.0 << QStringLiteral("Zoom (500%)");
        QTest::newRow("0.5 rounds away from zero") << 0.5 << 0.01 << QStringLiteral("Zoom (1%)");
        QTest::newRow("just below a half") << 24.499999 << 0.24 << QStringLiteral("Zoom (24%)");
        QTest::newRow("zero") << 0.0 << 0.0 << QStringLiteral("Zoom (0%)");
        QTest::newRow("just below zero shows no sign")
            << -0.4 << 0.0 << QStringLiteral("Zoom (0%)");
        QTest::newRow("-2.5 rounds away from zero")
            << -2.5 << -0.03 << QStringLiteral("Zoom (-3%)");
    }

    void zoom()
    {
        QFETCH(double, value);
        QFETCH(double, magnification);
        QFETCH(QString, caption);

        QCOMPARE(magnificationForZoom(value), magnification);
        QCOMPARE(zoomCaption(QStringLiteral("Zoom"), value), caption);
    }

    void captionTakesTheTranslatedWord()
    {
        QCOMPARE(zoomCaption(QStringLiteral("Zoomen"), 149.5), QStringLiteral("Zoomen (150%)"));
    }

    void percentIsWhole()
    {
        QCOMPARE(zoomPercent(149.5), 150.0);
        QCOMPARE(zoomPercent(150.49), 150.0);
        QCOMPARE(zoomPercent(-0.5), -1.0);
    }
};

QTEST_GUILESS_MAIN(TestZoom)
#include "tst_zoom.moc"
