// Reading large label files: every command stays within a fixed multiple of the file's
// size (kReadMemoryFactor), and running out of memory all the same is reported in a
// sentence rather than an abort.

#include "core/base/documentlimits.h"
#include "core/document/documentformats.h"
#include "support/files.h"
#include "support/manyruns.h"
#include "support/sanitizers.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <nlohmann/json.hpp>

using namespace lomir;
using namespace lomir::testing;

namespace {

// Enough runs that the memory they take stands out from the program's own.
constexpr qint64 kManyRuns = 300000;

QString lomirProgram()
{
    return QStringLiteral(LOMIR_BINARY);
}

// The arguments that make a shell run a command with its address space limited.
QStringList underAddressLimit(qint64 megabytes, const QStringList& command)
{
    return QStringList{QStringLiteral("-c"), QStringLiteral("ulimit -v \"$0\" && exec \"$@\""),
                       QString::number(megabytes * 1024)} +
           command;
}

} // namespace

class LargeInputTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    qint64 m_baseKilobytes = 0;

    QString path(const QString& name) const { return m_dir.filePath(name); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(writeDocumentWithRuns(kManyRuns, path(QStringLiteral("runs.lomir"))));
        QVERIFY(writeDocumentWithRuns(kManyRuns, path(QStringLiteral("runs.rtf"))));
        // Plain text of two-byte characters, which become one UTF-16 unit each: the
        // longest text a label holds.
        QVERIFY(writeFile(path(QStringLiteral("long.txt")),
                          QString(kMaxLabelTextLength, QChar(u'é')).toUtf8()));
        // A document with a member the record does not know, holding a million objects.
        QByteArray unknown = dataOfType(Content(), QString(kLomirDocumentType)).value();
        unknown.chop(1);
        unknown += ",\"extra\":[" + QByteArray("{},").repeated(999'999) + "{}]}";
        QVERIFY(writeFile(path(QStringLiteral("unknown.lomir")), unknown));
        // What the program takes before it reads anything.
        const std::optional<MeasuredRun> base =
            runMeasured(lomirProgram(), {QStringLiteral("--help")});
        QVERIFY(base && base->exitStatus == 0);
        m_baseKilobytes = base->peakKilobytes;
    }

    void readingStaysWithinAMultipleOfTheFile_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("input");
        QTest::newRow("inspect own type")
            << QStringList{QStringLiteral("inspect"), QStringLiteral("runs.lomir")}
            << QStringLiteral("runs.lomir");
        QTest::newRow("convert own type to text")
            << QStringList{QStringLiteral("convert"), QStringLiteral("runs.lomir"),
                           QStringLiteral("runs-lomir.txt")}
            << QStringLiteral("runs.lomir");
        QTest::newRow("inspect RTF")
            << QStringList{QStringLiteral("inspect"), QStringLiteral("runs.rtf")}
            << QStringLiteral("runs.rtf");
        QTest::newRow("convert RTF to text")
            << QStringList{QStringLiteral("convert"), QStringLiteral("runs.rtf"),
                           QStringLiteral("runs-rtf.txt")}
            << QStringLiteral("runs.rtf");
        QTest::newRow("inspect own type with a member it does not know")
            << QStringList{QStringLiteral("inspect"), QStringLiteral("unknown.lomir")}
            << QStringLiteral("unknown.lomir");
        QTest::newRow("inspect text")
            << QStringList{QStringLiteral("inspect"), QStringLiteral("long.txt")}
            << QStringLiteral("long.txt");
        QTest::newRow("convert text to text")
            << QStringList{QStringLiteral("convert"), QStringLiteral("long.txt"),
                           QStringLiteral("long-copy.txt")}
            << QStringLiteral("long.txt");
    }

    void readingStaysWithinAMultipleOfTheFile()
    {
        if (kAddressSanitizer)
            QSKIP("Memory is measured in builds without AddressSanitizer.");
        QFETCH(QStringList, arguments);
        QFETCH(QString, input);
        for (qsizetype i = 1; i < arguments.size(); ++i)
            arguments[i] = path(arguments[i]);
        const std::optional<MeasuredRun> run = runMeasured(lomirProgram(), arguments);
        QVERIFY(run.has_value());
        QVERIFY2(run->exitStatus == 0, run->errorOutput.constData());
        const qint64 fileKilobytes = QFileInfo(path(input)).size() / 1024;
        const qint64 grownKilobytes = run->peakKilobytes - m_baseKilobytes;
        QVERIFY2(grownKilobytes <= kReadMemoryFactor * fileKilobytes,
                 qPrintable(QStringLiteral("%1 kB more than the program's own %2 kB for a file "
                                           "of %3 kB")
                                .arg(grownKilobytes)
                                .arg(m_baseKilobytes)
                                .arg(fileKilobytes)));
    }

    void inspectPrintsWhatAJsonLibraryPrints()
    {
        // The output is written as it goes; it must be the very text a JSON library
        // prints for the same values, indented by two, keys in the record's order.
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        RichText text = textWithRuns(5);
        TextAttributes odd;
        odd.font = FontSpec{QStringLiteral("Liberation Sans"), QString(), 9.25, false, true};
        odd.background = Rgba{1, 2, 3, 4};
        odd.underline = LineStyle::Double;
        odd.strikethrough = LineStyle::Thick | LineStyle::PatternDash;
        ParagraphStyle justified;
        justified.alignment = TextAlignment::Justified;
        odd.paragraph = justified;
        text.append(QStringLiteral("\"q\" \\ / \t\u0001 é 🍯 \u2028"), odd);
        Content record;
        record.labelText = AttributedString(text);
        record.serialStartFrom.reset();
        record.magnification = 1e-7;
        record.frameWidth = 123456789.125;
        record.frameHeight = -0.0;
        record.quantity = QStringLiteral("\u0007\u001f");
        const QString file = dir.filePath(QStringLiteral("odd.lomir"));
        QVERIFY(writeFile(file, dataOfType(record, QString(kLomirDocumentType)).value()));

        QProcess process;
        process.start(lomirProgram(), {QStringLiteral("inspect"), file});
        QVERIFY(process.waitForFinished(60000));
        QCOMPARE(process.exitCode(), 0);
        const QByteArray printed = process.readAllStandardOutput();
        const auto parsed = nlohmann::ordered_json::parse(printed.toStdString());
        QCOMPARE(parsed["labelText"]["runs"].size(), std::size_t(6));
        QCOMPARE(printed, QByteArray::fromStdString(parsed.dump(2) + '\n'));
    }

    void runningOutOfMemoryIsASentence()
    {
        // Under an address-space limit just above what the program needs to start, a
        // document of many runs cannot be read: the program says so and ends, rather
        // than abort.
        const QString shell = QStringLiteral("/bin/sh");
        const QStringList help{lomirProgram(), QStringLiteral("--help")};
        const auto starts = [&](qint64 megabytes) {
            const std::optional<MeasuredRun> run =
                runMeasured(shell, underAddressLimit(megabytes, help));
            return run && run->exitStatus == 0;
        };
        qint64 refused = 16;
        qint64 enough = 4096;
        if (!starts(enough))
            QSKIP("The program does not start under an address-space limit in this build.");
        while (enough - refused > 1) {
            const qint64 middle = (refused + enough) / 2;
            (starts(middle) ? enough : refused) = middle;
        }
        const QString file = path(QStringLiteral("runs.rtf"));
        const std::optional<MeasuredRun> run = runMeasured(
            shell, underAddressLimit(enough, {lomirProgram(), QStringLiteral("inspect"), file}));
        QVERIFY(run.has_value());
        const QString message = QString::fromUtf8(run->errorOutput).trimmed();
        QVERIFY2(run->exitStatus == 1, qPrintable(message));
        QVERIFY2(message.contains(QStringLiteral("not enough memory")), qPrintable(message));
        QVERIFY2(message.contains(file), qPrintable(message));
    }
};

QTEST_MAIN(LargeInputTest)
#include "tst_largeinput.moc"
