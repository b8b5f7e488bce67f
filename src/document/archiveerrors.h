#pragma once

#include "base/result.h"
#include "document/keyedarchive.h"

#include <QString>

namespace lomir {

// Errors of the keyed-archive reader, in the domain and with the codes that macOS's
// unarchiver uses, each a whole sentence.

// "The archive is damaged: <detail>." for anything that makes the archive unreadable.
inline Error archiveDamaged(const QString& detail)
{
    return Error{QStringLiteral("NSCocoaErrorDomain"), kArchiveReadCorruptError,
                 QStringLiteral("The archive is damaged: %1.").arg(detail)};
}

inline Error archiveDamaged(const char* detail)
{
    return archiveDamaged(QString::fromLatin1(detail));
}

} // namespace lomir
