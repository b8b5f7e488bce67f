#pragma once

#include "base/result.h"
#include "document/keyedarchive/keyedarchive.h"

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

// For a well-formed archive that holds an object of a class the reader does not know,
// with no class named in its place that the reader does know (another program's own
// colour class, an attachment where a font belongs). macOS's unarchiver reports a class
// it cannot find with the same code.
inline Error archiveHoldsUnreadableClass(const QString& className)
{
    return Error{QStringLiteral("NSCocoaErrorDomain"), kArchiveReadCorruptError,
                 QStringLiteral("The archive holds an object of class \u201c%1\u201d, which "
                                "Lomir cannot read.")
                     .arg(className)};
}

} // namespace lomir
