#pragma once

#include "base/result.h"
#include "document/content.h"

#include <QString>

namespace lomir {

// Reads a label file of any of the three types into a record. Plain text and RTF fill
// only the text of a default record, as opening them does. Errors name the file.
Result<Content> readLabelFile(const QString& path, const QString& typeName);

// Writes the record as a file of the type through QSaveFile: the file on disk is
// replaced only once every byte is written, so a failed write leaves it as it was.
// Errors name the file.
Status writeLabelFile(const QString& path, const Content& record, const QString& typeName);

} // namespace lomir
