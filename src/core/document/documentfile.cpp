#include "core/document/documentfile.h"

#include "core/base/documentlimits.h"
#include "core/base/result.h"
#include "core/document/documentformats.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace lomir {

namespace {

// The translation context of the sentences below.
struct DocumentFile
{
    Q_DECLARE_TR_FUNCTIONS(DocumentFile)
};

// Which of the two a sentence is about.
enum class Access
{
    Read,
    Write
};

QString sentence(Access access, const QString& path, const QString& reason)
{
    return (access == Access::Read ? DocumentFile::tr("Cannot open “%1”: %2.")
                                   : DocumentFile::tr("Cannot write “%1”: %2."))
        .arg(path, reason);
}

// The operating system's reason for a failure, said of the file at the path.
QString systemReason(Access access, int error, const QString& path)
{
    switch (error) {
    case ENOSPC:
        return DocumentFile::tr("the disk is full");
    case EDQUOT:
        return DocumentFile::tr("the disk quota is used up");
    case EACCES:
    case EPERM:
        return DocumentFile::tr("permission denied");
    case EROFS:
        return DocumentFile::tr("the disk is read-only");
    case ENOENT: {
        // A file that is written is made if it is missing: then its folder is.
        const QString folder = QFileInfo(path).path();
        if (access == Access::Read && QFileInfo(folder).isDir())
            return DocumentFile::tr("there is no such file");
        return DocumentFile::tr("the folder “%1” does not exist").arg(folder);
    }
    case ENOTDIR:
        return DocumentFile::tr("part of its path is not a folder");
    case EISDIR:
        return DocumentFile::tr("it is a folder, not a file");
    case ELOOP:
        return DocumentFile::tr("its path has too many symbolic links");
    case ENAMETOOLONG:
        return DocumentFile::tr("its name is too long");
    case EFBIG:
        return DocumentFile::tr("it is too large for the disk");
    case EIO:
        return DocumentFile::tr("the disk could not be read or written");
    case EMFILE:
    case ENFILE:
        return DocumentFile::tr("too many files are open");
    default: {
        QString text = QString::fromStdString(std::generic_category().message(error));
        if (!text.isEmpty())
            text[0] = text[0].toLower();
        return text;
    }
    }
}

// A failure the operating system reported, with its own number as the code.
Error systemError(Access access, int error, const QString& path)
{
    return Error{QString(kPosixErrorDomain), error,
                 sentence(access, path, systemReason(access, error, path))};
}

// What a path that is no regular file names instead, for the sentence that refuses it.
QString kindOfNonRegularFile(mode_t mode)
{
    if (S_ISDIR(mode))
        return DocumentFile::tr("it is a folder, not a file");
    if (S_ISFIFO(mode))
        return DocumentFile::tr("it is a pipe, not a file");
    if (S_ISSOCK(mode))
        return DocumentFile::tr("it is a socket, not a file");
    return DocumentFile::tr("it is a device, not a file");
}

// A failure of QSaveFile: the operating system's reason when errno holds one, else
// the file's own sentence.
Error writeFailure(int error, const QString& path, const QSaveFile& file)
{
    if (error != 0)
        return systemError(Access::Write, error, path);
    return Error{QString(kPosixErrorDomain), 0, sentence(Access::Write, path, file.errorString())};
}

Error notARegularFile(Access access, const QString& path, mode_t mode)
{
    return Error{QString(kFileErrorDomain), kNotARegularFile,
                 sentence(access, path, kindOfNonRegularFile(mode))};
}

Error fileTooLarge(const QString& path)
{
    return Error{QString(kFileErrorDomain), kFileTooLarge,
                 sentence(Access::Read, path,
                          DocumentFile::tr("it is larger than %1, the largest file Lomir opens")
                              .arg(largestFileText()))};
}

// Checks the status of a file about to be read: a regular file within the largest size.
Status checkReadable(const QString& path, const struct stat& status)
{
    if (!S_ISREG(status.st_mode))
        return notARegularFile(Access::Read, path, status.st_mode);
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
        return systemError(Access::Read, errno, path);
    LOMIR_RETURN_IF_ERROR(checkReadable(path, status));

    // The path may have been replaced since: open without waiting, and check what was
    // opened. Reading a regular file never waits, whatever the flag says.
    const FileDescriptor file(
        ::open(nativePath.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0)
        return systemError(Access::Read, errno, path);
    LOMIR_RETURN_IF_ERROR(checkReadable(path, status));

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
            return systemError(Access::Read, errno, path);
        }
        filled += count;
    }
    data.truncate(filled);
    return data;
}

Result<Content> readLabelFile(const QString& path, const QString& typeName)
{
    // Reading takes a bounded multiple of the file's size (documentlimits.h); a machine
    // that cannot give even that gets a sentence, and the document open before stays.
    try {
        const Result<QByteArray> data = readRegularFile(path);
        LOMIR_RETURN_IF_ERROR(data);
        Content record;
        const Status read = readFromData(*data, typeName, record);
        if (!read)
            return Error{read.error().domain, read.error().code,
                         DocumentFile::tr("Cannot read “%1”: %2").arg(path, read.error().message)};
        return record;
    } catch (const std::bad_alloc&) {
        return Error{QString(kPosixErrorDomain), ENOMEM,
                     sentence(Access::Read, path,
                              DocumentFile::tr("there is not enough memory to read it"))};
    }
}

Status writeRegularFile(const QString& path, const QByteArray& data)
{
    // A folder, pipe or device under the name is refused, not replaced by a file.
    struct stat status = {};
    if (::stat(QFile::encodeName(path).constData(), &status) == 0) {
        if (!S_ISREG(status.st_mode))
            return notARegularFile(Access::Write, path, status.st_mode);
    } else if (errno != ENOENT) {
        return systemError(Access::Write, errno, path);
    }

    // QSaveFile reports a failure by its own sentence, and says "Unknown error" when a
    // write stopped part way because the disk filled up. The reason is in errno right
    // after the call that failed; reset it first, so that a failure without one shows.
    QSaveFile file(path);
    errno = 0;
    if (!file.open(QIODevice::WriteOnly))
        return writeFailure(errno, path, file);
    // Written through the descriptor, so that each failing call leaves its own errno.
    // Until commit() the data goes to a temporary file beside the old one, which the
    // QSaveFile removes on any failure.
    const int descriptor = file.handle();
    for (qsizetype written = 0; written < data.size();) {
        const ssize_t count =
            ::write(descriptor, data.constData() + written, std::size_t(data.size() - written));
        if (count < 0 && errno != EINTR)
            return systemError(Access::Write, errno, path);
        if (count > 0)
            written += count;
    }
    // Some file systems find the disk full only when the data reaches it.
    if (::fsync(descriptor) != 0 && errno != EINVAL)
        return systemError(Access::Write, errno, path);
    errno = 0;
    if (!file.commit())
        return writeFailure(errno, path, file);
    return Done{};
}

Status writeLabelFile(const QString& path, const Content& record, const QString& typeName)
{
    const Result<QByteArray> data = dataOfType(record, typeName);
    if (!data)
        return Error{data.error().domain, data.error().code,
                     DocumentFile::tr("Cannot write “%1”: %2").arg(path, data.error().message)};
    return writeRegularFile(path, *data);
}

} // namespace lomir
