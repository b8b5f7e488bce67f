#include "document/documentfile.h"

#include "document/documentformats.h"
#include "document/documentlimits.h"

#include <QFile>
#include <QSaveFile>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lomir {

namespace {

Error cannotOpen(int code, const QString& path, const QString& reason)
{
    return Error{QString(kFileErrorDomain), code,
                 QStringLiteral("Cannot open “%1”: %2.").arg(path, reason)};
}

// A failure the operating system reported while opening or reading.
Error cannotOpenSystem(int error, const QString& path)
{
    return Error{QString(kPosixErrorDomain), error,
                 QStringLiteral("Cannot open “%1”: %2.")
                     .arg(path, QString::fromLocal8Bit(std::strerror(error)))};
}

// What a path that is no regular file names instead, for the sentence that refuses it.
QString kindOfNonRegularFile(mode_t mode)
{
    if (S_ISDIR(mode))
        return QStringLiteral("it is a folder, not a file");
    if (S_ISFIFO(mode))
        return QStringLiteral("it is a pipe, not a file");
    if (S_ISSOCK(mode))
        return QStringLiteral("it is a socket, not a file");
    return QStringLiteral("it is a device, not a file");
}

Error fileTooLarge(const QString& path)
{
    return cannotOpen(kFileTooLarge, path,
                      QStringLiteral("it is larger than %1, the largest file Lomir opens")
                          .arg(largestFileText()));
}

// Checks the status of a file about to be read: a regular file within the largest size.
Status checkReadable(const QString& path, const struct stat& status)
{
    if (!S_ISREG(status.st_mode))
        return cannotOpen(kNotARegularFile, path, kindOfNonRegularFile(status.st_mode));
    if (status.st_size > kMaxDocumentFileSize)
        return fileTooLarge(path);
    return Done{};
}

// Closes a file descriptor when it goes out of scope.
class FileDescriptor
{
public:
    explicit FileDescriptor(int descriptor) : m_descriptor(descriptor) {}
    ~FileDescriptor()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

} // namespace

Result<QByteArray> readRegularFile(const QString& path)
{
    const QByteArray nativePath = QFile::encodeName(path);
    // The path's status first, so that a pipe or a device is never opened at all:
    // opening a pipe waits for a writer, and some devices act on being opened.
    struct stat status = {};
    if (::stat(nativePath.constData(), &status) != 0)
        return cannotOpenSystem(errno, path);
    if (const Status readable = checkReadable(path, status); !readable)
        return readable.error();

    // The path may have been replaced since: open without waiting, and check what was
    // opened. Reading a regular file never waits, whatever the flag says.
    const FileDescriptor file(
        ::open(nativePath.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0)
        return cannotOpenSystem(errno, path);
    if (const Status readable = checkReadable(path, status); !readable)
        return readable.error();

    // Read to the end, but never past the largest size: the file may grow meanwhile.
    QByteArray data(qsizetype(status.st_size) + 1, Qt::Uninitialized);
    qsizetype filled = 0;
    for (;;) {
        if (filled == data.size()) {
            if (filled > kMaxDocumentFileSize)
                return fileTooLarge(path);
            data.resize(std::min<qsizetype>(2 * filled + 4096, kMaxDocumentFileSize + 1));
        }
        const ssize_t count =
            ::read(file.get(), data.data() + filled, std::size_t(data.size() - filled));
        if (count == 0)
            break;
        if (count < 0) {
            if (errno == EINTR)
                continue;
            return cannotOpenSystem(errno, path);
        }
        filled += count;
    }
    data.truncate(filled);
    return data;
}

Result<Content> readLabelFile(const QString& path, const QString& typeName)
{
    const Result<QByteArray> data = readRegularFile(path);
    if (!data)
        return data.error();
    Content record;
    const Status read = readFromData(*data, typeName, record);
    if (!read)
        return Error{read.error().domain, read.error().code,
                     QStringLiteral("Cannot read “%1”: %2").arg(path, read.error().message)};
    return record;
}

Status writeLabelFile(const QString& path, const Content& record, const QString& typeName)
{
    const Result<QByteArray> data = dataOfType(record, typeName);
    if (!data)
        return Error{data.error().domain, data.error().code,
                     QStringLiteral("Cannot write “%1”: %2").arg(path, data.error().message)};
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(*data) != data->size() || !file.commit())
        return Error{QStringLiteral("LomirFileErrorDomain"), int(file.error()),
                     QStringLiteral("Cannot write “%1”: %2.").arg(path, file.errorString())};
    return Done{};
}

} // namespace lomir
