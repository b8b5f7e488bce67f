// The application as a user meets it: build/lomir started as a real process on a
// virtual display of the test's own, typed into with xdotool, killed and started again.

#include "core/document/content.h"
#include "support/files.h"
#include "support/virtualdisplay.h"

#include <QClipboard>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <cstring>

using namespace lomir;
using testing::readFile;
using testing::VirtualDisplay;
using testing::writeFile;

namespace {

const char kReadClipboardOption[] = "--read-clipboard";

// A run of this test program on the virtual display that prints the clipboard's text:
// the application serves its clipboard only to another X client.
int printClipboard(int argc, char* argv[])
{
    QGuiApplication application(argc, argv);
    QFile out;
    if (!out.open(stdout, QIODevice::WriteOnly))
        return 1;
    out.write(QGuiApplication::clipboard()->text().toUtf8());
    return 0;
}

// The label texts of the copies in the recovery folder below the data folder.
QStringList recoveredTexts(const QString& dataHome)
{
    QStringList texts;
    QDirIterator it(dataHome, {QStringLiteral("*.lomir")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const Result<Content> record = Content::decode(readFile(it.next()));
        if (record)
            texts.append(record->labelText.nsAttributedString().string());
    }
    return texts;
}

} // namespace

class ApplicationProcessTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<VirtualDisplay> m_display;
    std::unique_ptr<QTemporaryDir> m_home;

    QString dataHome() const { return m_home->filePath(QStringLiteral("data")); }
    QString configHome() const { return m_home->filePath(QStringLiteral("config")); }

    // Starts build/lomir with the arguments, with settings and data folders of the test.
    void startLomir(QProcess& lomir, const QStringList& arguments = {})
    {
        QProcessEnvironment environment = m_display->environment();
        environment.insert(QStringLiteral("XDG_DATA_HOME"), dataHome());
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), configHome());
        lomir.setProcessEnvironment(environment);
        lomir.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        lomir.start(QStringLiteral(LOMIR_BINARY), arguments);
        QVERIFY(lomir.waitForStarted(10000));
    }

    void kill(QProcess& lomir)
    {
        lomir.kill(); // SIGKILL: nothing runs on the way out
        QVERIFY(lomir.waitForFinished(10000));
        QCOMPARE(lomir.exitStatus(), QProcess::CrashExit);
    }

    std::optional<QString> clipboardText()
    {
        QProcess reader;
        reader.setProcessEnvironment(m_display->environment());
        reader.start(QCoreApplication::applicationFilePath(),
                     {QString::fromLatin1(kReadClipboardOption)});
        if (!reader.waitForFinished(20000) || reader.exitCode() != 0)
            return std::nullopt;
        return QString::fromUtf8(reader.readAllStandardOutput());
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QStringList missing = VirtualDisplay::missingTools();
        if (!missing.isEmpty())
            QSKIP(qPrintable(QStringLiteral("needs %1 (scripts/install-deps installs them)")
                                 .arg(missing.join(QStringLiteral(" and ")))));
        m_display = std::make_unique<VirtualDisplay>();
        QVERIFY2(m_display->start(), "the virtual display did not start");
    }

    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
    }

    void typedTextOfANewDocumentSurvivesAKill()
    {
        const QString typed = QStringLiteral("Elderflower cordial 2026");
        QProcess first;
        startLomir(first);
        const std::optional<QString> window = m_display->waitForWindow(QStringLiteral("^Untitled"));
        QVERIFY2(window, "no window for the new document");
        QVERIFY(
            m_display->xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), *window}));
        QVERIFY(m_display->xdotool(
            {QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"), typed}));
        // The recovery copy is written within seconds of the last keystroke.
        QTRY_COMPARE_WITH_TIMEOUT(recoveredTexts(dataHome()), QStringList{typed}, 8000);
        kill(first);

        QProcess second;
        startLomir(second);
        const std::optional<QString> recovered =
            m_display->waitForWindow(QStringLiteral("\\(Recovered\\)$"));
        QVERIFY2(recovered, "no window for the recovered document");
        const std::optional<QString> title =
            m_display->xdotool({QStringLiteral("getwindowname"), *recovered});
        QVERIFY(title);
        QVERIFY2(title->startsWith(QStringLiteral("Untitled*")), qPrintable(*title));

        // The window shows the text: select it all, copy it, read the clipboard.
        QVERIFY(m_display->xdotool(
            {QStringLiteral("windowfocus"), QStringLiteral("--sync"), *recovered}));
        QVERIFY(m_display->xdotool(
            {QStringLiteral("key"), QStringLiteral("ctrl+a"), QStringLiteral("ctrl+c")}));
        QTRY_COMPARE_WITH_TIMEOUT(clipboardText(), std::optional<QString>(typed), 10000);

        // Every launch writes the font size list.
        QSettings settings(configHome() + QStringLiteral("/Brenvik/Lomir.conf"),
                           QSettings::IniFormat);
        QCOMPARE(settings.value(QStringLiteral("NSFontPanelSizeList")).toStringList().size(), 18);
        kill(second);
    }

    void aTitledDocumentsFileHoldsAnEditWithinFiveSeconds()
    {
        const QString file = m_home->filePath(QStringLiteral("label.txt"));
        QVERIFY(writeFile(file, "Gooseberry"));
        QProcess lomir;
        startLomir(lomir, {file});
        const std::optional<QString> window =
            m_display->waitForWindow(QStringLiteral("^label\\.txt"));
        QVERIFY2(window, "no window for the document");
        QVERIFY(
            m_display->xdotool({QStringLiteral("windowfocus"), QStringLiteral("--sync"), *window}));
        QVERIFY(m_display->xdotool({QStringLiteral("key"), QStringLiteral("ctrl+End")}));
        QVERIFY(m_display->xdotool({QStringLiteral("type"), QStringLiteral("--delay"),
                                    QStringLiteral("20"), QStringLiteral(" fool")}));
        QElapsedTimer sinceLastKey;
        sinceLastKey.start();
        QTRY_COMPARE_WITH_TIMEOUT(readFile(file), QByteArray("Gooseberry fool"), 5000);
        QVERIFY2(sinceLastKey.elapsed() <= 5000,
                 qPrintable(QString::number(sinceLastKey.elapsed())));
        // Written in place: nothing waits in the recovery folder.
        QVERIFY(recoveredTexts(dataHome()).isEmpty());
        kill(lomir);
    }
};

int main(int argc, char* argv[])
{
    if (argc == 2 && std::strcmp(argv[1], kReadClipboardOption) == 0)
        return printClipboard(argc, argv);
    QCoreApplication app(argc, argv);
    ApplicationProcessTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_applicationprocess.moc"
