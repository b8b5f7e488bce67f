#pragma once

// Paths that reading and writing a document must cope with: pipes, devices, folders,
// sockets, huge files that hold no data, and small disks that fill up or refuse any
// change.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTest>
#include <cerrno>
#include <cstring>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <unistd.h>

namespace lomir::testing {

// Lets others look into a test's folder, so that a run without root's privileges
// meets only the permissions the test sets up inside it.
inline bool letOthersLookIn(const QString& folder)
{
    return QFile::setPermissions(folder, QFile::permissions(folder) | QFile::ReadGroup |
                                             QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther);
}

// A file of the size that holds no data: it takes no room on the disk, and reading it
// would yield zeros for as long as its size says.
inline bool makeSparseFile(const QString& path, qint64 size)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.resize(size);
}

// Adds the columns "file" and "reason" and a row for each kind of path that is not a
// regular file, made in the folder, with the reason a refusal gives for it.
inline void addNonRegularFileRows(const QDir& folder)
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("reason");

    const QString pipe = folder.filePath(QStringLiteral("pipe.lomir"));
    QVERIFY(::mkfifo(QFile::encodeName(pipe).constData(), 0644) == 0);
    QTest::newRow("named pipe") << pipe << QStringLiteral("it is a pipe, not a file");

    const QString zero = folder.filePath(QStringLiteral("zero.txt"));
    QVERIFY(QFile::link(QStringLiteral("/dev/zero"), zero));
    QTest::newRow("link to /dev/zero") << zero << QStringLiteral("it is a device, not a file");

    const QString subfolder = folder.filePath(QStringLiteral("folder.rtf"));
    QVERIFY(folder.mkdir(QStringLiteral("folder.rtf")));
    QTest::newRow("folder") << subfolder << QStringLiteral("it is a folder, not a file");

    const QString socket = folder.filePath(QStringLiteral("socket.txt"));
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    QVERIFY(listener >= 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray native = QFile::encodeName(socket);
    QVERIFY(std::size_t(native.size()) < sizeof address.sun_path);
    std::memcpy(address.sun_path, native.constData(), std::size_t(native.size()));
    const bool bound =
        ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(listener);
    QVERIFY(bound);
    QTest::newRow("socket") << socket << QStringLiteral("it is a socket, not a file");
}

// A disk of a few kilobytes for the length of one test, to see what writing does when
// a disk is full or read-only: a tmpfs mounted on a fresh folder. Mounting needs root;
// without it a test skips and says why.

class SmallDisk
{
public:
    // Mounts a tmpfs of the size on the folder, which is made if need be.
    SmallDisk(const QString& folder, int kilobytes)
        : m_folder(folder), m_options(QByteArray("size=") + QByteArray::number(kilobytes) + "k")
    {
        QDir().mkpath(folder);
        m_mounted = ::mount("tmpfs", native().constData(), "tmpfs", MS_NOSUID | MS_NODEV,
                            m_options.constData()) == 0;
        if (!m_mounted)
            m_whyNot = QString::fromStdString(std::generic_category().message(errno));
    }
    ~SmallDisk()
    {
        if (m_mounted)
            ::umount2(native().constData(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool isMounted() const { return m_mounted; }
    // Why mounting failed, for the message of a skipped test.
    QString whyNot() const
    {
        return QStringLiteral("cannot mount a small tmpfs on %1 (this needs root): %2")
            .arg(m_folder, m_whyNot);
    }
    QString filePath(const QString& name) const { return QDir(m_folder).filePath(name); }

    // From now on the disk refuses every change.
    bool makeReadOnly()
    {
        return ::mount(nullptr, native().constData(), nullptr,
                       MS_REMOUNT | MS_RDONLY | MS_NOSUID | MS_NODEV, m_options.constData()) == 0;
    }

private:
    QByteArray native() const { return QFile::encodeName(m_folder); }

    QString m_folder;
    QByteArray m_options;
    bool m_mounted = false;
    QString m_whyNot;
};

} // namespace lomir::testing
