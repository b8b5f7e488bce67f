// Reads arbitrary bytes as RTF. Whatever reads must write as 7-bit ASCII RTF that reads
// back to exactly the same rich text: the writer covers everything the reader keeps.
#include "core/document/rtf/rtf.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));
    const lomir::Result<lomir::RichText> first = lomir::readRtf(bytes);
    if (!first.ok())
        return 0;

    const QByteArray written = lomir::writeRtf(first.value());
    for (const char c : written) {
        if (static_cast<unsigned char>(c) >= 0x80)
            __builtin_trap();
    }
    const lomir::Result<lomir::RichText> second = lomir::readRtf(written);
    if (!second.ok() || !(second.value() == first.value()))
        __builtin_trap();
    return 0;
}
