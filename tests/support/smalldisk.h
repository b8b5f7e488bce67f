#pragma once

// A disk of a few kilobytes for the length of one test, to see what writing does when
// a disk is full or read-only: a tmpfs mounted on a fresh folder. Mounting needs root;
// without it a test skips and says why.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <cerrno>
#include <sys/mount.h>
#include <system_error>

namespace lomir::testing {

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
