#include "core/base/fatal.h"
#include "core/document/document.h"
#include "core/document/documentcontroller.h"
#include "core/document/documentformats.h"
#include "support/fatalstop.h"
#include "support/files.h"
#include "support/records.h"
#include "support/scripteduserinterface.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <cstring>

using namespace lomir;
using testing::labelTextOf;
using testing::readFile;
using testing::ScriptedUserInterface;
using testing::writeFile;

namespace {

using namespace std::chrono_literals;

const char kRecoveryRootVariable[] = "LOMIR_TEST_RECOVERY_ROOT";

// Short enough that tests of scheduling do not wait long.
const DocumentController::AutosaveTiming kQuickTiming{100ms, 300ms};

QString ownType()
{
    return QString(kLomirDocumentType);
}

Content recordWithText(const QString& text, const QString& quantity = QStringLiteral("10"))
{
    Content record;
    record.labelText = AttributedString(RichText(text));
    record.quantity = quantity;
    return record;
}

// Stands in for the editor: the document's record source gives what the "controls"
// hold, and typing reports a change done.
class FakeEditor
{
public:
    explicit FakeEditor(Document& document) : m_document(document)
    {
        m_record = document.content();
        document.setRecordSource([this] { return m_record; });
    }

    void type(const QString& text)
    {
        m_record.labelText = AttributedString(RichText(labelTextOf(m_record) + text));
        m_document.updateChangeCount();
    }

private:
    Document& m_document;
    Content m_record;
};

// Every copy in the own type below the recovery root.
QStringList recoveryCopies(const QString& root)
{
    QStringList copies;
    QDirIterator it(root, {QStringLiteral("*.lomir")}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        copies.append(it.next());
    return copies;
}

// Runs in a child process: an untitled document with typed text, then a deliberate stop.
int runFatalCase(const char* name)
{
    ScriptedUserInterface userInterface;
    DocumentController controller(userInterface, qEnvironmentVariable(kRecoveryRootVariable),
                                  DocumentController::AutosaveTiming{1h, 1h});
    Document* untitled = controller.newDocument();
    FakeEditor editor(*untitled);
    editor.type(QStringLiteral("Typed before the stop"));
    Document* untouched = controller.newDocument();
    Q_UNUSED(untouched);
    if (std::strcmp(name, "stopWithUnsavedDocument") == 0)
        fatalError("Arithmetic overflow");
    else if (std::strcmp(name, "endWithUnsavedDocument") != 0)
        return 2;
    return 0;
}

} // namespace

class DocumentControllerTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<QTemporaryDir> m_recoveryRoot;

    QString path(const QString& name) const { return m_dir.filePath(name); }
    QString recoveryRoot() const { return m_recoveryRoot->path(); }

    QString writeOwnTypeFile(const QString& name, const Content& record)
    {
        const QString file = path(name);
        writeFile(file, dataOfType(record, ownType()).value());
        return file;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QCoreApplication::setOrganizationName(QStringLiteral("LomirTests"));
        QCoreApplication::setApplicationName(QStringLiteral("DocumentControllerTest"));
    }

    void init()
    {
        m_recoveryRoot = std::make_unique<QTemporaryDir>();
        QSettings().clear();
    }

    void saveDestinationTakesTheTypeFromTheNameOrTheFilter_data()
    {
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<QString>("filterType");
        QTest::addColumn<QString>("type");
        QTest::newRow("own extension, text filter")
            << QStringLiteral("/a/label.lomir") << QString(kPlainTextType) << ownType();
        QTest::newRow("text extension, own filter")
            << QStringLiteral("/a/label.txt") << ownType() << QString(kPlainTextType);
        QTest::newRow("rtf extension in capitals")
            << QStringLiteral("/a/LABEL.RTF") << ownType() << QString(kRtfType);
        QTest::newRow("no extension")
            << QStringLiteral("/a/label") << QString(kRtfType) << QString(kRtfType);
        QTest::newRow("unknown extension")
            << QStringLiteral("/a/label.v2") << QString(kPlainTextType) << QString(kPlainTextType);
    }

    void saveDestinationTakesTheTypeFromTheNameOrTheFilter()
    {
        QFETCH(QString, chosen);
        QFETCH(QString, filterType);
        QFETCH(QString, type);
        QCOMPARE(saveDestination(chosen, filterType), (SaveDestination{chosen, type}));
    }

    void newDocumentsAreNumberedUntitledDocuments()
    {
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(), kQuickTiming);
        QSignalSpy added(&controller, &DocumentController::documentAdded);
        Document* first = controller.newDocument();
        Document* second = controller.newDocument();
        QCOMPARE(added.count(), 2);
        QCOMPARE(first->displayName(), QStringLiteral("Untitled"));
        QCOMPARE(second->displayName(), QStringLiteral("Untitled 2"));
        QVERIFY(controller.closeDocument(*first));
        QCOMPARE(controller.newDocument()->displayName(), QStringLiteral("Untitled"));
        QCOMPARE(controller.documents().size(), std::size_t(2));
    }

    void twoNewDocumentsHaveIndependentRecordsWithIdenticalDefaults()
    {
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(), kQuickTiming);
        Document* first = controller.newDocument();
        Document* second = controller.newDocument();
        QVERIFY(&first->content() != &second->content());
        const Content defaults;
        for (const Document* document : {first, second}) {
            QCOMPARE(document->content().quantity, defaults.quantity);
            QCOMPARE(document->content().serialStartFrom, defaults.serialStartFrom);
            QCOMPARE(document->content().width, defaults.width);
            QCOMPARE(document->content().height, defaults.height);
            QCOMPARE(document->content().magnification, defaults.magnification);
            QCOMPARE(document->content().outputSpacing, defaults.outputSpacing);
        }
        // Editing one leaves the other as it was.
        FakeEditor editor(*first);
        editor.type(QStringLiteral("Only in the first"));
        QVERIFY(first->isModified());
        QVERIFY(!second->isModified());
        QCOMPARE(labelTextOf(second->currentRecord()), QString());
    }

    void aPlainTextFileOpensWithItsTextAndTheDefaultSettings()
    {
        const QString file = path(QStringLiteral("opened.txt"));
        QVERIFY(writeFile(file, "Honey\n500 g"));
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(), kQuickTiming);
        QSignalSpy added(&controller, &DocumentController::documentAdded);
        Document* document = controller.openDocument(file);
        QVERIFY(document);
        QCOMPARE(added.count(), 1);
        QCOMPARE(labelTextOf(document->content()), QStringLiteral("Honey\n500 g"));
        QCOMPARE(document->content().quantity, QStringLiteral("10"));
        QCOMPARE(document->content().serialStartFrom, std::optional(QStringLiteral("0")));
        QCOMPARE(document->content().width, QStringLiteral("2.0"));
        QCOMPARE(document->content().height, QStringLiteral("12"));
        QCOMPARE(document->content().dimensions, 0);
        QCOMPARE(document->content().metric, 0);
        QCOMPARE(document->content().magnification, 500.0);
        QCOMPARE(document->content().outputSpacing, 1);
        QCOMPARE(document->fileType(), QString(kPlainTextType));
        QCOMPARE(controller.recentFiles(), QStringList{file});
    }

    void openingAnOpenFileShowsItsDocument()
    {
        const QString file = writeOwnTypeFile(QStringLiteral("twice.lomir"), Content());
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(), kQuickTiming);
        Document* first = controller.openDocument(file);
        QSignalSpy shown(&controller, &DocumentController::documentShowRequested);
        QCOMPARE(controller.openDocument(m_dir.path() + QStringLiteral("/./twice.lomir")), first);
        QCOMPARE(shown.count(), 1);
        QCOMPARE(controller.documents().size(), std::size_t(1));
    }

    void anUntouchedNewDocumentGivesWayToAnOpenedFile()
    {
        const QString file = writeOwnTypeFile(QStringLiteral("replaces.lomir"), Content());
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(), kQuickTiming);
        Document* untitled = controller.newDocument();
        QSignalSpy closed(&controller, &DocumentController::documentClosed);
        Document* opened = controller.openDocument(file);
        QCOMPARE(closed.count(), 1);
        QCOMPARE(closed.first().first().value<Document*>(), untitled);
        QCOMPARE(controller.documents(), std::vector<Document*>{opened});

        // An edited one stays.
        Document* edited = controller.newDocument();
        edited->updateChangeCount();
        controller.openDocument(writeOwnTypeFile(QStringLiteral("beside.lomir"), Content()));
        QCOMPARE(controller.documents().size(), std::size_t(3));
    }

    void failuresToOpenAreShownNamingTheFile_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("missing file") << QStringLiteral("missing.lomir") << QByteArray();
        QTest::newRow("damaged document")
            << QStringLiteral("damaged.lomir") << QByteArray(R"({"labelText":"AAAA"})");
        QTest::newRow("unknown type") << QStringLiteral("label.doc") << QByteArray("x");
    }

    void failuresToOpenAreShownNamingTheFile()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, contents);
        const QString file = path(name);
        if (!contents.isEmpty())
            QVERIFY(writeFile(file, contents));
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(), kQuickTiming);
        QSignalSpy added(&controller, &DocumentController::documentAdded);
        QVERIFY(!controller.openDocument(file));
        QCOMPARE(added.count(), 0);
        QCOMPARE(userInterface.errors.size(), std::size_t(1));
        const auto& shown = userInterface.errors.front();
        QVERIFY2(shown.summary.contains(name), qPrintable(shown.summary));
        QVERIFY(!shown.error.message.isEmpty());
        QVERIFY(controller.recentFiles().isEmpty());
    }

    void savingANewDocumentAsksWhereAndKeepsTheChoice()
    {
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(), kQuickTiming);
        Document* document = controller.newDocument();
        FakeEditor editor(*document);
        editor.type(QStringLiteral("Fig"));

        userInterface.saveDestinations.push_back(SaveDestination{});
        QVERIFY(!controller.saveDocument(*document));
        QVERIFY(document->isModified());

        const QString file = path(QStringLiteral("fig.txt"));
        userInterface.saveDestinations.push_back(SaveDestination{file, QString(kPlainTextType)});
        QVERIFY(controller.saveDocument(*document));
        QCOMPARE(readFile(file), QByteArray("Fig"));
        QCOMPARE(document->filePath(), file);
        QCOMPARE(document->fileType(), QString(kPlainTextType));
        QCOMPARE(document->displayName(), QStringLiteral("fig.txt"));
        QVERIFY(!document->isModified());
        QCOMPARE(userInterface.askedForDestination.size(), 2);

        // Saving again writes to the same file without asking.
        editor.type(QStringLiteral(" jam"));
        QVERIFY(controller.saveDocument(*document));
        QCOMPARE(readFile(file), QByteArray("Fig jam"));
        QCOMPARE(userInterface.askedForDestination.size(), 2);
        QCOMPARE(controller.recentFiles(), QStringList{file});
    }

    void aFailedSaveIsShownAndKeepsTheChanges()
    {
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(), kQuickTiming);
        Document* document = controller.newDocument();
        FakeEditor editor(*document);
        editor.type(QStringLiteral("Pear"));
        const QString file = path(QStringLiteral("no-such-folder/pear.lomir"));
        userInterface.saveDestinations.push_back(SaveDestination{file, ownType()});
        QVERIFY(!controller.saveDocument(*document));
        QCOMPARE(userInterface.errors.size(), std::size_t(1));
        QVERIFY(userInterface.errors.front().summary.contains(QStringLiteral("pear.lomir")));
        QVERIFY(userInterface.errors.front().error.message.contains(file));
        QVERIFY(document->isModified());
        QVERIFY(document->filePath().isEmpty());
        QVERIFY(!QFile::exists(file));
    }

    void editingAndSavingWritesTheEditorsStateWhileTheRecordStaysAsRead()
    {
        Content opened = recordWithText(QStringLiteral("As opened"), QStringLiteral("5"));
        const QString file = writeOwnTypeFile(QStringLiteral("state.lomir"), opened);
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(), kQuickTiming);
        Document* document = controller.openDocument(file);
        QVERIFY(document);
        Content controls = recordWithText(QStringLiteral("As edited"), QStringLiteral("7"));
        controls.frameWidth = 99.5;
        document->setRecordSource([controls] { return controls; });
        document->updateChangeCount();
        QVERIFY(controller.saveDocument(*document));
        const Content written = Content::decode(readFile(file)).value();
        QCOMPARE(labelTextOf(written), QStringLiteral("As edited"));
        QCOMPARE(written.quantity, QStringLiteral("7"));
        QCOMPARE(written.frameWidth, std::optional(99.5));
        QCOMPARE(labelTextOf(document->content()), QStringLiteral("As opened"));
        QCOMPARE(document->content().quantity, QStringLiteral("5"));
    }

    void closingAskesAboutUnsavedChanges()
    {
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(), kQuickTiming);
        Document* untouched = controller.newDocument();
        QVERIFY(controller.closeDocument(*untouched));
        QVERIFY(userInterface.askedToSaveChanges.isEmpty());

        Document* document = controller.newDocument();
        FakeEditor editor(*document);
        editor.type(QStringLiteral("Lemon"));
        userInterface.saveChangesAnswers.push_back(SaveChangesAnswer::Cancel);
        QVERIFY(!controller.closeDocument(*document));
        QCOMPARE(controller.documents().size(), std::size_t(1));

        // Save, then cancel the destination: the document stays.
        userInterface.saveChangesAnswers.push_back(SaveChangesAnswer::Save);
        userInterface.saveDestinations.push_back(SaveDestination{});
        QVERIFY(!controller.closeDocument(*document));
        QCOMPARE(controller.documents().size(), std::size_t(1));

        // Save to a file: written, then closed.
        const QString file = path(QStringLiteral("lemon.lomir"));
        userInterface.saveChangesAnswers.push_back(SaveChangesAnswer::Save);
        userInterface.saveDestinations.push_back(SaveDestination{file, ownType()});
        QSignalSpy closed(&controller, &DocumentController::documentClosed);
        QVERIFY(controller.closeDocument(*document));
        QCOMPARE(closed.count(), 1);
        QCOMPARE(labelTextOf(Content::decode(readFile(file)).value()), QStringLiteral("Lemon"));
        QVERIFY(controller.documents().empty());
        QCOMPARE(userInterface.askedToSaveChanges,
                 (QStringList{QStringLiteral("Untitled"), QStringLiteral("Untitled"),
                              QStringLiteral("Untitled")}));
        QCOMPARE(userInterface.unexpectedQuestions, 0);
    }

    void closingEverythingAsksAboutEachEditedDocumentAndACancelKeepsAllOpen()
    {
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(), kQuickTiming);
        Document* first = controller.newDocument();
        Document* second = controller.newDocument();
        Document* third = controller.newDocument();
        Document* untouched = controller.newDocument();
        first->updateChangeCount();
        second->updateChangeCount();
        third->updateChangeCount();
        userInterface.saveChangesAnswers = {SaveChangesAnswer::DontSave, SaveChangesAnswer::Cancel};
        QVERIFY(!controller.closeAllDocuments());
        QCOMPARE(controller.documents(), (std::vector<Document*>{first, second, third, untouched}));
        QCOMPARE(userInterface.askedToSaveChanges,
                 (QStringList{QStringLiteral("Untitled"), QStringLiteral("Untitled 2")}));

        userInterface.askedToSaveChanges.clear();
        userInterface.saveChangesAnswers = {
            SaveChangesAnswer::DontSave, SaveChangesAnswer::DontSave, SaveChangesAnswer::DontSave};
        QVERIFY(controller.closeAllDocuments());
        QVERIFY(controller.documents().empty());
        QCOMPARE(userInterface.askedToSaveChanges.size(), 3);
        QCOMPARE(userInterface.unexpectedQuestions, 0);
    }

    void revertingAsksAndReadsTheFileAgain()
    {
        const QString file = path(QStringLiteral("revert.txt"));
        QVERIFY(writeFile(file, "Saved"));
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(),
                                      DocumentController::AutosaveTiming{1h, 1h});
        Document* document = controller.openDocument(file);
        FakeEditor editor(*document);
        editor.type(QStringLiteral(" and edited"));
        QVERIFY(writeFile(file, "Saved again elsewhere"));

        userInterface.revertAnswers.push_back(false);
        QVERIFY(!controller.revertDocument(*document));
        QVERIFY(document->isModified());

        userInterface.revertAnswers.push_back(true);
        QSignalSpy reverted(document, &Document::reverted);
        QVERIFY(controller.revertDocument(*document));
        QCOMPARE(reverted.count(), 1);
        QVERIFY(!document->isModified());
        QCOMPARE(labelTextOf(document->content()), QStringLiteral("Saved again elsewhere"));

        // A document without a file has nothing to revert to and is not asked about.
        Document* untitled = controller.newDocument();
        untitled->updateChangeCount();
        QVERIFY(!controller.revertDocument(*untitled));
        QCOMPARE(userInterface.askedToRevert.size(), 2);
    }

    void recentFilesAreNewestFirstWithoutRepeatsAndPersist()
    {
        ScriptedUserInterface userInterface;
        QStringList files;
        {
            DocumentController controller(userInterface, recoveryRoot(), kQuickTiming);
            for (int i = 0; i < DocumentController::kMaximumRecentFiles + 2; ++i) {
                files.append(writeOwnTypeFile(QStringLiteral("recent-%1.lomir").arg(i), Content()));
                QVERIFY(controller.openDocument(files.last()));
            }
            // Opening an older one again moves it to the front.
            Document* again = controller.documentForFile(files[3]);
            QVERIFY(controller.closeDocument(*again));
            QVERIFY(controller.openDocument(files[3]));
        }
        DocumentController later(userInterface, recoveryRoot(), kQuickTiming);
        const QStringList recent = later.recentFiles();
        QCOMPARE(recent.size(), DocumentController::kMaximumRecentFiles);
        QCOMPARE(recent.first(), files[3]);
        QCOMPARE(recent[1], files[11]);
        QCOMPARE(recent.count(files[3]), 1);
        QVERIFY(!recent.contains(files[0]));

        QSignalSpy changed(&later, &DocumentController::recentFilesChanged);
        later.clearRecentFiles();
        QCOMPARE(changed.count(), 1);
        QVERIFY(later.recentFiles().isEmpty());
    }

    void aTitledDocumentsFileHoldsAnEditWithinFiveSecondsWithoutSaving()
    {
        const QString file = writeOwnTypeFile(QStringLiteral("autosaved.lomir"),
                                              recordWithText(QStringLiteral("Before")));
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(),
                                      DocumentController::AutosaveTiming{});
        Document* document = controller.openDocument(file);
        FakeEditor editor(*document);
        QElapsedTimer sinceEdit;
        editor.type(QStringLiteral(" and after"));
        sinceEdit.start();
        QTRY_VERIFY_WITH_TIMEOUT(labelTextOf(Content::decode(readFile(file)).value()) ==
                                     QStringLiteral("Before and after"),
                                 5000);
        QVERIFY2(sinceEdit.elapsed() <= 5000, qPrintable(QString::number(sinceEdit.elapsed())));
        QVERIFY(!document->isModified());
        QVERIFY(recoveryCopies(recoveryRoot()).isEmpty());
    }

    void anUntitledDocumentIsAutosavedToTheRecoveryFolder()
    {
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(),
                                      DocumentController::AutosaveTiming{});
        Document* document = controller.newDocument();
        FakeEditor editor(*document);
        editor.type(QStringLiteral("Not yet saved"));
        QTRY_COMPARE_WITH_TIMEOUT(recoveryCopies(recoveryRoot()).size(), 1, 5000);
        const QString copy = recoveryCopies(recoveryRoot()).first();
        QCOMPARE(labelTextOf(Content::decode(readFile(copy)).value()),
                 QStringLiteral("Not yet saved"));
        // The document itself still has unsaved changes.
        QVERIFY(document->isModified());

        // Thrown away, its copy goes too.
        userInterface.saveChangesAnswers.push_back(SaveChangesAnswer::DontSave);
        QVERIFY(controller.closeDocument(*document));
        QVERIFY(recoveryCopies(recoveryRoot()).isEmpty());
    }

    void continuousEditingIsStillAutosaved()
    {
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(), kQuickTiming);
        Document* document = controller.newDocument();
        FakeEditor editor(*document);
        // A change every 50 ms never leaves the quiet time of 100 ms, but the latest
        // autosave comes 300 ms after the first change.
        QElapsedTimer typing;
        typing.start();
        while (recoveryCopies(recoveryRoot()).isEmpty() && typing.elapsed() < 2000) {
            editor.type(QStringLiteral("x"));
            QTest::qWait(50);
        }
        QVERIFY(!recoveryCopies(recoveryRoot()).isEmpty());
        QVERIFY2(typing.elapsed() < 600, qPrintable(QString::number(typing.elapsed())));
    }

    void autosavingOnRequestWritesAtOnce()
    {
        const QString file = writeOwnTypeFile(QStringLiteral("focus.lomir"), Content());
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(),
                                      DocumentController::AutosaveTiming{1h, 1h});
        Document* document = controller.openDocument(file);
        FakeEditor editor(*document);
        editor.type(QStringLiteral("Left the window"));
        controller.autosave(*document);
        QCOMPARE(labelTextOf(Content::decode(readFile(file)).value()),
                 QStringLiteral("Left the window"));
        QVERIFY(!document->isModified());
    }

    void aFailingAutosaveKeepsTheEditsForRecoveryAndIsToldOnce()
    {
        const QString folder = path(QStringLiteral("vanishing"));
        QVERIFY(QDir().mkpath(folder));
        const QString file = folder + QStringLiteral("/label.lomir");
        QVERIFY(writeFile(file, dataOfType(Content(), ownType()).value()));
        ScriptedUserInterface userInterface;
        DocumentController controller(userInterface, recoveryRoot(),
                                      DocumentController::AutosaveTiming{1h, 1h});
        Document* document = controller.openDocument(file);
        FakeEditor editor(*document);
        // The file's folder is replaced by a file: nothing can be written there.
        QVERIFY(QDir(folder).removeRecursively());
        QVERIFY(writeFile(folder, "blocked"));
        editor.type(QStringLiteral("Kept anyway"));
        controller.autosave(*document);
        editor.type(QStringLiteral("!"));
        controller.autosave(*document);
        QCOMPARE(userInterface.errors.size(), std::size_t(1));
        QVERIFY(document->isModified());
        const QStringList copies = recoveryCopies(recoveryRoot());
        QCOMPARE(copies.size(), 1);
        QCOMPARE(labelTextOf(Content::decode(readFile(copies.first())).value()),
                 QStringLiteral("Kept anyway!"));
    }

    void documentsLeftUnsavedComeBackRecovered()
    {
        const QString titledFile = path(QStringLiteral("titled.txt"));
        QVERIFY(writeFile(titledFile, "On disk"));
        ScriptedUserInterface userInterface;
        {
            DocumentController before(userInterface, recoveryRoot(),
                                      DocumentController::AutosaveTiming{1h, 1h});
            Document* untitled = before.newDocument();
            FakeEditor untitledEditor(*untitled);
            untitledEditor.type(QStringLiteral("Untitled work"));
            Document* titled = before.openDocument(titledFile);
            FakeEditor titledEditor(*titled);
            titledEditor.type(QStringLiteral(" with changes"));
            Document* saved = before.newDocument();
            Q_UNUSED(saved);
            before.writeRecoveryCopies();
            QCOMPARE(recoveryCopies(recoveryRoot()).size(), 2);
            // While this program runs, another one leaves its copies alone.
            ScriptedUserInterface otherInterface;
            DocumentController other(otherInterface, recoveryRoot(), kQuickTiming);
            QCOMPARE(other.restoreRecoveredDocuments(), 0);
            // The program ends without closing its documents.
        }
        DocumentController after(userInterface, recoveryRoot(), kQuickTiming);
        QSignalSpy added(&after, &DocumentController::documentAdded);
        after.launch({});
        QCOMPARE(added.count(), 2);
        const std::vector<Document*> documents = after.documents();
        QCOMPARE(documents.size(), std::size_t(2));
        Document* untitled = documents[0]->filePath().isEmpty() ? documents[0] : documents[1];
        Document* titled = untitled == documents[0] ? documents[1] : documents[0];
        QCOMPARE(labelTextOf(untitled->content()), QStringLiteral("Untitled work"));
        QCOMPARE(untitled->displayName(), QStringLiteral("Untitled"));
        QVERIFY(untitled->isModified() && untitled->isRecovered());
        QCOMPARE(labelTextOf(titled->content()), QStringLiteral("On disk with changes"));
        QCOMPARE(titled->filePath(), titledFile);
        QCOMPARE(titled->fileType(), QString(kPlainTextType));
        QVERIFY(titled->isModified() && titled->isRecovered());
        QCOMPARE(readFile(titledFile), QByteArray("On disk"));

        // Saved or thrown away, the copies leave the recovery folder.
        QVERIFY(after.saveDocument(*titled));
        QCOMPARE(readFile(titledFile), QByteArray("On disk with changes"));
        QCOMPARE(recoveryCopies(recoveryRoot()).size(), 1);
        userInterface.saveChangesAnswers.push_back(SaveChangesAnswer::DontSave);
        QVERIFY(after.closeDocument(*untitled));
        QVERIFY(recoveryCopies(recoveryRoot()).isEmpty());

        // Nothing is recovered twice.
        ScriptedUserInterface thirdInterface;
        DocumentController third(thirdInterface, recoveryRoot(), kQuickTiming);
        QCOMPARE(third.restoreRecoveredDocuments(), 0);
    }

    void aDeliberateStopWritesUnsavedDocumentsToTheRecoveryFolderFirst()
    {
        qputenv(kRecoveryRootVariable, recoveryRoot().toUtf8());
        testing::verifyStops(QStringLiteral("stopWithUnsavedDocument"),
                             QStringLiteral("Arithmetic overflow"));
        const QStringList copies = recoveryCopies(recoveryRoot());
        QCOMPARE(copies.size(), 1);
        QCOMPARE(labelTextOf(Content::decode(readFile(copies.first())).value()),
                 QStringLiteral("Typed before the stop"));

        // The next start brings it back.
        ScriptedUserInterface userInterface;
        DocumentController next(userInterface, recoveryRoot(), kQuickTiming);
        QCOMPARE(next.restoreRecoveredDocuments(), 1);
        QCOMPARE(labelTextOf(next.documents().front()->content()),
                 QStringLiteral("Typed before the stop"));
    }

    void withoutAStopNothingIsWrittenOnTheWayOut()
    {
        qputenv(kRecoveryRootVariable, recoveryRoot().toUtf8());
        testing::verifyRunsToEnd(QStringLiteral("endWithUnsavedDocument"));
        QVERIFY(recoveryCopies(recoveryRoot()).isEmpty());
    }
};

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    if (testing::isFatalCaseRun(argc, argv))
        return runFatalCase(argv[2]);
    DocumentControllerTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_documentcontroller.moc"
