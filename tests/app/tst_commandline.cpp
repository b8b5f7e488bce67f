#include "document/documentformats.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <nlohmann/json.hpp>

using namespace lomir;

namespace {

struct Run
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

Run runLomir(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral(LOMIR_BINARY), arguments);
    if (!process.waitForFinished(60000))
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

RichText label()
{
    TextAttributes bold;
    bold.font =
        FontSpec{QStringLiteral("Helvetica"), QStringLiteral("Helvetica-Bold"), 12.0, true, false};
    bold.foreground = Rgba{255, 0, 0, 255};
    ParagraphStyle centred;
    centred.alignment = TextAlignment::Center;
    bold.paragraph = centred;
    RichText text(QStringLiteral("Fig 🍯 "), bold);
    text.append(QStringLiteral("#\u200D#\u200D"), TextAttributes{});
    return text;
}

void writeFile(const QString& path, const QByteArray& data)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(data);
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
        Content record;
        record.labelText = AttributedString(label());
        record.quantity = QStringLiteral("30");
        record.serialStartFrom.reset();
        record.frameWidth = 60.5;
        writeFile(path(QStringLiteral("label.lomir")),
                  dataOfType(record, QString(kLomirDocumentType)).value());
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
        QCOMPARE(QString::fromStdString(text["string"].get<std::string>()), label().string());
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
        QCOMPARE(QString::fromUtf8(text.readAll()), label().string());

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
        writeFile(damaged, R"({"labelText":"AAAA","quantity":"1"})");
        const QString output = path(QStringLiteral("never.txt"));
        const Run run = runLomir({QStringLiteral("convert"), damaged, output});
        QCOMPARE(run.exitCode, 1);
        QVERIFY(!run.err.isEmpty());
        QVERIFY(!QFile::exists(output));
    }

    void textThatIsNotUtf8IsReported()
    {
        const QString latin1 = path(QStringLiteral("latin1.txt"));
        writeFile(latin1, "caf\xE9");
        const Run run =
            runLomir({QStringLiteral("convert"), latin1, path(QStringLiteral("x.rtf"))});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.contains("UTF-8"), run.err.constData());
    }
};

QTEST_MAIN(CommandLineTest)
#include "tst_commandline.moc"
