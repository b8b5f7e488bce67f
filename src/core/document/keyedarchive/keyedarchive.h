#pragma once

#include "core/base/errors.h"
#include "core/base/result.h"
#include "core/document/richtext/richtext.h"

#include <QByteArray>

namespace lomir {

// The keyed-archive format version ("$version") that macOS writes and reads.
inline constexpr quint64 kKeyedArchiveVersion = 100000;

// The binary property list of a keyed archive (NSKeyedArchiver) whose root is an
// NSAttributedString holding the text, as macOS's secure unarchiver accepts it.
QByteArray archiveRichText(const RichText& text);

// Reads a keyed archive (binary or XML property list) whose root is an
// NSAttributedString, NSMutableAttributedString or NSTextStorage. Never aborts,
// whatever the bytes; fails in kCocoaErrorDomain with kArchiveReadCorruptError or
// kArchiveRootNotAttributedString (base/errors.h).
Result<RichText> unarchiveRichText(const QByteArray& archive);

// Standalone archives of one colour or one font, as other programs store them in
// their settings.
Result<Rgba> unarchiveColor(const QByteArray& archive);
Result<FontSpec> unarchiveFont(const QByteArray& archive);

} // namespace lomir
