// Fuzz target for the keyed-archive reader. Whatever the bytes, reading must come back
// with a value or a whole-sentence error; a text that was read must archive and read
// back to an equal text. The standalone colour and font readers get the same bytes.
#include "core/document/keyedarchive/keyedarchive.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size));

    const lomir::Result<lomir::RichText> text = lomir::unarchiveRichText(bytes);
    if (text) {
        const QByteArray archive = lomir::archiveRichText(*text);
        const lomir::Result<lomir::RichText> again = lomir::unarchiveRichText(archive);
        if (!again || !(*again == *text))
            __builtin_trap();
    } else if (text.error().message.isEmpty() ||
               text.error().domain != QLatin1String("NSCocoaErrorDomain")) {
        __builtin_trap();
    }

    const lomir::Result<lomir::Rgba> color = lomir::unarchiveColor(bytes);
    if (!color && color.error().message.isEmpty())
        __builtin_trap();
    const lomir::Result<lomir::FontSpec> font = lomir::unarchiveFont(bytes);
    if (!font && font.error().message.isEmpty())
        __builtin_trap();
    return 0;
}
