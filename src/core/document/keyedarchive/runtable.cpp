#include "core/document/keyedarchive/runtable.h"

#include "core/base/result.h"
#include "core/document/keyedarchive/archiveerrors.h"

#include <optional>

namespace lomir {

namespace {

void appendNumber(QByteArray& out, quint64 value)
{
    while (value >= 0x80) {
        out.append(char((value & 0x7f) | 0x80));
        value >>= 7;
    }
    out.append(char(value));
}

// A 64-bit number takes at most ten groups of seven bits.
constexpr int kMaxNumberBytes = 10;

std::optional<quint64> readNumber(const QByteArray& data, qsizetype& position)
{
    quint64 value = 0;
    for (int i = 0; i < kMaxNumberBytes && position < data.size(); ++i) {
        const auto byte = quint8(data.at(position++));
        const quint64 bits = byte & 0x7f;
        const int shift = 7 * i;
        if (shift == 63 && bits > 1)
            return std::nullopt; // more than 64 bits
        value |= bits << shift;
        if ((byte & 0x80) == 0)
            return value;
    }
    return std::nullopt;
}

} // namespace

QByteArray encodeRunTable(const std::vector<RunTableEntry>& entries)
{
    QByteArray out;
    for (const RunTableEntry& entry : entries) {
        appendNumber(out, quint64(entry.length));
        appendNumber(out, quint64(entry.index));
    }
    return out;
}

Status readRunTable(const QByteArray& data, qint64 textLength, qint64 dictionaryCount,
                    const std::function<Status(const RunTableEntry&)>& visit)
{
    qsizetype position = 0;
    qint64 covered = 0;
    while (covered < textLength) {
        if (position >= data.size())
            return archiveDamaged("its run table ends before the text does");
        const std::optional<quint64> length = readNumber(data, position);
        const std::optional<quint64> index =
            length ? readNumber(data, position) : std::optional<quint64>();
        if (!length || !index) {
            if (position >= data.size())
                return archiveDamaged("its run table ends in the middle of a run");
            return archiveDamaged("its run table holds a number that is too large");
        }
        if (*length > quint64(textLength - covered))
            return archiveDamaged("its run table has a run that reaches past the end of the text");
        if (*index >= quint64(dictionaryCount))
            return archiveDamaged("its run table refers to attributes that are not in the archive");
        if (*length == 0)
            continue;
        if (Status visited = visit({qint64(*length), qint64(*index)}); !visited)
            return visited;
        covered += qint64(*length);
    }
    return Done{};
}

Result<std::vector<RunTableEntry>> decodeRunTable(const QByteArray& data, qint64 textLength,
                                                  qint64 dictionaryCount)
{
    std::vector<RunTableEntry> entries;
    const Status read =
        readRunTable(data, textLength, dictionaryCount, [&](const RunTableEntry& entry) {
            entries.push_back(entry);
            return Status(Done{});
        });
    LOMIR_RETURN_IF_ERROR(read);
    return entries;
}

} // namespace lomir
