#pragma once

#include "core/base/result.h"

#include <QByteArray>
#include <functional>
#include <vector>

namespace lomir {

// One entry of an attributed string's run table (the NSAttributeInfo data of a keyed
// archive): so many UTF-16 units take the attributes at this index of the NSAttributes
// array.
struct RunTableEntry
{
    qint64 length = 0;
    qint64 index = 0;

    bool operator==(const RunTableEntry&) const = default;
};

// The run table as macOS stores it: each length and index in turn as an unsigned
// LEB128 number (seven bits per byte, least significant group first, the high bit set
// on every byte but the last).
QByteArray encodeRunTable(const std::vector<RunTableEntry>& entries);

// Reads a run table for a text of textLength units and an NSAttributes array of
// dictionaryCount entries. Like macOS, it reads entries until their lengths reach the
// text length and ignores anything after that. Fails, with a whole sentence, when the
// data ends first, when a run would reach past the text or a number is malformed, and
// when an index is outside the array. Zero-length runs are skipped.
Result<std::vector<RunTableEntry>> decodeRunTable(const QByteArray& data, qint64 textLength,
                                                  qint64 dictionaryCount);

// Reads a run table as decodeRunTable() does, but hands each entry to visit as it is
// read, so that a table of millions of runs needs no list of its own. The first failure,
// of the table or of visit, ends the reading and is returned.
Status readRunTable(const QByteArray& data, qint64 textLength, qint64 dictionaryCount,
                    const std::function<Status(const RunTableEntry&)>& visit);

} // namespace lomir
