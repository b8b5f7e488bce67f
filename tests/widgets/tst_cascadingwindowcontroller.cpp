#include "app/appdelegate.h"
#include "app/cascadingwindowcontroller.h"
#include "document/documentformats.h"
#include "editor/mainviewcontroller.h"
#include "support/scripteduserinterface.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

using namespace lomir;
using testing::ScriptedUserInterface;

namespace {

bool writeAll(const QString& path, const QByteArray& data)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QList<CascadingWindowController*> documentWindows()
{
    QList<CascadingWindowController*> windows;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<CascadingWindowController*>(widget);
            window && window->isVisible())
            windows.append(window);
    }
    return windows;
}

CascadingWindowController* windowOf(const AppDelegate& delegate, const Document* document)
{
    return delegate.windowFor(document);
}

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
        QCoreApplication::setOrganizationName(QStringLiteral("LomirTests"));
        QCoreApplication::setApplicationName(QStringLiteral("CascadingWindowControllerTest"));
    }

    void init()
    {
        QSettings().clear();
        QDir(DocumentController::defaultRecoveryRoot()).removeRecursively();
    }

    void cleanup()
    {
        for (CascadingWindowController* window : documentWindows())
            delete window;
    }

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
        CascadingWindowController* first = windowOf(delegate, documents[0]);
        CascadingWindowController* second = windowOf(delegate, documents[1]);
        QVERIFY(first && second);
        QVERIFY(QTest::qWaitForWindowExposed(second));
        QVERIFY(first->pos() != second->pos());
        QCOMPARE(second->pos(), first->pos() + kCascadeOffset);
    }

    void theWindowShowsTheFileAndTypingMarksItEdited()
    {
        const QString file = path(QStringLiteral("shown.txt"));
        QVERIFY(writeAll(file, "Raspberry"));
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        delegate.applicationDidFinishLaunching({file});
        CascadingWindowController* window = documentWindows().first();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QCOMPARE(shownText(window), QStringLiteral("Raspberry"));
        QCOMPARE(window->windowTitle(), QStringLiteral("shown.txt[*]"));
        QVERIFY(!window->isWindowModified());
        QCOMPARE(QApplication::focusWidget(), window->editor()->labelTextWidget());

        QTest::keyClicks(window->editor()->labelTextWidget(), QStringLiteral(" jam"));
        QVERIFY(window->document()->isModified());
        QVERIFY(window->isWindowModified());

        // Saving writes what the editor shows.
        window->saveAction()->trigger();
        QTRY_VERIFY(readAll(file).endsWith(" jam"));
        QVERIFY(!window->isWindowModified());
    }

    void aRecoveredDocumentsTitleEndsWithRecovered()
    {
        const QString copy = path(QStringLiteral("copy.lomir"));
        Content record;
        record.labelText = AttributedString(RichText(QStringLiteral("Kept")));
        QVERIFY(writeAll(copy, dataOfType(record, QString(kLomirDocumentType)).value()));
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        delegate.applicationDidFinishLaunching({});
        CascadingWindowController* window = documentWindows().first();
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
        delegate.applicationDidFinishLaunching({});
        QPointer<CascadingWindowController> window = documentWindows().first();
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
        QVERIFY(writeAll(file, "Saved text"));
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        delegate.applicationDidFinishLaunching({file});
        CascadingWindowController* window = documentWindows().first();
        QVERIFY(QTest::qWaitForWindowExposed(window));
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
        QVERIFY(writeAll(file, "Before"));
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        delegate.applicationDidFinishLaunching({file});
        CascadingWindowController* window = documentWindows().first();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
        QTest::keyClicks(window->editor()->labelTextWidget(), QStringLiteral(" after"));
        QVERIFY(window->isWindowModified());

        QWidget elsewhere;
        elsewhere.show();
        elsewhere.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&elsewhere));
        QCOMPARE(readAll(file), QByteArray("Before after"));
        QVERIFY(!window->isWindowModified());
    }

    void theCommandsUseTheStandardShortcuts()
    {
        ScriptedUserInterface userInterface;
        AppDelegate delegate(userInterface);
        delegate.applicationDidFinishLaunching({});
        CascadingWindowController* window = documentWindows().first();
        QCOMPARE(window->newDocumentAction()->shortcut(), QKeySequence(QKeySequence::New));
        QCOMPARE(window->openDocumentAction()->shortcut(), QKeySequence(QKeySequence::Open));
        QCOMPARE(window->closeAction()->shortcut(), QKeySequence(QKeySequence::Close));
        QCOMPARE(window->saveAction()->shortcut(), QKeySequence(QKeySequence::Save));
        QCOMPARE(window->saveAsAction()->shortcut(), QKeySequence(QKeySequence::SaveAs));
        QCOMPARE(window->quitAction()->shortcut(), QKeySequence(QKeySequence::Quit));
    }
};

QTEST_MAIN(CascadingWindowControllerTest)
#include "tst_cascadingwindowcontroller.moc"
