#pragma once

#include "core/base/result.h"
#include "core/document/content.h"

#include <QString>

namespace lomir {

// The whole of a file, as long as it is a regular file of at most kMaxDocumentFileSize
// bytes. A folder, device, pipe or socket, or a larger file, is refused with a sentence
// that names the file, before anything is read from it; nothing here ever waits.
Result<QByteArray> readRegularFile(const QString& path);

// Replaces the file at the path with the data, through QSaveFile: on any failure the
// file already on disk stays as it was. A folder, device or pipe under the name is
// refused. Failures give the operating system's reason: the disk is full, permission
// denied, the folder does not exist.
Status writeRegularFile(const QString& path, const QByteArray& data);

// Reads a label file of any of the three types into a record. Plain text and RTF
// fill only the text of a default record, as opening them does.
Result<Content> readLabelFile(const QString& path, const QString& typeName);

// Writes the record as a file of the type, through writeRegularFile. A document beyond
// the limits of documentlimits.h is refused before anything is written.
Status writeLabelFile(const QString& path, const Content& record, const QString& typeName);

} // namespace lomir
