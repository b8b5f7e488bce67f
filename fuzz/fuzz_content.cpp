// Fuzz target for the document record reader: any bytes either fail cleanly or give
// a record that writes and reads back to the same bytes.
#include "core/document/content.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const lomir::Result<lomir::Content> content = lomir::Content::decode(bytes);
    if (!content)
        return 0;
    const lomir::Result<QByteArray> written = content->encode();
    if (!written)
        return 0;
    const lomir::Result<lomir::Content> again = lomir::Content::decode(*written);
    if (!again)
        __builtin_trap();
    const lomir::Result<QByteArray> rewritten = again->encode();
    if (!rewritten || *rewritten != *written)
        __builtin_trap();
    return 0;
}
