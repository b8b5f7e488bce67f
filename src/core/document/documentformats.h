#pragma once

#include "core/base/errors.h"
#include "core/base/result.h"
#include "core/document/content.h"

#include <QByteArray>
#include <QString>

namespace lomir {

// The three document types, by the names that reading and writing dispatch on.
inline constexpr QLatin1StringView kPlainTextType{"public.plain-text"};
inline constexpr QLatin1StringView kRtfType{"public.rtf"};
inline constexpr QLatin1StringView kLomirDocumentType{"com.brenvik.lomir-doc"};

// The bytes of a file of the type. The own type writes the whole record; plain text
// and RTF only its label text. The caller builds the record from the editor. A label
// text or a file beyond the limits of documentlimits.h is refused, so that every file
// written here is one that readFromData takes in again.
Result<QByteArray> dataOfType(const Content& record, const QString& typeName);

// Reads a file of the type into the record: the own type replaces the whole record,
// plain text and RTF only its label text. A label text longer than a label holds is
// refused as well. On failure the record is left as it was.
Status readFromData(const QByteArray& data, const QString& typeName, Content& record);

// The type of a file name by its extension (.lomir, .txt, .rtf), or an empty string.
QString typeForFileName(const QString& fileName);

} // namespace lomir
