#pragma once

#include "core/base/errors.h"
#include "core/base/result.h"
#include "core/document/richtext/richtext.h"

#include <QByteArray>

namespace lomir {

// The largest magnitude of a number in RTF as Lomir reads and writes it: the reader
// takes a larger parameter as this, and the writer fits every number it writes into the
// same range, so that what is written reads back unchanged.
inline constexpr int kRtfParameterLimit = 1'000'000'000;

// An RTF document of the text: 7-bit ASCII with every other character as \uN, in the
// Cocoa flavour that TextEdit writes (a \cocoartf header, an \expandedcolortbl beside
// the colour table), so that TextEdit reads it as one of its own.
QByteArray writeRtf(const RichText& text);

// Reads RTF as TextEdit, Word, OpenOffice and LibreOffice write it. Never aborts,
// whatever the bytes; fails with kRtfErrorDomain's codes (base/errors.h).
Result<RichText> readRtf(const QByteArray& rtf);

} // namespace lomir
