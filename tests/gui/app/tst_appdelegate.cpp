#include "core/document/documentformats.h"
#include "gui/app/appdelegate.h"
#include "gui/app/cascadingwindowcontroller.h"
#include "gui/app/scene.h"
#include "support/documentwindows.h"
#include "support/fatalstop.h"
#include "support/files.h"
#include "support/scripteduserinterface.h"

#include <QApplication>
#include <QDialog>
#include <QMenu>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <cstring>

using namespace lomir;
using testing::documentWindows;
using testing::ScriptedUserInterface;
using testing::writeFile;

namespace {

int runFatalCase(const char* name)
{
    if (std::strcmp(name, "sceneOfAnotherKind") == 0)
        (void)instantiateController<QDialog>(kDocumentWindowScene);
    else if (std::strcmp(name, "unknownScene") == 0)
        (void)instantiateScene(u"Print Panel Controller");
    else if (std::strcmp(name, "documentWindowScene") == 0)
        delete instantiateController<CascadingWindowController>(kDocumentWindowScene);
    else
        return 2;
    return 0;
}

} // namespace

class AppDelegateTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        testing::nameTestApplication(QStringLiteral("AppDelegateTest"));
    }

    void init() { testing::resetApplicationState(); }
    void cleanup() { testing::resetApplicationState(); }

    void everyLaunchWritesTheFontSizeList()
    {
        QSettings().setValue(kFontPanelSizeListKey,
                             QStringList{QStringLiteral("99"), QStringLiteral("7")});
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        delegate.applicationDidFinishLaunching({});
        const QStringList expected{
            QStringLiteral("1"),  QStringLiteral("2"),  QStringLiteral("3"),  QStringLiteral("4"),
            QStringLiteral("5"),  QStringLiteral("6"),  QStringLiteral("7"),  QStringLiteral("8"),
            QStringLiteral("9"),  QStringLiteral("10"), QStringLiteral("11"), QStringLiteral("12"),
            QStringLiteral("13"), QStringLiteral("14"), QStringLiteral("18"), QStringLiteral("24"),
            QStringLiteral("36"), QStringLiteral("48")};
        QSettings settings;
        settings.sync();
        const QVariant stored = settings.value(kFontPanelSizeListKey);
        QCOMPARE(stored.toStringList(), expected);
        QCOMPARE(stored.toStringList().size(), 18);
    }

    void aLaunchWithoutFilesShowsOneNewDocument()
    {
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        delegate.applicationDidFinishLaunching({});
        const QList<CascadingWindowController*> windows = documentWindows();
        QCOMPARE(windows.size(), 1);
        QVERIFY(windows.first()->document());
        QVERIFY(windows.first()->document()->filePath().isEmpty());
        QCOMPARE(windows.first()->windowTitle(), QStringLiteral("Untitled[*]"));
        QVERIFY(!windows.first()->isWindowModified());
    }

    void aLaunchWithFilesOpensThemInstead()
    {
        const QString first = m_dir.filePath(QStringLiteral("first.txt"));
        const QString second = m_dir.filePath(QStringLiteral("second.lomir"));
        QVERIFY(writeFile(first, "First label"));
        QVERIFY(writeFile(second, dataOfType(Content(), QString(kLomirDocumentType)).value()));
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        delegate.applicationDidFinishLaunching({first, second});
        QStringList titles;
        for (CascadingWindowController* window : documentWindows())
            titles.append(window->windowTitle());
        titles.sort();
        QCOMPARE(titles,
                 (QStringList{QStringLiteral("first.txt[*]"), QStringLiteral("second.lomir[*]")}));
        QVERIFY(userInterface.errors.empty());
    }

    void aFileThatCannotBeOpenedAtLaunchIsReportedAndANewDocumentShown()
    {
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        delegate.applicationDidFinishLaunching({m_dir.filePath(QStringLiteral("gone.lomir"))});
        QCOMPARE(userInterface.errors.size(), std::size_t(1));
        QVERIFY(userInterface.errors.front().summary.contains(QStringLiteral("gone.lomir")));
        QCOMPARE(documentWindows().size(), 1);
        QVERIFY(documentWindows().first()->document()->filePath().isEmpty());
    }

    void newAndQuitAreCarriedOutForEveryWindow()
    {
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        CascadingWindowController* window = testing::launch(delegate);
        QVERIFY(window);
        for (QAction* action : {window->newDocumentAction(), window->openDocumentAction(),
                                window->quitAction(), window->aboutAction()})
            QVERIFY(action->isEnabled());
        window->newDocumentAction()->trigger();
        QCOMPARE(documentWindows().size(), 2);

        // Quitting asks about the edited document; cancelling keeps everything open.
        delegate.documentController().documents()[1]->updateChangeCount();
        userInterface.saveChangesAnswers.push_back(SaveChangesAnswer::Cancel);
        window->quitAction()->trigger();
        QCOMPARE(delegate.documentController().documents().size(), std::size_t(2));
        QCOMPARE(documentWindows().size(), 2);
        QCOMPARE(userInterface.askedToSaveChanges, QStringList{QStringLiteral("Untitled 2")});

        userInterface.saveChangesAnswers.push_back(SaveChangesAnswer::DontSave);
        window->quitAction()->trigger();
        QVERIFY(delegate.documentController().documents().empty());
        QTRY_COMPARE(documentWindows().size(), 0);
    }

    void openRecentListsTheRecentFiles()
    {
        const QString file = m_dir.filePath(QStringLiteral("recent.txt"));
        QVERIFY(writeFile(file, "Recent"));
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        CascadingWindowController* window = testing::launch(delegate, {file});
        QVERIFY(window);
        QMenu* recent = window->openRecentMenu();
        Q_EMIT recent->aboutToShow();
        QStringList texts;
        for (QAction* action : recent->actions())
            texts.append(action->text());
        QCOMPARE(texts.first(), QStringLiteral("recent.txt"));
        QVERIFY(texts.contains(QStringLiteral("Clear Menu")));

        // Choosing it again shows the open document rather than opening a second.
        recent->actions().first()->trigger();
        QCOMPARE(delegate.documentController().documents().size(), std::size_t(1));
    }

    void theDocumentWindowSceneMakesACascadingWindowController()
    {
        testing::verifyRunsToEnd(QStringLiteral("documentWindowScene"));
    }

    void aSceneOfAnotherKindStopsTheProgram()
    {
        testing::verifyStops(QStringLiteral("sceneOfAnotherKind"),
                             QStringLiteral("The scene “Document Window Controller” makes a "
                                            "lomir::CascadingWindowController, not a QDialog"));
    }

    void anUnknownSceneStopsTheProgram()
    {
        testing::verifyStops(QStringLiteral("unknownScene"),
                             QStringLiteral("No scene has the identifier “Print Panel "
                                            "Controller”"));
    }
};

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    if (testing::isFatalCaseRun(argc, argv))
        return runFatalCase(argv[2]);
    AppDelegateTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_appdelegate.moc"
