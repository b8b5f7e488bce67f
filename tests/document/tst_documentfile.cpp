#include "document/documentfile.h"
#include "document/documentformats.h"
#include "document/documentlimits.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <chrono>
#include <fcntl.h>
#include <future>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
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

// A file of the size that holds no data: it takes no room on the disk, and reading it
// would yield zeros for as long as its size says.
void makeSparseFile(const QString& path, qint64 size)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.resize(size));
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

    void onlyRegularFilesAreRead_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("reason");
        const QString pipe = path(QStringLiteral("pipe.txt"));
        QVERIFY(::mkfifo(QFile::encodeName(pipe).constData(), 0644) == 0);
        QTest::newRow("named pipe") << pipe << QStringLiteral("it is a pipe, not a file");

        const QString zero = path(QStringLiteral("zero.txt"));
        QVERIFY(QFile::link(QStringLiteral("/dev/zero"), zero));
        QTest::newRow("link to /dev/zero") << zero << QStringLiteral("it is a device, not a file");

        const QString folder = path(QStringLiteral("folder.lomir"));
        QVERIFY(QDir().mkdir(folder));
        QTest::newRow("folder") << folder << QStringLiteral("it is a folder, not a file");

        const QString socket = path(QStringLiteral("socket.rtf"));
        const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
        QVERIFY(listener >= 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const QByteArray native = QFile::encodeName(socket);
        QVERIFY(std::size_t(native.size()) < sizeof address.sun_path);
        std::memcpy(address.sun_path, native.constData(), std::size_t(native.size()));
        QVERIFY(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
        ::close(listener);
        QTest::newRow("socket") << socket << QStringLiteral("it is a socket, not a file");
    }

    void onlyRegularFilesAreRead()
    {
        QFETCH(QString, name);
        QFETCH(QString, reason);
        const Result<Content> read = readWithoutHanging(name, typeForFileName(name));
        QVERIFY(!read.ok());
        QCOMPARE(read.error().message, QStringLiteral("Cannot open “%1”: %2.").arg(name, reason));
        QCOMPARE(read.error().domain, QString(kFileErrorDomain));
        QCOMPARE(read.error().code, kNotARegularFile);
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
        makeSparseFile(file, size);
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
};

QTEST_GUILESS_MAIN(DocumentFileTest)
#include "tst_documentfile.moc"
