#pragma once

#include "base/result.h"
#include "document/richtext/richtext.h"

#include <QByteArray>

namespace lomir {

// Error codes of the archive reader, in the domain "NSCocoaErrorDomain".
// A damaged or unreadable archive, or a root object of a class that is not allowed,
// is reported as macOS's own unarchiver reports it.
inline constexpr int kArchiveReadCorruptError = 4864;
// The archive is well formed but holds no attributed string at its root (a nil root).
// Callers turn this into their own "not an attributed string" report.
inline constexpr int kArchiveRootNotAttributedString = 4865;

// The binary property list of a keyed archive (NSKeyedArchiver) whose root is an
// NSAttributedString holding the text, as macOS's secure unarchiver accepts it.
QByteArray archiveRichText(const RichText& text);

// Reads a keyed archive (binary or XML property list) whose root is an
// NSAttributedString, NSMutableAttributedString or NSTextStorage. Never aborts,
// whatever the bytes.
Result<RichText> unarchiveRichText(const QByteArray& archive);

// Standalone archives of one colour or one font, as other programs store them in
// their settings.
Result<Rgba> unarchiveColor(const QByteArray& archive);
Result<FontSpec> unarchiveFont(const QByteArray& archive);

} // namespace lomir
