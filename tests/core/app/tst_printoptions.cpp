#include "core/app/printoptions.h"
#include "core/base/errors.h"

#include <QTest>
#include <cmath>

Q_DECLARE_METATYPE(lomir::PrintCommandOptions)

using namespace lomir;

namespace {

// Paper sizes in points, written out here rather than taken from the code under test.
const QSizeF kA4(210.0 * 72.0 / 25.4, 297.0 * 72.0 / 25.4);
const QSizeF kLetter(612.0, 792.0);

bool sameSize(const QSizeF& a, const QSizeF& b)
{
    return std::abs(a.width() - b.width()) < 1e-9 && std::abs(a.height() - b.height()) < 1e-9;
}

QStringList words(const char* text)
{
    return QString::fromUtf8(text).split(u' ', Qt::SkipEmptyParts);
}

} // namespace

class TestPrintOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void paperSizes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QSizeF>("points");
        QTest::newRow("A4") << QStringLiteral("A4") << kA4;
        QTest::newRow("a4 in lower case") << QStringLiteral("a4") << kA4;
        QTest::newRow("Letter") << QStringLiteral("Letter") << kLetter;
        QTest::newRow("LETTER") << QStringLiteral("LETTER") << kLetter;
        QTest::newRow("A5") << QStringLiteral("A5")
                            << QSizeF(148.0 * 72.0 / 25.4, 210.0 * 72.0 / 25.4);
        QTest::newRow("legal") << QStringLiteral("legal") << QSizeF(612.0, 1008.0);
        QTest::newRow("millimetres")
            << QStringLiteral("100x150mm") << QSizeF(100.0 * 72.0 / 25.4, 150.0 * 72.0 / 25.4);
        QTest::newRow("inches") << QStringLiteral("4x6in") << QSizeF(288.0, 432.0);
        QTest::newRow("points") << QStringLiteral("288x432pt") << QSizeF(288.0, 432.0);
        QTest::newRow("fractions, upper-case unit")
            << QStringLiteral("62.5x29MM") << QSizeF(62.5 * 72.0 / 25.4, 29.0 * 72.0 / 25.4);
        QTest::newRow("wider than high stays so")
            << QStringLiteral("6x4in") << QSizeF(432.0, 288.0);
    }

    void paperSizes()
    {
        QFETCH(QString, text);
        QFETCH(QSizeF, points);
        const Result<QSizeF> paper = paperSizeFromText(text);
        QVERIFY2(paper.ok(), qPrintable(text));
        QVERIFY2(sameSize(*paper, points),
                 qPrintable(QStringLiteral("%1 x %2").arg(paper->width()).arg(paper->height())));
    }

    void unknownPapers_data()
    {
        QTest::addColumn<QString>("text");
        for (const char* text :
             {"", "A99", "Letterhead", "100x150", "100x150cm", "x150mm", "100x0mm", "0x0pt",
              "-100x150mm", "100x150x20mm", "4,5x6in", "1e3x2e3pt", "infxinfpt"})
            QTest::newRow(text) << QString::fromUtf8(text);
    }

    void unknownPapers()
    {
        QFETCH(QString, text);
        const Result<QSizeF> paper = paperSizeFromText(text);
        QVERIFY(!paper.ok());
        QCOMPARE(paper.error().domain, QString(kUsageErrorDomain));
        QCOMPARE(paper.error().code, 2);
        // One sentence that names what was given.
        QVERIFY(paper.error().message.contains(QStringLiteral("“%1”").arg(text)));
        QVERIFY(paper.error().message.endsWith(u'.'));
    }

    void margins_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<QMarginsF>("margins");
        QTest::newRow("half inch")
            << QStringLiteral("36,36,36,36") << true << QMarginsF(36, 36, 36, 36);
        QTest::newRow("order is left, top, right, bottom")
            << QStringLiteral("1,2,3,4") << true << QMarginsF(1, 2, 3, 4);
        QTest::newRow("none") << QStringLiteral("0,0,0,0") << true << QMarginsF();
        QTest::newRow("fractions and spaces")
            << QStringLiteral("18.5, 9.25 ,0.5,72") << true << QMarginsF(18.5, 9.25, 0.5, 72);
        QTest::newRow("three") << QStringLiteral("1,2,3") << false << QMarginsF();
        QTest::newRow("five") << QStringLiteral("1,2,3,4,5") << false << QMarginsF();
        QTest::newRow("negative") << QStringLiteral("-1,2,3,4") << false << QMarginsF();
        QTest::newRow("a word") << QStringLiteral("1,two,3,4") << false << QMarginsF();
        QTest::newRow("empty part") << QStringLiteral("1,,3,4") << false << QMarginsF();
        QTest::newRow("empty") << QString() << false << QMarginsF();
        QTest::newRow("with a unit") << QStringLiteral("1mm,2,3,4") << false << QMarginsF();
    }

    void margins()
    {
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QFETCH(QMarginsF, margins);
        const Result<QMarginsF> parsed = marginsFromText(text);
        QCOMPARE(parsed.ok(), valid);
        if (valid)
            QCOMPARE(*parsed, margins);
        else
            QVERIFY(parsed.error().message.contains(QStringLiteral("“%1”").arg(text)));
    }

    void localePaper_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QSizeF>("paper");
        QTest::newRow("en_US") << QStringLiteral("en_US") << kLetter;
        QTest::newRow("en_CA") << QStringLiteral("en_CA") << kLetter;
        QTest::newRow("fr_CA") << QStringLiteral("fr_CA") << kLetter;
        QTest::newRow("es_MX") << QStringLiteral("es_MX") << kLetter;
        QTest::newRow("fil_PH") << QStringLiteral("fil_PH") << kLetter;
        QTest::newRow("en_GB") << QStringLiteral("en_GB") << kA4;
        QTest::newRow("de_DE") << QStringLiteral("de_DE") << kA4;
        QTest::newRow("es_ES") << QStringLiteral("es_ES") << kA4;
        QTest::newRow("ja_JP") << QStringLiteral("ja_JP") << kA4;
        QTest::newRow("C") << QStringLiteral("C") << kA4;
    }

    void localePaper()
    {
        QFETCH(QString, locale);
        QFETCH(QSizeF, paper);
        QVERIFY(sameSize(defaultPaperForLocale(QLocale(locale)), paper));
    }

    void paperLocaleFromEnvironment_data()
    {
        QTest::addColumn<QByteArray>("all");
        QTest::addColumn<QByteArray>("paper");
        QTest::addColumn<QByteArray>("lang");
        QTest::addColumn<QLocale::Territory>("territory");
        QTest::newRow("LC_ALL first") << QByteArray("en_US.UTF-8") << QByteArray("de_DE.UTF-8")
                                      << QByteArray("fr_FR.UTF-8") << QLocale::UnitedStates;
        QTest::newRow("then LC_PAPER") << QByteArray() << QByteArray("en_CA.UTF-8")
                                       << QByteArray("de_DE.UTF-8") << QLocale::Canada;
        QTest::newRow("then LANG")
            << QByteArray() << QByteArray() << QByteArray("de_DE@euro") << QLocale::Germany;
        QTest::newRow("C.UTF-8") << QByteArray("C.UTF-8") << QByteArray("en_US.UTF-8")
                                 << QByteArray() << QLocale::AnyTerritory;
        QTest::newRow("nothing set")
            << QByteArray() << QByteArray() << QByteArray() << QLocale::AnyTerritory;
    }

    void paperLocaleFromEnvironment()
    {
        QFETCH(QByteArray, all);
        QFETCH(QByteArray, paper);
        QFETCH(QByteArray, lang);
        QFETCH(QLocale::Territory, territory);
        const QByteArray saved[] = {qgetenv("LC_ALL"), qgetenv("LC_PAPER"), qgetenv("LANG")};
        const char* names[] = {"LC_ALL", "LC_PAPER", "LANG"};
        const QByteArray values[] = {all, paper, lang};
        for (int i = 0; i < 3; ++i) {
            if (values[i].isEmpty())
                qunsetenv(names[i]);
            else
                qputenv(names[i], values[i]);
        }
        const QLocale locale = paperLocale();
        for (int i = 0; i < 3; ++i) {
            if (saved[i].isEmpty())
                qunsetenv(names[i]);
            else
                qputenv(names[i], saved[i]);
        }
        QCOMPARE(locale.territory(), territory);
    }

    void commands_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<PrintCommandOptions>("options");
        PrintCommandOptions plain;
        plain.file = QStringLiteral("jam.lomir");
        plain.pdfPath = QStringLiteral("out.pdf");
        plain.paper = kLetter;
        QTest::newRow("file and PDF") << words("jam.lomir -o out.pdf") << plain;
        QTest::newRow("PDF first") << words("-o out.pdf jam.lomir") << plain;

        PrintCommandOptions everything = plain;
        everything.pdfPath.clear();
        everything.printerName = QStringLiteral("LabelPDF");
        everything.fullPage = true;
        everything.quantity = 70;
        everything.serialStart = 100;
        everything.paper = QSizeF(288.0, 432.0);
        everything.margins = QMarginsF(0, 9, 0, 9);
        QTest::newRow("every option")
            << words("--printer LabelPDF --full-page --quantity 70 --serial-start 100 "
                     "--paper 4x6in --margins 0,9,0,9 jam.lomir")
            << everything;

        PrintCommandOptions zeroStart = plain;
        zeroStart.serialStart = 0;
        zeroStart.paper = kA4;
        QTest::newRow("first number 0, paper by name")
            << words("jam.lomir --serial-start 0 --paper a4 -o out.pdf") << zeroStart;
    }

    void commands()
    {
        QFETCH(QStringList, arguments);
        QFETCH(PrintCommandOptions, options);
        const Result<PrintCommandOptions> parsed = printCommandOptions(arguments, kLetter);
        QVERIFY2(parsed.ok(), parsed.ok() ? "" : qPrintable(parsed.error().message));
        QCOMPARE(*parsed, options);
    }

    void defaults()
    {
        const Result<PrintCommandOptions> parsed =
            printCommandOptions(words("jam.lomir -o out.pdf"), kA4);
        QVERIFY(parsed.ok());
        QVERIFY(sameSize(parsed->paper, kA4));
        QCOMPARE(parsed->margins, QMarginsF(36, 36, 36, 36));
        QVERIFY(!parsed->fullPage);
        QVERIFY(!parsed->quantity);
        QVERIFY(!parsed->serialStart);
    }

    void refusedCommands_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("named");
        QTest::newRow("no file") << words("-o out.pdf") << QStringLiteral("label file");
        QTest::newRow("no output") << words("jam.lomir") << QStringLiteral("-o OUT.pdf");
        QTest::newRow("both outputs")
            << words("jam.lomir -o out.pdf --printer LabelPDF") << QStringLiteral("not both");
        QTest::newRow("two files")
            << words("jam.lomir tea.lomir -o out.pdf") << QStringLiteral("“tea.lomir”");
        QTest::newRow("unknown option")
            << words("jam.lomir -o out.pdf --copies 3") << QStringLiteral("“--copies”");
        QTest::newRow("missing value") << words("jam.lomir -o out.pdf --quantity")
                                       << QStringLiteral("--quantity needs a value");
        QTest::newRow("quantity 0")
            << words("jam.lomir -o out.pdf --quantity 0") << QStringLiteral("“0”");
        QTest::newRow("quantity negative")
            << words("jam.lomir -o out.pdf --quantity -3") << QStringLiteral("“-3”");
        QTest::newRow("quantity a fraction")
            << words("jam.lomir -o out.pdf --quantity 2.5") << QStringLiteral("“2.5”");
        QTest::newRow("quantity a word")
            << words("jam.lomir -o out.pdf --quantity many") << QStringLiteral("“many”");
        QTest::newRow("quantity past 64 bits")
            << words("jam.lomir -o out.pdf --quantity 9223372036854775808")
            << QStringLiteral("“9223372036854775808”");
        QTest::newRow("serial start negative")
            << words("jam.lomir -o out.pdf --serial-start -1") << QStringLiteral("“-1”");
        QTest::newRow("serial start with a sign")
            << words("jam.lomir -o out.pdf --serial-start +1") << QStringLiteral("“+1”");
        QTest::newRow("numbers past the largest")
            << words("jam.lomir -o out.pdf --quantity 2 --serial-start 9223372036854775806")
            << QStringLiteral("largest number");
        QTest::newRow("bad paper")
            << words("jam.lomir -o out.pdf --paper B99") << QStringLiteral("“B99”");
        QTest::newRow("bad margins")
            << words("jam.lomir -o out.pdf --margins 1,2") << QStringLiteral("“1,2”");
    }

    void refusedCommands()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, named);
        const Result<PrintCommandOptions> parsed = printCommandOptions(arguments, kLetter);
        QVERIFY(!parsed.ok());
        QCOMPARE(parsed.error().code, 2);
        const QString& message = parsed.error().message;
        QVERIFY2(message.contains(named), qPrintable(message));
        // One sentence: a full stop at the end and none before it but in names.
        QVERIFY2(message.endsWith(u'.'), qPrintable(message));
        QVERIFY2(!message.contains(u'\n'), qPrintable(message));
    }
};

QTEST_APPLESS_MAIN(TestPrintOptions)
#include "tst_printoptions.moc"
