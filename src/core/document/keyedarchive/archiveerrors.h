#pragma once

#include "core/base/errors.h"
#include "core/base/result.h"

#include <QCoreApplication>
#include <QString>

namespace lomir {

// Errors of the keyed-archive reader, in the domain and with the codes that macOS's
// unarchiver uses, each a whole sentence in the user's language.

// The translation context of the reader's sentences and of the details below.
struct KeyedArchiveTexts
{
    Q_DECLARE_TR_FUNCTIONS(KeyedArchive)
};

// "The archive is damaged: <detail>." for anything that makes the archive unreadable.
// The frame is translated; the detail, which says where in the archive's structure the
// damage lies (in terms a translator would need the archive format to follow), is
// passed as it is given.
inline Error archiveDamaged(const QString& detail)
{
    return Error{QString(kCocoaErrorDomain), kArchiveReadCorruptError,
                 KeyedArchiveTexts::tr("The archive is damaged: %1.").arg(detail)};
}

// The same for a fixed detail.
inline Error archiveDamaged(const char* detail)
{
    return archiveDamaged(QString::fromUtf8(detail));
}

// For a well-formed archive that holds an object of a class the reader does not know,
// with no class named in its place that the reader does know (another program's own
// colour class, an attachment where a font belongs). macOS's unarchiver reports a class
// it cannot find with the same code.
inline Error archiveHoldsUnreadableClass(const QString& className)
{
    return Error{QString(kCocoaErrorDomain), kArchiveReadCorruptError,
                 KeyedArchiveTexts::tr("The archive holds an object of class “%1”, "
                                       "which Lomir cannot read.")
                     .arg(className)};
}

} // namespace lomir
