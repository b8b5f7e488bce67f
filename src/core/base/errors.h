#pragma once

#include <QLatin1StringView>

namespace lomir {

// The error domains and codes the application reports, each named once here. Callers
// and tests tell errors apart by domain and code; the user reads the Error's sentence,
// which is always made through Qt's translation functions.

// Decoding the document record and reading the keyed archive of its text. The domain
// and codes are those of macOS's decoders and unarchiver, so errors read alike
// wherever a document or an archive comes from.
inline constexpr QLatin1StringView kCocoaErrorDomain{"NSCocoaErrorDomain"};
inline constexpr int kDecodingValueNotFound = 4865; // a key or a value is missing
inline constexpr int kDecodingCorrupt = 4864;       // wrong type, or data that cannot be read
// The keyed-archive reader's names for the same two codes: an archive that is damaged,
// unreadable or has a root of a class that is not allowed; and a well-formed archive
// with no attributed string at its root (a nil root), which the document record
// reports as a label text that is not an attributed string.
inline constexpr int kArchiveReadCorruptError = kDecodingCorrupt;
inline constexpr int kArchiveRootNotAttributedString = kDecodingValueNotFound;

// A type name that is none of the three document types.
inline constexpr QLatin1StringView kOSStatusErrorDomain{"NSOSStatusErrorDomain"};
inline constexpr int kUnsupportedTypeError = -4;

// Files whose text cannot be taken in at all. Document stops the program on these
// rather than open a document whose text is not the file's.
inline constexpr QLatin1StringView kUnreadableTextDomain{"LomirUnreadableTextDomain"};
inline constexpr int kPlainTextNotUtf8 = 1;
inline constexpr int kRtfUnreadable = 2;

// The RTF reader's own errors, before the document formats report them as
// kRtfUnreadable.
inline constexpr QLatin1StringView kRtfErrorDomain{"LomirRtfErrorDomain"};
inline constexpr int kRtfNotRtf = 1;    // the bytes do not begin an RTF document
inline constexpr int kRtfMalformed = 2; // an RTF document that cannot be read

// Reading and writing document files: what lies beyond the limits of
// document/documentlimits.h, what is no file at all, and a folder Lomir keeps files in
// that it cannot make or lock (the recovery folder).
inline constexpr QLatin1StringView kFileErrorDomain{"LomirFileErrorDomain"};
inline constexpr int kNotARegularFile = 1;   // a folder, device, pipe or socket
inline constexpr int kFileTooLarge = 2;      // a file, read or to be written, beyond the largest
inline constexpr int kLabelTextTooLong = 3;  // a label text beyond the longest
inline constexpr int kFolderUnavailable = 4; // a folder that cannot be made or locked

// A failure the operating system reports keeps its own number (errno) as the code.
inline constexpr QLatin1StringView kPosixErrorDomain{"NSPOSIXErrorDomain"};

// A command line that was not understood. The code is the exit status.
inline constexpr QLatin1StringView kUsageErrorDomain{"LomirUsageDomain"};

} // namespace lomir
