#include "core/label/labelsize.h"

#include <QLocale>
#include <QTest>
#include <cstring>

using namespace lomir;

class TestLabelSize : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void forcedFontSize_data()
    {
        QTest::addColumn<qint64>("tag");
        QTest::addColumn<bool>("forces");
        QTest::addColumn<double>("pointSize");
        QTest::addColumn<bool>("custom");

        QTest::newRow("custom") << qint64(1) << false << 0.0 << true;
        QTest::newRow("tag 4: 9 pt") << qint64(4) << true << 9.0 << false;
        QTest::newRow("tag 5: 7 pt") << qint64(5) << true << 7.0 << false;
        QTest::newRow("tag 6: 4 pt") << qint64(6) << true << 4.0 << false;
        QTest::newRow("tag 7: 8 pt") << qint64(7) << true << 8.0 << false;
        QTest::newRow("tag 0 follows the text") << qint64(0) << false << 0.0 << false;
        QTest::newRow("tag 2") << qint64(2) << false << 0.0 << false;
        QTest::newRow("tag 3") << qint64(3) << false << 0.0 << false;
        QTest::newRow("tag 8") << qint64(8) << false << 0.0 << false;
        QTest::newRow("negative tag") << qint64(-1) << false << 0.0 << false;
    }

    void forcedFontSize()
    {
        QFETCH(qint64, tag);
        QFETCH(bool, forces);
        QFETCH(double, pointSize);
        QFETCH(bool, custom);

        const std::optional<double> size = lomir::forcedFontSize(tag);
        QCOMPARE(size.has_value(), forces);
        if (forces)
            QCOMPARE(*size, pointSize);
        QCOMPARE(isCustomSize(tag), custom);
    }

    void sizeReadout_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("height");
        QTest::addColumn<int>("metric");
        QTest::addColumn<QString>("shownWidth");
        QTest::addColumn<QString>("shownHeight");
        QTest::addColumn<QString>("unitKey");

        const QString mm = QStringLiteral("Millimeters Shorthand");
        const QString in = QStringLiteral("Inches Shorthand");
        const int millimetres = int(Metric::millimetres);
        const int inches = int(Metric::inches);
        QTest::newRow("72 and 36 pt in mm")
            << 72.0 << 36.0 << millimetres << QStringLiteral("25.40") << QStringLiteral("12.70")
            << mm;
        QTest::newRow("72 and 36 pt in inches")
            << 72.0 << 36.0 << inches << QStringLiteral("1.00") << QStringLiteral("0.50") << in;
        // Rounded up, not to the nearest hundredth.
        QTest::newRow("100 pt in mm") << 100.0 << 100.0 << millimetres << QStringLiteral("35.28")
                                      << QStringLiteral("35.28") << mm;
        QTest::newRow("100 pt in inches")
            << 100.0 << 100.0 << inches << QStringLiteral("1.39") << QStringLiteral("1.39") << in;
        // 100 mm typed in becomes a number of points a hair above 100 mm.
        QTest::newRow("100 mm typed in")
            << 283.46456692913387 << 72.0 << millimetres << QStringLiteral("100.01")
            << QStringLiteral("25.40") << mm;
        QTest::newRow("zero") << 0.0 << 0.0 << inches << QStringLiteral("0.00")
                              << QStringLiteral("0.00") << in;
        QTest::newRow("small label in mm")
            << 5.5 << 4.6 << millimetres << QStringLiteral("1.95") << QStringLiteral("1.63") << mm;
    }

    void sizeReadout()
    {
        QFETCH(double, width);
        QFETCH(double, height);
        QFETCH(int, metric);
        QFETCH(QString, shownWidth);
        QFETCH(QString, shownHeight);
        QFETCH(QString, unitKey);

        const SizeReadout readout = lomir::sizeReadout(width, height, Metric(metric));
        QCOMPARE(readout.width, shownWidth);
        QCOMPARE(readout.height, shownHeight);
        QCOMPARE(QString::fromLatin1(readout.unitKey), unitKey);
        QCOMPARE(QString::fromLatin1(unitShorthandKey(Metric(metric))), unitKey);
    }

    void readoutIgnoresTheLocale()
    {
        // Decimal commas are not used in the read-out; the fields parse "." everywhere.
        const QLocale saved;
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        const SizeReadout readout = lomir::sizeReadout(100.0, 36.0, Metric::millimetres);
        QLocale::setDefault(saved);
        QCOMPARE(readout.width, QStringLiteral("35.28"));
        QCOMPARE(readout.height, QStringLiteral("12.70"));
    }

    void readoutsCompareByContent()
    {
        // Equal keys that live at different addresses still make equal read-outs.
        const char* key = unitShorthandKey(Metric::inches);
        const QByteArray copy(key);
        const SizeReadout a{QStringLiteral("1.00"), QStringLiteral("0.50"), key};
        const SizeReadout b{QStringLiteral("1.00"), QStringLiteral("0.50"), copy.constData()};
        QVERIFY(a == b);
        QVERIFY(!(a == SizeReadout{QStringLiteral("1.00"), QStringLiteral("0.50"),
                                   unitShorthandKey(Metric::millimetres)}));
        QVERIFY(!(a == SizeReadout{QStringLiteral("1.00"), QStringLiteral("0.51"), key}));
    }

    void unitShorthandWithoutTranslation()
    {
        // No translation is installed in the test, so the key comes back as it is.
        QCOMPARE(unitShorthand(Metric::inches), QStringLiteral("Inches Shorthand"));
        QCOMPARE(unitShorthand(Metric::millimetres), QStringLiteral("Millimeters Shorthand"));
    }

    void sizeLabelText()
    {
        const SizeReadout readout = lomir::sizeReadout(72.0, 36.0, Metric::millimetres);
        QCOMPARE(lomir::sizeLabelText(readout, QStringLiteral("mm")),
                 QStringLiteral("25.40 x 12.70 mm"));
        const SizeReadout inches = lomir::sizeReadout(100.0, 72.0, Metric::inches);
        QCOMPARE(lomir::sizeLabelText(inches, QStringLiteral("in")),
                 QStringLiteral("1.39 x 1.00 in"));
    }

    void customInputToPoints_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("metric");
        QTest::addColumn<bool>("readable");
        QTest::addColumn<double>("points");

        const int millimetres = int(Metric::millimetres);
        const int inches = int(Metric::inches);
        QTest::newRow("100 mm") << QStringLiteral("100") << millimetres << true
                                << 283.46456692913387;
        QTest::newRow("1 inch") << QStringLiteral("1") << inches << true << 72.0;
        QTest::newRow("2.50 inches") << QStringLiteral("2.50") << inches << true << 180.0;
        QTest::newRow("stored default 2.0 mm")
            << QStringLiteral("2.0") << millimetres << true << 2.0 / 0.3527777777777778;
        QTest::newRow("12 mm") << QStringLiteral("12") << millimetres << true
                               << 12.0 / 0.3527777777777778;
        QTest::newRow("fraction without digits before")
            << QStringLiteral(".5") << inches << true << 36.0;
        QTest::newRow("point at the end") << QStringLiteral("3.") << inches << true << 216.0;
        QTest::newRow("empty") << QString() << inches << false << 0.0;
        QTest::newRow("lone point") << QStringLiteral(".") << inches << false << 0.0;
        QTest::newRow("decimal comma") << QStringLiteral("2,5") << inches << false << 0.0;
        QTest::newRow("letters") << QStringLiteral("abc") << inches << false << 0.0;
        QTest::newRow("infinity") << QStringLiteral("inf") << inches << false << 0.0;
        QTest::newRow("too large to be finite")
            << QStringLiteral("1") + QString(400, QLatin1Char('0')) << inches << false << 0.0;
    }

    void customInputToPoints()
    {
        QFETCH(QString, text);
        QFETCH(int, metric);
        QFETCH(bool, readable);
        QFETCH(double, points);

        const std::optional<double> result = lomir::customInputToPoints(text, Metric(metric));
        QCOMPARE(result.has_value(), readable);
        if (readable)
            QCOMPARE(*result, points);
    }

    void customInputIgnoresTheLocale()
    {
        const QLocale saved;
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        const std::optional<double> points =
            lomir::customInputToPoints(QStringLiteral("2.5"), Metric::inches);
        const std::optional<double> comma =
            lomir::customInputToPoints(QStringLiteral("2,5"), Metric::inches);
        QLocale::setDefault(saved);
        QVERIFY(points.has_value());
        QCOMPARE(*points, 180.0);
        QVERIFY(!comma.has_value());
    }

    void hundredMillimetersShowAsHundredPointOhOne()
    {
        // Typed in and shown again, a round size comes back a hundredth larger: the stored
        // factor times the points is a hair above 100.
        const std::optional<double> points =
            lomir::customInputToPoints(QStringLiteral("100"), Metric::millimetres);
        QVERIFY(points.has_value());
        QCOMPARE(lomir::sizeReadout(*points, *points, Metric::millimetres).width,
                 QStringLiteral("100.01"));
    }

    void sameSizeToTwoDecimals_data()
    {
        QTest::addColumn<QSizeF>("a");
        QTest::addColumn<QSizeF>("b");
        QTest::addColumn<bool>("same");

        QTest::newRow("equal") << QSizeF(100.0, 50.0) << QSizeF(100.0, 50.0) << true;
        QTest::newRow("differ in the third decimal")
            << QSizeF(100.001, 50.0) << QSizeF(100.004, 50.0) << true;
        QTest::newRow("third decimal rounds the second")
            << QSizeF(100.004, 50.0) << QSizeF(100.006, 50.0) << false;
        QTest::newRow("width differs") << QSizeF(100.01, 50.0) << QSizeF(100.0, 50.0) << false;
        QTest::newRow("height differs") << QSizeF(100.0, 50.0) << QSizeF(100.0, 50.02) << false;
        QTest::newRow("width and height swapped")
            << QSizeF(100.0, 50.0) << QSizeF(50.0, 100.0) << false;
    }

    void sameSizeToTwoDecimals()
    {
        QFETCH(QSizeF, a);
        QFETCH(QSizeF, b);
        QFETCH(bool, same);
        QCOMPARE(isSameSizeToTwoDecimals(a, b), same);
        QCOMPARE(isSameSizeToTwoDecimals(b, a), same);
    }
};

QTEST_GUILESS_MAIN(TestLabelSize)
#include "tst_labelsize.moc"
