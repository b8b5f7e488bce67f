#pragma once

// Whole-file reads and writes for tests that set up and check files on disk.

#include <QByteArray>
#include <QFile>
#include <QString>

namespace lomir::testing {

// The file's bytes, or nothing when it cannot be read.
inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Replaces the file with the bytes; false when that fails.
inline bool writeFile(const QString& path, const QByteArray& data)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
}

} // namespace lomir::testing
