#pragma once

#include "base/result.h"
#include "document/richtext/richtext.h"

#include <QByteArray>

namespace lomir {

// Error codes of the RTF reader, in the domain "LomirRtfErrorDomain".
inline constexpr int kRtfNotRtf = 1;    // the bytes do not begin an RTF document
inline constexpr int kRtfMalformed = 2; // an RTF document that cannot be read

// The largest magnitude of a number in RTF as Lomir reads and writes it: the reader
// takes a larger parameter as this, and the writer fits every number it writes into the
// same range, so that what is written reads back unchanged.
inline constexpr int kRtfParameterLimit = 1'000'000'000;

// An RTF document in the flavour macOS's text system writes (\cocoartf), 7-bit
// ASCII with every other character as \uN.
QByteArray writeRtf(const RichText& text);

// Reads RTF as TextEdit, Word, OpenOffice and LibreOffice write it. Never aborts,
// whatever the bytes.
Result<RichText> readRtf(const QByteArray& rtf);

} // namespace lomir
