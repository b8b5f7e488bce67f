#include "core/printing/exportname.h"

#include <QTest>

using namespace lomir;

class TestExportName : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pdfFileName_data()
    {
        QTest::addColumn<QString>("documentName");
        QTest::addColumn<QString>("expected");
        QTest::newRow("own type") << QStringLiteral("label1.lomir") << QStringLiteral("label1.pdf");
        QTest::newRow("plain text") << QStringLiteral("jar.txt") << QStringLiteral("jar.pdf");
        QTest::newRow("RTF in capitals") << QStringLiteral("JAR.RTF") << QStringLiteral("JAR.pdf");
        QTest::newRow("untitled") << QStringLiteral("Untitled 2")
                                  << QStringLiteral("Untitled 2.pdf");
        QTest::newRow("other dots stay")
            << QStringLiteral("Plum 1.5 kg") << QStringLiteral("Plum 1.5 kg.pdf");
        QTest::newRow("only one extension goes")
            << QStringLiteral("old.txt.lomir") << QStringLiteral("old.txt.pdf");
        QTest::newRow("a name that is only the extension")
            << QStringLiteral(".lomir") << QStringLiteral(".lomir.pdf");
    }

    void pdfFileName()
    {
        QFETCH(QString, documentName);
        QFETCH(QString, expected);
        QCOMPARE(lomir::pdfFileName(documentName), expected);
    }
};

QTEST_GUILESS_MAIN(TestExportName)
#include "tst_exportname.moc"
