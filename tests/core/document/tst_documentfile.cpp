#include "core/base/documentlimits.h"
#include "core/document/documentfile.h"
#include "core/document/documentformats.h"
#include "support/filecases.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <future>
#include <sys/stat.h>
#include <unistd.h>

using namespace lomir;

namespace {

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeAll(const QString& path, const QByteArray& data)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(data), data.size());
}

// Reads a file in a thread of its own, so that a read that blocks fails the test
// instead of hanging it. When it blocks on a named pipe, opening the pipe for writing
// and closing it again ends the read.
Result<Content> readWithoutHanging(const QString& path, const QString& typeName)
{
    auto reading = std::async(std::launch::async, [&] { return readLabelFile(path, typeName); });
    if (reading.wait_for(std::chrono::seconds(5)) == std::future_status::timeout) {
        const int writer = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_NONBLOCK);
        if (writer >= 0)
            ::close(writer);
        reading.wait();
        return Error{QStringLiteral("test"), 0, QStringLiteral("the read blocked")};
    }
    return reading.get();
}

// Checks a failure: its whole sentence, its domain and its code.
template <typename T>
void verifyFailure(const Result<T>& result, const QString& message, QLatin1StringView domain,
                   int code)
{
    QVERIFY(!result.ok());
    QCOMPARE(result.error().message, message);
    QCOMPARE(result.error().domain, QString(domain));
    QCOMPARE(result.error().code, code);
}

// Root may write where the permissions say no one may. For the length of a test this
// takes that away: the effective user becomes "nobody", and root again afterwards.
class WithoutRootPrivileges
{
public:
    WithoutRootPrivileges()
    {
        if (::geteuid() == 0)
            m_dropped = ::setegid(kNobody) == 0 && ::seteuid(kNobody) == 0;
    }
    ~WithoutRootPrivileges()
    {
        if (m_dropped) {
            [[maybe_unused]] const int user = ::seteuid(0);
            [[maybe_unused]] const int group = ::setegid(0);
        }
    }
    WithoutRootPrivileges(const WithoutRootPrivileges&) = delete;
    WithoutRootPrivileges& operator=(const WithoutRootPrivileges&) = delete;

    bool permissionsApply() const { return ::geteuid() != 0; }

private:
    static constexpr uid_t kNobody = 65534;
    bool m_dropped = false;
};

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
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        QVERIFY(testing::letOthersLookIn(m_dir.path()));
    }

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

    void onlyRegularFilesAreRead_data()
    {
        QDir folder(path(QStringLiteral("not-files")));
        QVERIFY(folder.mkpath(QStringLiteral(".")));
        testing::addNonRegularFileRows(folder);
    }

    void onlyRegularFilesAreRead()
    {
        QFETCH(QString, file);
        QFETCH(QString, reason);
        verifyFailure(readWithoutHanging(file, typeForFileName(file)),
                      QStringLiteral("Cannot open “%1”: %2.").arg(file, reason), kFileErrorDomain,
                      kNotARegularFile);
    }

    void aFileLargerThanTheLargestIsNotRead_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::newRow("one byte more") << kMaxDocumentFileSize + 1;
        // Reading this much would take minutes and more memory than the machine has.
        QTest::newRow("a terabyte") << (qint64(1) << 40);
    }

    void aFileLargerThanTheLargestIsNotRead()
    {
        QFETCH(qint64, size);
        const QString file = path(QStringLiteral("large-%1.txt").arg(size));
        QVERIFY(testing::makeSparseFile(file, size));
        const auto started = std::chrono::steady_clock::now();
        const Result<Content> read = readLabelFile(file, QString(kPlainTextType));
        QVERIFY(std::chrono::steady_clock::now() - started < std::chrono::seconds(1));
        QVERIFY(!read.ok());
        QCOMPARE(read.error().domain, QString(kFileErrorDomain));
        QCOMPARE(read.error().code, kFileTooLarge);
        QCOMPARE(read.error().message,
                 QStringLiteral("Cannot open “%1”: it is larger than 16 MB, the largest file "
                                "Lomir opens.")
                     .arg(file));
    }

    void aFileOfTheLargestSizeIsRead()
    {
        const QString file = path(QStringLiteral("largest.txt"));
        writeAll(file, QByteArray(kMaxDocumentFileSize - 1, ' ') + "x");
        const Result<QByteArray> read = readRegularFile(file);
        QVERIFY2(read.ok(), failure(read).constData());
        QCOMPARE(read->size(), kMaxDocumentFileSize);
        QVERIFY(read->endsWith(" x"));
    }

    void aFullDiskIsSaidToBeFull()
    {
        testing::SmallDisk disk(path(QStringLiteral("full")), 64);
        if (!disk.isMounted())
            QSKIP(qPrintable(disk.whyNot()));
        const QString file = disk.filePath(QStringLiteral("label.txt"));
        writeAll(file, "the label before");
        Content record;
        record.labelText = AttributedString(RichText(QString(100'000, QLatin1Char('x'))));
        verifyFailure(writeLabelFile(file, record, QString(kPlainTextType)),
                      QStringLiteral("Cannot write “%1”: the disk is full.").arg(file),
                      kPosixErrorDomain, ENOSPC);
        QCOMPARE(readAll(file), QByteArray("the label before"));
        QCOMPARE(namesIn(QFileInfo(file).path()), QStringList{QStringLiteral("label.txt")});
    }

    void aReadOnlyDiskIsSaidToBeReadOnly()
    {
        testing::SmallDisk disk(path(QStringLiteral("read-only")), 64);
        if (!disk.isMounted())
            QSKIP(qPrintable(disk.whyNot()));
        const QString existing = disk.filePath(QStringLiteral("label.lomir"));
        writeAll(existing, "the label before");
        QVERIFY(disk.makeReadOnly());
        const QString fresh = disk.filePath(QStringLiteral("new.lomir"));
        for (const QString& file : {existing, fresh}) {
            verifyFailure(writeLabelFile(file, Content(), QString(kLomirDocumentType)),
                          QStringLiteral("Cannot write “%1”: the disk is read-only.").arg(file),
                          kPosixErrorDomain, EROFS);
        }
        QCOMPARE(readAll(existing), QByteArray("the label before"));
        QVERIFY(!QFile::exists(fresh));
    }

    void permissionDeniedIsSaid()
    {
        // A folder others may read but not change, a file no one may read, and, to
        // show that the rest of the way is open, a folder everyone may change.
        const QString locked = path(QStringLiteral("locked"));
        QVERIFY(QDir().mkdir(locked));
        const QString existing = QDir(locked).filePath(QStringLiteral("label.lomir"));
        writeAll(existing, "the label before");
        QVERIFY(::chmod(QFile::encodeName(locked).constData(), 0555) == 0);
        // Changeable again afterwards, so that the temporary folder can be removed.
        const auto unlock =
            qScopeGuard([&] { ::chmod(QFile::encodeName(locked).constData(), 0755); });
        const QString secret = path(QStringLiteral("secret.txt"));
        writeAll(secret, "words");
        QVERIFY(::chmod(QFile::encodeName(secret).constData(), 0000) == 0);
        const QString open = path(QStringLiteral("open"));
        QVERIFY(QDir().mkdir(open));
        QVERIFY(::chmod(QFile::encodeName(open).constData(), 0777) == 0);

        const WithoutRootPrivileges unprivileged;
        if (!unprivileged.permissionsApply())
            QSKIP("running as root, and root's privileges could not be set aside");
        QVERIFY(writeLabelFile(QDir(open).filePath(QStringLiteral("label.lomir")), Content(),
                               QString(kLomirDocumentType))
                    .ok());
        const QString fresh = QDir(locked).filePath(QStringLiteral("new.lomir"));
        for (const QString& file : {existing, fresh}) {
            verifyFailure(writeLabelFile(file, Content(), QString(kLomirDocumentType)),
                          QStringLiteral("Cannot write “%1”: permission denied.").arg(file),
                          kPosixErrorDomain, EACCES);
        }
        QCOMPARE(readAll(existing), QByteArray("the label before"));
        QVERIFY(!QFile::exists(fresh));

        verifyFailure(readLabelFile(secret, QString(kPlainTextType)),
                      QStringLiteral("Cannot open “%1”: permission denied.").arg(secret),
                      kPosixErrorDomain, EACCES);
    }

    void aMissingFolderOrFileIsNamed()
    {
        const QString folder = path(QStringLiteral("absent"));
        const QString inMissingFolder = QDir(folder).filePath(QStringLiteral("label.lomir"));
        verifyFailure(writeLabelFile(inMissingFolder, Content(), QString(kLomirDocumentType)),
                      QStringLiteral("Cannot write “%1”: the folder “%2” does not exist.")
                          .arg(inMissingFolder, folder),
                      kPosixErrorDomain, ENOENT);

        const Result<Content> read = readLabelFile(inMissingFolder, QString(kLomirDocumentType));
        QVERIFY(!read.ok());
        QCOMPARE(read.error().message,
                 QStringLiteral("Cannot open “%1”: the folder “%2” does not exist.")
                     .arg(inMissingFolder, folder));

        const QString missing = path(QStringLiteral("absent.lomir"));
        verifyFailure(readLabelFile(missing, QString(kLomirDocumentType)),
                      QStringLiteral("Cannot open “%1”: there is no such file.").arg(missing),
                      kPosixErrorDomain, ENOENT);
    }

    void aFileInThePathIsNoFolder()
    {
        const QString file = path(QStringLiteral("plain.txt"));
        writeAll(file, "words");
        const QString below = QDir(file).filePath(QStringLiteral("label.lomir"));
        verifyFailure(
            writeLabelFile(below, Content(), QString(kLomirDocumentType)),
            QStringLiteral("Cannot write “%1”: part of its path is not a folder.").arg(below),
            kPosixErrorDomain, ENOTDIR);
        QCOMPARE(readAll(file), QByteArray("words"));
    }

    void onlyRegularFilesAreReplaced_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("reason");
        const QString folder = path(QStringLiteral("folder-target.txt"));
        QVERIFY(QDir().mkdir(folder));
        QTest::newRow("folder") << folder << QStringLiteral("it is a folder, not a file");
        const QString pipe = path(QStringLiteral("pipe-target.txt"));
        QVERIFY(::mkfifo(QFile::encodeName(pipe).constData(), 0644) == 0);
        QTest::newRow("named pipe") << pipe << QStringLiteral("it is a pipe, not a file");
    }

    void onlyRegularFilesAreReplaced()
    {
        QFETCH(QString, target);
        QFETCH(QString, reason);
        struct stat before = {};
        QVERIFY(::stat(QFile::encodeName(target).constData(), &before) == 0);
        verifyFailure(writeLabelFile(target, Content(), QString(kPlainTextType)),
                      QStringLiteral("Cannot write “%1”: %2.").arg(target, reason),
                      kFileErrorDomain, kNotARegularFile);
        struct stat after = {};
        QVERIFY(::stat(QFile::encodeName(target).constData(), &after) == 0);
        QCOMPARE(after.st_mode, before.st_mode);
        QCOMPARE(after.st_ino, before.st_ino);
    }
};

QTEST_GUILESS_MAIN(DocumentFileTest)
#include "tst_documentfile.moc"
