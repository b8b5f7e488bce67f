#include "core/app/fontpanelsizes.h"

#include <QTest>

using namespace lomir;

class TestFontPanelSizes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sizeList()
    {
        const QStringList expected{
            QStringLiteral("1"),  QStringLiteral("2"),  QStringLiteral("3"),  QStringLiteral("4"),
            QStringLiteral("5"),  QStringLiteral("6"),  QStringLiteral("7"),  QStringLiteral("8"),
            QStringLiteral("9"),  QStringLiteral("10"), QStringLiteral("11"), QStringLiteral("12"),
            QStringLiteral("13"), QStringLiteral("14"), QStringLiteral("18"), QStringLiteral("24"),
            QStringLiteral("36"), QStringLiteral("48")};
        QCOMPARE(fontPanelSizeList(), expected);
        QCOMPARE(fontPanelSizeList().size(), qsizetype(18));
        QCOMPARE(QString::fromLatin1(kFontPanelSizeListKey), QStringLiteral("NSFontPanelSizeList"));
    }
};

QTEST_GUILESS_MAIN(TestFontPanelSizes)
#include "tst_fontpanelsizes.moc"
