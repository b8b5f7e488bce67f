#pragma once

#include <QLatin1StringView>

namespace lomir {

// The error domains and codes the application reports, each named once here. Callers
// and tests tell errors apart by domain and code; the user reads the Error's sentence.

// Decoding the document record. The domain and codes are those of the decoders of
// macOS, so errors read alike wherever a document comes from.
inline constexpr QLatin1StringView kCocoaErrorDomain{"NSCocoaErrorDomain"};
inline constexpr int kDecodingValueNotFound = 4865; // a key or a value is missing
inline constexpr int kDecodingCorrupt = 4864;       // wrong type, or data that cannot be read

// A type name that is none of the three document types.
inline constexpr QLatin1StringView kOSStatusErrorDomain{"NSOSStatusErrorDomain"};
inline constexpr int kUnsupportedTypeError = -4;

// Files whose text cannot be taken in at all. The document layer stops the program
// on these rather than opening a document with text that is not the file's.
inline constexpr QLatin1StringView kUnreadableTextDomain{"LomirUnreadableTextDomain"};
inline constexpr int kPlainTextNotUtf8 = 1;
inline constexpr int kRtfUnreadable = 2;

// Opening, reading, writing or removing a file. The code is the QFileDevice::FileError
// that the file reported.
inline constexpr QLatin1StringView kFileErrorDomain{"LomirFileErrorDomain"};

// A command line that was not understood. The code is the exit status.
inline constexpr QLatin1StringView kUsageErrorDomain{"LomirUsageDomain"};

} // namespace lomir
