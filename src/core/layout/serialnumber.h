#pragma once

#include "core/document/richtext/richtext.h"

#include <QString>
#include <QtGlobal>
#include <optional>

namespace lomir {

// One serial placeholder unit: "#" and a zero width joiner, one unit per digit. The
// joiner makes the pair a single user-perceived character.
inline constexpr char16_t kSerialPlaceholderUnit[] = u"#\u200D";
inline constexpr int kSerialPlaceholderUnitLength = 2;

// A range of a string in UTF-16 units.
struct TextRange
{
    int location = 0;
    int length = 0;
    bool operator==(const TextRange&) const = default;
};

// A run of placeholder units in a text: where it is, in UTF-16 units, and how many units.
struct SerialRun
{
    TextRange range;
    qint64 units = 0;
    bool operator==(const SerialRun&) const = default;
};

// The first run of placeholder units in the text, however long; nothing when the text
// has no unit. The editor replaces this run when the digits it needs change.
std::optional<SerialRun> findSerialRun(const QString& text);

// The first run of placeholder units in the text, if it has exactly expectedUnits
// units; nothing otherwise.
std::optional<TextRange> locateSerialRun(const QString& text, qint64 expectedUnits);

// A run of placeholder units, one for each digit.
QString serialPlaceholder(qint64 units);

// The digits every serial number of a print gets: the digit count of start + quantity.
qint64 serialDigitCount(qint64 quantity, qint64 serialStartFrom);

// The number of copy k, zero-padded to the digit count ("%0Nd"; a minus sign counts
// as a character, and a longer number is not cut).
QString serialText(qint64 copyIndex, qint64 serialStartFrom, qint64 serialDigitCount);

// The text of one copy: the run replaced by the serial text, each digit formatted as
// the placeholder unit it replaces.
RichText numberedText(const RichText& text, TextRange serialRange, const QString& serial);

} // namespace lomir
