#include "document/documentfile.h"
#include "document/documentformats.h"
#include "document/documentlimits.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

using namespace lomir;

namespace {

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The message of a failed result, for the log; empty when it succeeded.
template <typename T> QByteArray failure(const Result<T>& result)
{
    return result ? QByteArray() : result.error().message.toUtf8();
}

} // namespace

class DocumentFileTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    QString path(const QString& name) const { return m_dir.filePath(name); }

    // The names in a folder, to see that a refused write left no temporary file.
    static QStringList namesIn(const QString& folder)
    {
        return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                      QDir::NoDotAndDotDot);
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_dir.isValid()); }

    void theLargestDocumentIsWrittenAndReadBack()
    {
        // The longest label text, and a quantity padded until the file is exactly as
        // large as Lomir opens.
        Content record;
        record.labelText = AttributedString(RichText(QString(kMaxLabelTextLength, QChar(0x20AC))));
        record.quantity.clear();
        const qint64 unpadded = dataOfType(record, QString(kLomirDocumentType)).value().size();
        record.quantity = QString(kMaxDocumentFileSize - unpadded, QLatin1Char('7'));

        QTemporaryDir folder(path(QStringLiteral("largest-XXXXXX")));
        const QString file = folder.filePath(QStringLiteral("largest.lomir"));
        const Status written = writeLabelFile(file, record, QString(kLomirDocumentType));
        QVERIFY2(written.ok(), failure(written).constData());
        QCOMPARE(QFileInfo(file).size(), kMaxDocumentFileSize);
        const Result<Content> read = readLabelFile(file, QString(kLomirDocumentType));
        QVERIFY2(read.ok(), failure(read).constData());
        QCOMPARE(read->labelText.nsAttributedString(), record.labelText.nsAttributedString());
        QCOMPARE(read->quantity, record.quantity);

        // One byte more is refused before anything is written.
        const QByteArray before = readAll(file);
        record.quantity.append(QLatin1Char('7'));
        const Status refused = writeLabelFile(file, record, QString(kLomirDocumentType));
        QVERIFY(!refused.ok());
        QCOMPARE(refused.error().domain, QString(kFileErrorDomain));
        QCOMPARE(refused.error().code, kFileTooLarge);
        QCOMPARE(refused.error().message,
                 QStringLiteral("Cannot write “%1”: The document would take more than 16 MB, "
                                "the largest file Lomir opens.")
                     .arg(file));
        QVERIFY(readAll(file) == before);
        QCOMPARE(namesIn(folder.path()), QStringList{QStringLiteral("largest.lomir")});
    }
};

QTEST_GUILESS_MAIN(DocumentFileTest)
#include "tst_documentfile.moc"
