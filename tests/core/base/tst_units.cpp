#include "core/base/units.h"

#include <QTest>
#include <bit>
#include <cstdint>

using namespace lomir;

class MetricTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void factorsHaveTheirExactBits()
    {
        QCOMPARE(std::bit_cast<std::uint64_t>(kPointToMillimetersConversionFactor),
                 std::uint64_t(0x3FD693E93E93E93F));
        QCOMPARE(std::bit_cast<std::uint64_t>(kPointToInchesConversionFactor),
                 std::uint64_t(0x3F8C71C71C71C71C));
        // The stored millimetre factor is deliberately not the computed quotient.
        QVERIFY(kPointToMillimetersConversionFactor != 25.4 / 72.0);
        QCOMPARE(std::bit_cast<std::uint64_t>(25.4 / 72.0), std::uint64_t(0x3FD693E93E93E93E));
    }

    void rawValues_data()
    {
        QTest::addColumn<qint64>("raw");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<int>("expected");
        QTest::newRow("millimetres") << qint64(0) << true << 0;
        QTest::newRow("inches") << qint64(1) << true << 1;
        QTest::newRow("two") << qint64(2) << false << -1;
        QTest::newRow("negative") << qint64(-1) << false << -1;
    }

    void rawValues()
    {
        QFETCH(qint64, raw);
        QFETCH(bool, valid);
        QFETCH(int, expected);
        const std::optional<Metric> metric = metricFromRawValue(raw);
        QCOMPARE(metric.has_value(), valid);
        if (valid)
            QCOMPARE(int(*metric), expected);
    }

    void factorOfEachUnit()
    {
        QCOMPARE(conversionFactor(Metric::millimetres), kPointToMillimetersConversionFactor);
        QCOMPARE(conversionFactor(Metric::inches), kPointToInchesConversionFactor);
        QCOMPARE(72.0 * conversionFactor(Metric::inches), 1.0);
    }
};

QTEST_GUILESS_MAIN(MetricTest)
#include "tst_units.moc"
