#pragma once

#include "core/base/errors.h"

#include <QCoreApplication>
#include <QString>
#include <QtGlobal>

namespace lomir {

// How large a document may be. Reading and writing take their numbers from here, so
// every file Lomir writes is one that Lomir opens again; a document beyond them is
// refused before anything is read or written.

// The largest file Lomir reads. A label's document is a few kilobytes; this leaves
// room for a label text at its longest in any of the three types, and keeps a file
// that is no document at all (a disk image, a log) from being read into memory.
inline constexpr qint64 kMaxDocumentFileSize = 16 * 1024 * 1024;
static_assert(kMaxDocumentFileSize % (1024 * 1024) == 0, "said to users in whole megabytes");

// The largest file as a user reads it: "16 MB".
inline QString largestFileText()
{
    return QCoreApplication::translate("DocumentLimits", "%1 MB")
        .arg(kMaxDocumentFileSize / (1024 * 1024));
}

// The largest keyed archive of a label text. The own type stores the archive as
// base64, four characters for every three bytes, inside the document's JSON; any
// archive in a file of the largest size is therefore at most three quarters of it.
inline constexpr qint64 kMaxArchiveSize = kMaxDocumentFileSize / 4 * 3;

// The longest label text, in UTF-16 units (what the text's positions count). Far
// beyond any label that fits a sheet, and short enough that the text in its own
// type, as plain text or as RTF, stays well within the largest file.
inline constexpr int kMaxLabelTextLength = 1'000'000;

// Memory: reading a file of any of the three types, and printing it as "lomir inspect"
// does, takes at most this many times the file's size beyond what the program holds
// before it reads (about 10 MB), so at most a few hundred megabytes for a file at the
// largest size. What grows with a file: the property list's nodes for the archive (at
// most one for every five bytes of it), the rich text (eight bytes a run, and each run
// takes more than four bytes of any file; each distinct attribute set is kept once), and
// a copy or two of the text on the way. The memory test holds every reader to it.
inline constexpr int kReadMemoryFactor = 24;

} // namespace lomir
