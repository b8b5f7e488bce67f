#include "core/document/documentformats.h"
#include "gui/app/appdelegate.h"
#include "gui/app/cascadingwindowcontroller.h"
#include "gui/editor/mainviewcontroller.h"
#include "support/documentwindows.h"
#include "support/files.h"
#include "support/scripteduserinterface.h"

#include <QApplication>
#include <QDialog>
#include <QMenu>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

using namespace lomir;
using testing::documentWindows;
using testing::readFile;
using testing::ScriptedUserInterface;
using testing::writeFile;

namespace {

QString shownText(CascadingWindowController* window)
{
    return window->editor()->labelText().string();
}

} // namespace

class CascadingWindowControllerTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString path(const QString& name) const { return m_dir.filePath(name); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        testing::nameTestApplication(QStringLiteral("CascadingWindowControllerTest"));
    }

    void init() { testing::resetApplicationState(); }
    void cleanup() { testing::resetApplicationState(); }

    void cascadedPositionOffsetsAndWrapsWithinTheAvailableArea_data()
    {
        QTest::addColumn<QPoint>("previous");
        QTest::addColumn<QPoint>("expected");
        // An available area of 1000 by 800 starting below a 30-pixel panel, and
        // windows of 600 by 400.
        QTest::newRow("room to the right and below") << QPoint(100, 130) << QPoint(122, 152);
        QTest::newRow("right edge reached exactly") << QPoint(378, 130) << QPoint(400, 152);
        QTest::newRow("past the right edge") << QPoint(379, 130) << QPoint(0, 152);
        QTest::newRow("past the bottom edge") << QPoint(100, 409) << QPoint(122, 30);
        QTest::newRow("past both") << QPoint(390, 420) << QPoint(0, 30);
    }

    void cascadedPositionOffsetsAndWrapsWithinTheAvailableArea()
    {
        QFETCH(QPoint, previous);
        QFETCH(QPoint, expected);
        QCOMPARE(cascadedPosition(previous, QSize(600, 400), QRect(0, 30, 1000, 800)), expected);
    }

    void twoNewDocumentsGetWindowsOffsetFromEachOther()
    {
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        delegate.applicationDidFinishLaunching({});
        delegate.newDocument();
        const std::vector<Document*> documents = delegate.documentController().documents();
        QCOMPARE(documents.size(), std::size_t(2));
        CascadingWindowController* first = delegate.windowFor(documents[0]);
        CascadingWindowController* second = delegate.windowFor(documents[1]);
        QVERIFY(first && second);
        QVERIFY(QTest::qWaitForWindowExposed(second));
        QVERIFY(first->pos() != second->pos());
        QCOMPARE(second->pos(), first->pos() + kCascadeOffset);
    }

    void theWindowShowsTheFileAndTypingMarksItEdited()
    {
        const QString file = path(QStringLiteral("shown.txt"));
        QVERIFY(writeFile(file, "Raspberry"));
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        CascadingWindowController* window = testing::launch(delegate, {file});
        QVERIFY(window);
        QCOMPARE(shownText(window), QStringLiteral("Raspberry"));
        QCOMPARE(window->windowTitle(), QStringLiteral("shown.txt[*]"));
        QVERIFY(!window->isWindowModified());
        QCOMPARE(QApplication::focusWidget(), window->editor()->labelTextWidget());

        QTest::keyClicks(window->editor()->labelTextWidget(), QStringLiteral(" jam"));
        QVERIFY(window->document()->isModified());
        QVERIFY(window->isWindowModified());

        // Saving writes what the editor shows.
        window->saveAction()->trigger();
        QTRY_VERIFY(readFile(file).endsWith(" jam"));
        QVERIFY(!window->isWindowModified());
    }

    void aRecoveredDocumentsTitleEndsWithRecovered()
    {
        const QString copy = path(QStringLiteral("copy.lomir"));
        Content record;
        record.labelText = AttributedString(RichText(QStringLiteral("Kept")));
        QVERIFY(writeFile(copy, dataOfType(record, QString(kLomirDocumentType)).value()));
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        CascadingWindowController* window = testing::launch(delegate);
        QVERIFY(window);
        // Read a kept copy into the window's document, as restoring does.
        QVERIFY(
            window->document()->readRecoveredCopy(copy, QString(), QString(kLomirDocumentType)));
        QVERIFY(window->windowTitle().endsWith(QStringLiteral("(Recovered)")));
        QVERIFY(window->isWindowModified());
    }

    void closingAnEditedWindowAsksFirst()
    {
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        QPointer<CascadingWindowController> window = testing::launch(delegate);
        QVERIFY(window);
        QTest::keyClicks(window->editor()->labelTextWidget(), QStringLiteral("Typed"));

        userInterface.saveChangesAnswers.push_back(SaveChangesAnswer::Cancel);
        window->closeAction()->trigger();
        QVERIFY(window && window->isVisible());
        QCOMPARE(delegate.documentController().documents().size(), std::size_t(1));

        userInterface.saveChangesAnswers.push_back(SaveChangesAnswer::DontSave);
        window->closeAction()->trigger();
        QVERIFY(delegate.documentController().documents().empty());
        QTRY_VERIFY(!window);
        QCOMPARE(userInterface.askedToSaveChanges,
                 (QStringList{QStringLiteral("Untitled"), QStringLiteral("Untitled")}));
    }

    void revertIsOfferedForAnEditedFileAndShowsTheFileAgain()
    {
        const QString file = path(QStringLiteral("revert.txt"));
        QVERIFY(writeFile(file, "Saved text"));
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        CascadingWindowController* window = testing::launch(delegate, {file});
        QVERIFY(window);
        QVERIFY(!window->revertAction()->isEnabled());
        QTest::keyClicks(window->editor()->labelTextWidget(), QStringLiteral(" and more"));
        QVERIFY(window->revertAction()->isEnabled());

        userInterface.revertAnswers.push_back(true);
        window->revertAction()->trigger();
        QCOMPARE(shownText(window), QStringLiteral("Saved text"));
        QVERIFY(!window->isWindowModified());
        QVERIFY(!window->revertAction()->isEnabled());
        // The fresh editor reports changes as the first did.
        QTest::keyClicks(window->editor()->labelTextWidget(), QStringLiteral("!"));
        QVERIFY(window->isWindowModified());
    }

    void leavingTheWindowWritesATitledDocumentsEdits()
    {
        const QString file = path(QStringLiteral("leave.txt"));
        QVERIFY(writeFile(file, "Before"));
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        CascadingWindowController* window = testing::launch(delegate, {file});
        QVERIFY(window);
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
        QTest::keyClicks(window->editor()->labelTextWidget(), QStringLiteral(" after"));
        QVERIFY(window->isWindowModified());

        QWidget elsewhere;
        elsewhere.show();
        elsewhere.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&elsewhere));
        QCOMPARE(readFile(file), QByteArray("Before after"));
        QVERIFY(!window->isWindowModified());
    }

    void aQuestionOverTheWindowDoesNotWriteItsEdits()
    {
        const QString file = path(QStringLiteral("asked.txt"));
        QVERIFY(writeFile(file, "Before"));
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        CascadingWindowController* window = testing::launch(delegate, {file});
        QVERIFY(window);
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
        QTest::keyClicks(window->editor()->labelTextWidget(), QStringLiteral(" after"));

        // A modal question, such as whether to save the changes, takes the focus: the
        // user may yet answer "Don't Save".
        QDialog question(window);
        question.setModal(true);
        question.show();
        question.activateWindow();
        QTRY_COMPARE(QApplication::activeWindow(), &question);
        QCOMPARE(readFile(file), QByteArray("Before"));
        QVERIFY(window->isWindowModified());
    }

    void theCommandsUseTheStandardShortcuts()
    {
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        CascadingWindowController* window = testing::launch(delegate);
        QVERIFY(window);
        QCOMPARE(window->newDocumentAction()->shortcut(), QKeySequence(QKeySequence::New));
        QCOMPARE(window->openDocumentAction()->shortcut(), QKeySequence(QKeySequence::Open));
        QCOMPARE(window->closeAction()->shortcut(), QKeySequence(QKeySequence::Close));
        QCOMPARE(window->saveAction()->shortcut(), QKeySequence(QKeySequence::Save));
        QCOMPARE(window->saveAsAction()->shortcut(), QKeySequence(QStringLiteral("Ctrl+Shift+S")));
        QCOMPARE(window->quitAction()->shortcut(), QKeySequence(QKeySequence::Quit));
    }

    // Alt and a letter reaches one command in each menu.
    void everyMenuHasUniqueMnemonics()
    {
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        CascadingWindowController* window = testing::launch(delegate);
        QVERIFY(window);
        const QList<QMenu*> menus = window->findChildren<QMenu*>();
        QVERIFY(menus.size() >= 4);
        for (const QMenu* menu : menus) {
            QSet<QChar> mnemonics;
            for (const QAction* action : menu->actions()) {
                const QString text = action->text();
                const qsizetype marker = text.indexOf(u'&');
                if (action->isSeparator() || marker < 0 || marker + 1 >= text.size())
                    continue;
                const QChar mnemonic = text.at(marker + 1).toLower();
                QVERIFY2(!mnemonics.contains(mnemonic),
                         qPrintable(menu->title() + QStringLiteral(": ") + text +
                                    QStringLiteral(" repeats a mnemonic")));
                mnemonics.insert(mnemonic);
            }
        }
    }
};

QTEST_MAIN(CascadingWindowControllerTest)
#include "tst_cascadingwindowcontroller.moc"
