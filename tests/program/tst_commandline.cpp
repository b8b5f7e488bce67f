#include "core/base/documentlimits.h"
#include "core/document/documentformats.h"
#include "support/filecases.h"
#include "support/files.h"
#include "support/lomirprocess.h"
#include "support/samplelabels.h"
#include "support/sanitizers.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <functional>
#include <nlohmann/json.hpp>
#include <sys/resource.h>
#include <unistd.h>

using namespace lomir;
using namespace lomir::testing;
using testing::kAddressSanitizer;
using testing::oneLine;
using testing::readFile;
using testing::Run;
using testing::runLomir;
using testing::writeFile;

namespace {

// A build with AddressSanitizer reserves terabytes of address space at start.
// Runs a command that might block or read without end: it is stopped after ten
// seconds, and its address space is capped at a gigabyte so that it fails fast
// instead of taking the machine's memory.
Run runLomirBounded(const QStringList& arguments)
{
    return runLomir(arguments, 10000, [] {
        if (kAddressSanitizer)
            return;
        const rlimit oneGigabyte{rlim_t(1) << 30, rlim_t(1) << 30};
        setrlimit(RLIMIT_AS, &oneGigabyte);
    });
}

// Runs a command as the user "nobody" when the test runs as root, so that file
// permissions apply to it.
Run runLomirWithoutRootPrivileges(const QStringList& arguments)
{
    if (::geteuid() != 0)
        return runLomir(arguments);
    return runLomir(arguments, 60000, [] {
        constexpr uid_t kNobody = 65534;
        if (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)
            ::_exit(127);
    });
}

} // namespace

class CommandLineTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString path(const QString& name) const { return m_dir.filePath(name); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(testing::letOthersLookIn(m_dir.path()));
        Content record;
        record.labelText = AttributedString(figLabel());
        record.quantity = QStringLiteral("30");
        record.serialStartFrom.reset();
        record.frameWidth = 60.5;
        QVERIFY(writeFile(path(QStringLiteral("label.lomir")),
                          dataOfType(record, QString(kLomirDocumentType)).value()));
    }

    void version()
    {
        const Run run = runLomir({QStringLiteral("--version")});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(run.out.startsWith("Lomir "));
    }

    void inspectPrintsTheRecord()
    {
        const Run run = runLomir({QStringLiteral("inspect"), path(QStringLiteral("label.lomir"))});
        QCOMPARE(run.exitCode, 0);
        const auto json = nlohmann::json::parse(run.out.toStdString());
        QVERIFY(json["type"] == "com.brenvik.lomir-doc");
        QVERIFY(json["quantity"] == "30");
        QVERIFY(json["serialStartFrom"].is_null());
        QVERIFY(json["width"] == "2.0");
        QVERIFY(json["height"] == "12");
        QVERIFY(json["dimensions"] == 0);
        QVERIFY(json["metric"] == 0);
        QVERIFY(json["magnification"] == 500.0);
        QVERIFY(json["outputSpacing"] == 1);
        QVERIFY(json["frameWidth"] == 60.5);
        QVERIFY(json["frameHeight"].is_null());
        const auto& text = json["labelText"];
        QCOMPARE(QString::fromStdString(text["string"].get<std::string>()), figLabel().string());
        const auto& runs = text["runs"];
        QCOMPARE(int(runs.size()), 2);
        QVERIFY(runs[0]["location"] == 0);
        QVERIFY(runs[0]["length"] == 7); // the honey pot counts two UTF-16 units
        QVERIFY(runs[0]["font"] == "Helvetica-Bold");
        QVERIFY(runs[0]["family"] == "Helvetica");
        QVERIFY(runs[0]["size"] == 12.0);
        QVERIFY(runs[0]["bold"] == true);
        QVERIFY(runs[0]["italic"] == false);
        QVERIFY(runs[0]["underline"] == 0);
        QVERIFY(runs[0]["foreground"] == "#ff0000ff");
        QVERIFY(runs[0]["background"].is_null());
        QVERIFY(runs[0]["alignment"] == "center");
        QVERIFY(runs[1]["location"] == 7);
        QVERIFY(runs[1]["length"] == 4);
        QVERIFY(runs[1]["font"].is_null());
        QVERIFY(runs[1]["alignment"] == "natural");
    }

    void convertsBetweenTheThreeTypes()
    {
        const QString rtf = path(QStringLiteral("label.rtf"));
        const QString txt = path(QStringLiteral("label.txt"));
        const QString back = path(QStringLiteral("back.lomir"));
        QCOMPARE(runLomir({QStringLiteral("convert"), path(QStringLiteral("label.lomir")), rtf})
                     .exitCode,
                 0);
        QCOMPARE(runLomir({QStringLiteral("convert"), rtf, back}).exitCode, 0);
        QCOMPARE(runLomir({QStringLiteral("convert"), back, txt}).exitCode, 0);

        QFile text(txt);
        QVERIFY(text.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(text.readAll()), figLabel().string());

        // Reading RTF fills a default record: the settings are not carried.
        const Run run = runLomir({QStringLiteral("inspect"), back});
        QCOMPARE(run.exitCode, 0);
        const auto json = nlohmann::json::parse(run.out.toStdString());
        QVERIFY(json["quantity"] == "10");
        QVERIFY(json["serialStartFrom"] == "0");
        QVERIFY(json["labelText"]["runs"][0]["bold"] == true);
        QVERIFY(json["labelText"]["runs"][0]["foreground"] == "#ff0000ff");
    }

    void failuresSayWhatWentWrong_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("mentions");
        QTest::newRow("missing file")
            << QStringList{QStringLiteral("inspect"), QStringLiteral("/nonexistent/a.lomir")} << 1
            << QStringLiteral("/nonexistent/a.lomir");
        QTest::newRow("unknown extension")
            << QStringList{QStringLiteral("inspect"), QStringLiteral("a.doc")} << 2
            << QStringLiteral("a.doc");
        QTest::newRow("unknown command")
            << QStringList{QStringLiteral("--frobnicate")} << 2 << QStringLiteral("--frobnicate");
        QTest::newRow("convert without output")
            << QStringList{QStringLiteral("convert"), QStringLiteral("a.txt")} << 2
            << QStringLiteral("convert");
    }

    void failuresSayWhatWentWrong()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, mentions);
        const Run run = runLomir(arguments);
        QCOMPARE(run.exitCode, exitCode);
        QVERIFY(run.out.isEmpty());
        const QString message = QString::fromUtf8(run.err).trimmed();
        QVERIFY2(message.contains(mentions), qPrintable(message));
        QVERIFY(!message.contains(QLatin1Char('\n')));
    }

    void damagedDocumentIsReportedAndNothingIsWritten()
    {
        const QString damaged = path(QStringLiteral("damaged.lomir"));
        QVERIFY(writeFile(damaged, R"({"labelText":"AAAA","quantity":"1"})"));
        const QString output = path(QStringLiteral("never.txt"));
        const Run run = runLomir({QStringLiteral("convert"), damaged, output});
        QCOMPARE(run.exitCode, 1);
        QVERIFY(!run.err.isEmpty());
        QVERIFY(!QFile::exists(output));
    }

    void theLongestLabelTextConvertsAndOpens()
    {
        const QString text(kMaxLabelTextLength, QChar(0x20AC));
        const QString input = path(QStringLiteral("longest.txt"));
        QVERIFY(writeFile(input, text.toUtf8()));
        const QString lomir = path(QStringLiteral("longest.lomir"));
        const QString rtf = path(QStringLiteral("longest.rtf"));
        const QString back = path(QStringLiteral("longest-back.txt"));
        QCOMPARE(runLomir({QStringLiteral("convert"), input, lomir}).exitCode, 0);
        QCOMPARE(runLomir({QStringLiteral("convert"), lomir, rtf}).exitCode, 0);
        QCOMPARE(runLomir({QStringLiteral("convert"), rtf, back}).exitCode, 0);
        QCOMPARE(readFile(back), text.toUtf8());

        const Run run = runLomir({QStringLiteral("inspect"), lomir});
        QCOMPARE(run.exitCode, 0);
        const auto json = nlohmann::json::parse(run.out.toStdString());
        QCOMPARE(QString::fromStdString(json["labelText"]["string"].get<std::string>()), text);
    }

    void aTextLongerThanALabelHoldsIsNotConverted()
    {
        const QString input = path(QStringLiteral("too-long.txt"));
        QVERIFY(writeFile(input, QByteArray(kMaxLabelTextLength + 1, 'x')));
        const QString output = path(QStringLiteral("kept.lomir"));
        QVERIFY(writeFile(output, "the file already there"));
        const Run run = runLomir({QStringLiteral("convert"), input, output});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(oneLine(run),
                 QStringLiteral("Cannot read “%1”: The label’s text has %2 characters, more "
                                "than the %3 a label can hold.")
                     .arg(input, QLocale().toString(kMaxLabelTextLength + 1),
                          QLocale().toString(kMaxLabelTextLength)));
        QCOMPARE(readFile(output), QByteArray("the file already there"));
    }

    void whatConvertWritesInspectOpens()
    {
        // Twenty megabytes of text once made a document that nothing could open again.
        const QString input = path(QStringLiteral("twenty.txt"));
        QVERIFY(writeFile(input, QByteArray(20 * 1024 * 1024, 'x')));
        const QString output = path(QStringLiteral("twenty.lomir"));
        const Run converted = runLomir({QStringLiteral("convert"), input, output});
        if (converted.exitCode == 0) {
            const Run inspected = runLomir({QStringLiteral("inspect"), output});
            QVERIFY2(inspected.exitCode == 0, inspected.err.constData());
        }
        QCOMPARE(converted.exitCode, 1);
        QVERIFY(oneLine(converted).contains(input));
        QVERIFY(!QFile::exists(output));
    }

    void onlyRegularFilesAreRead_data()
    {
        QDir folder(path(QStringLiteral("not-files")));
        QVERIFY(folder.mkpath(QStringLiteral(".")));
        testing::addNonRegularFileRows(folder);
        // A terabyte that takes no room on the disk.
        const QString huge = path(QStringLiteral("terabyte.txt"));
        QVERIFY(testing::makeSparseFile(huge, qint64(1) << 40));
        QTest::newRow("a terabyte")
            << huge << QStringLiteral("it is larger than 16 MB, the largest file Lomir opens");
    }

    void onlyRegularFilesAreRead()
    {
        QFETCH(QString, file);
        QFETCH(QString, reason);
        const QString output = path(QStringLiteral("never.lomir"));
        const Run run = runLomirBounded({QStringLiteral("convert"), file, output});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(oneLine(run), QStringLiteral("Cannot open “%1”: %2.").arg(file, reason));
        QVERIFY(!QFile::exists(output));
    }

    void writeFailuresGiveTheReason()
    {
        const QString input = path(QStringLiteral("label.lomir"));

        const QString inMissingFolder = QStringLiteral("/nonexistent/label.rtf");
        Run run = runLomir({QStringLiteral("convert"), input, inMissingFolder});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(oneLine(run), QStringLiteral("Cannot write “/nonexistent/label.rtf”: the folder "
                                              "“/nonexistent” does not exist."));

        const QString locked = path(QStringLiteral("locked"));
        QVERIFY(QDir().mkdir(locked));
        QVERIFY(QFile::setPermissions(locked, QFile::ReadOwner | QFile::ExeOwner |
                                                  QFile::ReadOther | QFile::ExeOther));
        const QString refused = QDir(locked).filePath(QStringLiteral("label.txt"));
        run = runLomirWithoutRootPrivileges({QStringLiteral("convert"), input, refused});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(oneLine(run),
                 QStringLiteral("Cannot write “%1”: permission denied.").arg(refused));
        QVERIFY(!QFile::exists(refused));
    }

    void aFullDiskIsSaidToBeFull()
    {
        testing::SmallDisk disk(path(QStringLiteral("full")), 64);
        if (!disk.isMounted())
            QSKIP(qPrintable(disk.whyNot()));
        const QString input = path(QStringLiteral("large.txt"));
        QVERIFY(writeFile(input, QByteArray(100'000, 'x')));
        const QString output = disk.filePath(QStringLiteral("label.txt"));
        QVERIFY(writeFile(output, "the label before"));
        const Run run = runLomir({QStringLiteral("convert"), input, output});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(oneLine(run), QStringLiteral("Cannot write “%1”: the disk is full.").arg(output));
        QCOMPARE(readFile(output), QByteArray("the label before"));
        QCOMPARE(QDir(QFileInfo(output).path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList{QStringLiteral("label.txt")});
    }

    void aReadOnlyDiskIsSaidToBeReadOnly()
    {
        testing::SmallDisk disk(path(QStringLiteral("read-only")), 64);
        if (!disk.isMounted())
            QSKIP(qPrintable(disk.whyNot()));
        const QString output = disk.filePath(QStringLiteral("label.rtf"));
        QVERIFY(writeFile(output, "the label before"));
        QVERIFY(disk.makeReadOnly());
        const Run run =
            runLomir({QStringLiteral("convert"), path(QStringLiteral("label.lomir")), output});
        QCOMPARE(run.exitCode, 1);
        QCOMPARE(oneLine(run),
                 QStringLiteral("Cannot write “%1”: the disk is read-only.").arg(output));
        QCOMPARE(readFile(output), QByteArray("the label before"));
    }

    void textThatIsNotUtf8IsReported()
    {
        const QString latin1 = path(QStringLiteral("latin1.txt"));
        QVERIFY(writeFile(latin1, "caf\xE9"));
        const Run run =
            runLomir({QStringLiteral("convert"), latin1, path(QStringLiteral("x.rtf"))});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.contains("UTF-8"), run.err.constData());
    }
};

QTEST_MAIN(CommandLineTest)
#include "tst_commandline.moc"
