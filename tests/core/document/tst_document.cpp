#include "core/document/document.h"
#include "core/document/documentformats.h"
#include "support/fatalstop.h"
#include "support/files.h"
#include "support/records.h"
#include "support/samplelabels.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <cerrno>
#include <cstring>

using namespace lomir;
using namespace lomir::testing;
using testing::compareRecords;
using testing::readFile;
using testing::writeFile;

namespace {

Content defaults()
{
    return Content();
}

// A record as a file of the own type holds it after the user worked on it.
Content storedRecord()
{
    Content record;
    record.labelText = AttributedString(boldHelveticaLabel(QStringLiteral("Plum jam 2026")));
    record.quantity = QStringLiteral("24");
    record.serialStartFrom = QStringLiteral("100");
    record.width = QStringLiteral("50.8");
    record.height = QStringLiteral("25.4");
    record.dimensions = 1;
    record.metric = 1;
    record.magnification = 250.0;
    record.outputSpacing = 0;
    record.frameWidth = 144.0;
    record.frameHeight = 72.0;
    return record;
}

// What the editor's controls hold after further changes.
Content editedRecord()
{
    Content record = storedRecord();
    record.labelText = AttributedString(boldHelveticaLabel(QStringLiteral("Quince jelly 2026")));
    record.quantity = QStringLiteral("48");
    record.serialStartFrom.reset();
    record.magnification = 320.0;
    record.frameWidth = 150.0;
    return record;
}

QString ownType()
{
    return QString(kLomirDocumentType);
}

// Cases run in a child process because they stop the program.
int runFatalCase(const char* name)
{
    QTemporaryDir dir;
    Document document;
    if (std::strcmp(name, "plainTextNotUtf8") == 0) {
        const QString path = dir.filePath(QStringLiteral("latin1.txt"));
        writeFile(path, "caf\xE9");
        (void)document.readFromFile(path, QString(kPlainTextType));
    } else if (std::strcmp(name, "rtfUnreadable") == 0) {
        const QString path = dir.filePath(QStringLiteral("broken.rtf"));
        writeFile(path, "this is not RTF");
        (void)document.readFromFile(path, QString(kRtfType));
    } else if (std::strcmp(name, "revertToTextNoLongerUtf8") == 0) {
        const QString path = dir.filePath(QStringLiteral("label.txt"));
        writeFile(path, "caf\xC3\xA9");
        if (!document.readFromFile(path, QString(kPlainTextType)))
            return 3;
        writeFile(path, "caf\xE9");
        (void)document.revertToSaved();
    } else if (std::strcmp(name, "utf8Text") == 0) {
        const QString path = dir.filePath(QStringLiteral("label.txt"));
        writeFile(path, "caf\xC3\xA9");
        if (!document.readFromFile(path, QString(kPlainTextType)))
            return 3;
    } else {
        return 2;
    }
    return 0;
}

} // namespace

class DocumentTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString path(const QString& name) const { return m_dir.filePath(name); }

    QString writeOwnTypeFile(const QString& name, const Content& record)
    {
        const QString file = path(name);
        writeFile(file, dataOfType(record, ownType()).value());
        return file;
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void twoNewDocumentsHaveIndependentRecordsWithIdenticalDefaults()
    {
        Document first;
        Document second;
        compareRecords(first.content(), defaults());
        compareRecords(second.content(), defaults());
        QVERIFY(&first.content() != &second.content());

        // Reading a file into one leaves the other at the defaults.
        QVERIFY(first.readFromFile(writeOwnTypeFile(QStringLiteral("first.lomir"), storedRecord()),
                                   ownType()));
        compareRecords(first.content(), storedRecord());
        compareRecords(second.content(), defaults());
    }

    void newDocumentIsUntitledUnmodifiedAndOfTheOwnType()
    {
        Document document;
        QVERIFY(document.filePath().isEmpty());
        QCOMPARE(document.fileType(), ownType());
        QVERIFY(!document.isModified());
        QVERIFY(!document.isRecovered());
        document.setUntitledName(QStringLiteral("Untitled 3"));
        QCOMPARE(document.displayName(), QStringLiteral("Untitled 3"));
    }

    void conversionFactorsAreTheExactValues()
    {
        Document document;
        QCOMPARE(document.pointToMillimetersConversionFactor(), 0.3527777777777778);
        QCOMPARE(document.pointToInchesConversionFactor(), 0.013888888888888888);
        QVERIFY(document.pointToMillimetersConversionFactor() != 25.4 / 72.0);
    }

    void plainTextOpensWithTheFilesTextAndDefaultSettings()
    {
        const QString file = path(QStringLiteral("jar.txt"));
        QVERIFY(writeFile(file, "Apricot\nbest before 2027 \xE2\x82\xAC"));
        Document document;
        QVERIFY(document.readFromFile(file, QString(kPlainTextType)));
        Content expected;
        expected.labelText =
            AttributedString(RichText(QStringLiteral("Apricot\nbest before 2027 €")));
        compareRecords(document.content(), expected);
        QCOMPARE(document.filePath(), file);
        QCOMPARE(document.fileType(), QString(kPlainTextType));
        QCOMPARE(document.displayName(), QStringLiteral("jar.txt"));
        QVERIFY(!document.isModified());
    }

    void savingWritesTheEditorsStateAndKeepsTheRecordRead()
    {
        const QString file = writeOwnTypeFile(QStringLiteral("edited.lomir"), storedRecord());
        Document document;
        QVERIFY(document.readFromFile(file, ownType()));
        document.setRecordSource([] { return editedRecord(); });
        document.updateChangeCount();
        QVERIFY(document.isModified());

        QVERIFY(document.saveToFile(file, ownType()));
        QVERIFY(!document.isModified());
        const Result<Content> written = Content::decode(readFile(file));
        QVERIFY(written.ok());
        compareRecords(*written, editedRecord());
        compareRecords(document.content(), storedRecord());
    }

    void withoutARecordSourceTheRecordReadIsSaved()
    {
        Document document;
        QVERIFY(document.readFromFile(
            writeOwnTypeFile(QStringLiteral("plain-save.lomir"), storedRecord()), ownType()));
        const QString copy = path(QStringLiteral("copy.lomir"));
        QVERIFY(document.saveToFile(copy, ownType()));
        compareRecords(Content::decode(readFile(copy)).value(), storedRecord());
        QCOMPARE(document.filePath(), copy);
    }

    void savingAsAnotherTypeTakesThatType()
    {
        Document document;
        document.setRecordSource([] { return editedRecord(); });
        QSignalSpy pathChanges(&document, &Document::filePathChanged);
        const QString file = path(QStringLiteral("as-text.txt"));
        QVERIFY(document.saveToFile(file, QString(kPlainTextType)));
        QCOMPARE(readFile(file), QByteArray("Quince jelly 2026"));
        QCOMPARE(document.fileType(), QString(kPlainTextType));
        QCOMPARE(document.filePath(), file);
        QCOMPARE(pathChanges.count(), 1);
    }

    void aFailedSaveChangesNothing()
    {
        const QString file = writeOwnTypeFile(QStringLiteral("kept.lomir"), storedRecord());
        const QByteArray before = readFile(file);
        Document document;
        QVERIFY(document.readFromFile(file, ownType()));
        // A record JSON cannot hold fails while it is encoded, before the file is touched.
        document.setRecordSource([] {
            Content record = editedRecord();
            record.magnification = std::numeric_limits<double>::infinity();
            return record;
        });
        document.updateChangeCount();
        const Status saved = document.saveToFile(file, ownType());
        QVERIFY(!saved);
        QVERIFY2(saved.error().message.contains(file), qPrintable(saved.error().message));
        QVERIFY(document.isModified());
        QCOMPARE(readFile(file), before);
    }

    void aSaveThatCannotWriteNamesTheFileAndKeepsTheDocument()
    {
        Document document;
        document.updateChangeCount();
        // A file inside a file: the folder cannot exist.
        const QString blocker = path(QStringLiteral("blocker"));
        QVERIFY(writeFile(blocker, "x"));
        const QString file = blocker + QStringLiteral("/label.lomir");
        const Status saved = document.saveToFile(file, ownType());
        QVERIFY(!saved);
        // The operating system's reason: a file stands where the folder should be.
        QCOMPARE(saved.error().domain, QString(kPosixErrorDomain));
        QCOMPARE(saved.error().code, ENOTDIR);
        QVERIFY2(saved.error().message.contains(file), qPrintable(saved.error().message));
        QVERIFY(document.filePath().isEmpty());
        QVERIFY(document.isModified());
    }

    void aChangeMarksTheDocumentEditedOnce()
    {
        Document document;
        QSignalSpy modified(&document, &Document::modifiedChanged);
        QSignalSpy changes(&document, &Document::changeDone);
        document.updateChangeCount();
        document.updateChangeCount();
        QCOMPARE(changes.count(), 2);
        QCOMPARE(modified.count(), 1);
        QCOMPARE(modified.first().first().toBool(), true);
    }

    void aFileThatCannotBeDecodedLeavesTheDocumentAsItWas()
    {
        const QString file = path(QStringLiteral("no-quantity.lomir"));
        QByteArray json = dataOfType(storedRecord(), ownType()).value();
        json.replace("\"quantity\":\"24\",", "");
        QVERIFY(writeFile(file, json));
        Document document;
        const Status read = document.readFromFile(file, ownType());
        QVERIFY(!read);
        QCOMPARE(read.error().code, kDecodingValueNotFound);
        QVERIFY2(read.error().message.contains(file), qPrintable(read.error().message));
        compareRecords(document.content(), defaults());
        QVERIFY(document.filePath().isEmpty());
    }

    void aTypeNameInOtherLetterCaseIsRefused()
    {
        const QString file = path(QStringLiteral("case.rtf"));
        QVERIFY(writeFile(file, "{\\rtf1 hello}"));
        Document document;
        const Status read = document.readFromFile(file, QStringLiteral("public.RTF"));
        QVERIFY(!read);
        QCOMPARE(read.error().domain, QString(kOSStatusErrorDomain));
        QCOMPARE(read.error().code, kUnsupportedTypeError);
    }

    void revertingReadsTheFileAgain()
    {
        const QString file = path(QStringLiteral("revert.txt"));
        QVERIFY(writeFile(file, "first"));
        Document document;
        QVERIFY(document.readFromFile(file, QString(kPlainTextType)));
        QVERIFY(writeFile(file, "second"));
        document.updateChangeCount();
        QSignalSpy reverted(&document, &Document::reverted);
        QVERIFY(document.revertToSaved());
        QCOMPARE(reverted.count(), 1);
        QCOMPARE(document.content().labelText.nsAttributedString().string(),
                 QStringLiteral("second"));
        QVERIFY(!document.isModified());
    }

    void aRecoveredCopyComesBackModifiedWithItsFile()
    {
        const QString copy = writeOwnTypeFile(QStringLiteral("copy-1.lomir"), editedRecord());
        const QString original = path(QStringLiteral("original.txt"));
        Document document;
        QSignalSpy recovered(&document, &Document::recoveredChanged);
        QVERIFY(document.readRecoveredCopy(copy, original, QString(kPlainTextType)));
        compareRecords(document.content(), editedRecord());
        QCOMPARE(document.filePath(), original);
        QCOMPARE(document.fileType(), QString(kPlainTextType));
        QVERIFY(document.isModified());
        QVERIFY(document.isRecovered());
        QCOMPARE(recovered.count(), 1);

        // Saving ends the recovered state.
        QVERIFY(document.saveToFile(original, QString(kPlainTextType)));
        QVERIFY(!document.isRecovered());
        QVERIFY(!document.isModified());
    }

    void unreadableTextStopsTheProgram_data()
    {
        QTest::addColumn<QString>("caseName");
        QTest::newRow("plain text that is not UTF-8") << QStringLiteral("plainTextNotUtf8");
        QTest::newRow("RTF that cannot be read") << QStringLiteral("rtfUnreadable");
        QTest::newRow("reverting to text no longer UTF-8")
            << QStringLiteral("revertToTextNoLongerUtf8");
    }

    void unreadableTextStopsTheProgram()
    {
        QFETCH(QString, caseName);
        testing::verifyStops(caseName,
                             QStringLiteral("Lomir stopped opening a file whose text it cannot "
                                            "read"));
    }

    void readableTextDoesNotStop() { testing::verifyRunsToEnd(QStringLiteral("utf8Text")); }
};

int main(int argc, char* argv[])
{
    if (testing::isFatalCaseRun(argc, argv)) {
        QCoreApplication app(argc, argv);
        return runFatalCase(argv[2]);
    }
    QCoreApplication app(argc, argv);
    DocumentTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_document.moc"
