#include "core/label/appearance.h"

#include <QTest>
#include <cmath>

using namespace lomir;

class TestAppearance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void darkAppearance_data()
    {
        QTest::addColumn<std::optional<QString>>("style");
        QTest::addColumn<bool>("paletteIsDark");
        QTest::addColumn<bool>("dark");

        const std::optional<QString> absent;
        QTest::newRow("Dark setting, light palette")
            << std::optional<QString>(QStringLiteral("Dark")) << false << true;
        QTest::newRow("Dark setting, dark palette")
            << std::optional<QString>(QStringLiteral("Dark")) << true << true;
        QTest::newRow("Light setting overrides a dark palette")
            << std::optional<QString>(QStringLiteral("Light")) << true << false;
        QTest::newRow("compared exactly: lower case is not dark")
            << std::optional<QString>(QStringLiteral("dark")) << true << false;
        QTest::newRow("compared exactly: blank after is not dark")
            << std::optional<QString>(QStringLiteral("Dark ")) << false << false;
        QTest::newRow("empty setting is light")
            << std::optional<QString>(QString()) << true << false;
        QTest::newRow("no setting, dark palette") << absent << true << true;
        QTest::newRow("no setting, light palette") << absent << false << false;
    }

    void darkAppearance()
    {
        QFETCH(std::optional<QString>, style);
        QFETCH(bool, paletteIsDark);
        QFETCH(bool, dark);
        QCOMPARE(isDarkAppearance(style, paletteIsDark), dark);
    }

    void shadowColor()
    {
        QCOMPARE(labelShadowColor(true), QColor(0, 0, 0));
        const QColor gray = labelShadowColor(false);
        QCOMPARE(gray.alphaF(), 1.0f);
        // Half gray, to the 16 bits a colour keeps per channel.
        for (float channel : {gray.redF(), gray.greenF(), gray.blueF()})
            QVERIFY2(std::abs(channel - 0.5f) < 1e-4f, qPrintable(QString::number(channel)));
    }

    void constants()
    {
        QCOMPARE(kLabelShadowOpacity, 0.5f);
        QCOMPARE(kLabelShadowOffset, QPointF(-0.5, 1.5));
        QCOMPARE(kLabelShadowRadius, 1.0);
        QCOMPARE(QString::fromLatin1(kAppearanceStyleKey), QStringLiteral("AppleInterfaceStyle"));
    }
};

QTEST_GUILESS_MAIN(TestAppearance)
#include "tst_appearance.moc"
