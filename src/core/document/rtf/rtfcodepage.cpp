#include "core/document/rtf/rtfcodepage.h"

#include <QByteArray>
#include <array>
#include <cerrno>

namespace lomir::rtf {

namespace {

// Windows-1252 from 0x80 to 0x9F; above that it is Latin-1. The five bytes the code
// page leaves undefined stand for the C1 control of the same value, as Windows reads
// them.
constexpr std::array<char16_t, 32> kWindows1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, //
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F, //
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, //
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

// Mac OS Roman from 0x80 to 0xFF, with the euro sign at 0xDB as Apple has mapped it
// since Mac OS 8.5.
constexpr std::array<char16_t, 128> kMacRomanHigh = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, //
    0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5, 0x00E7, 0x00E9, 0x00E8, //
    0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3, //
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, //
    0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6, 0x00DF, //
    0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8, //
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211, //
    0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8, //
    0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB, //
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153, //
    0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA, //
    0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02, //
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1, //
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4, //
    0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC, //
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,
};

constexpr char16_t kReplacementCharacter = 0xFFFD;

void decodeWindows1252(std::string_view bytes, QString& out)
{
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80 && byte < 0xA0)
            out += QChar(kWindows1252High[byte - 0x80]);
        else
            out += QChar(char16_t(byte));
    }
}

void decodeMacRoman(std::string_view bytes, QString& out)
{
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        out += QChar(byte < 0x80 ? char16_t(byte) : kMacRomanHigh[byte - 0x80]);
    }
}

void decodeAscii(std::string_view bytes, QString& out)
{
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        out += QChar(byte < 0x80 ? char16_t(byte) : kReplacementCharacter);
    }
}

// The iconv name of a Windows or Mac code page number.
QByteArray iconvName(int codePage)
{
    switch (codePage) {
    case kCodePageDosLatinUs:
        return "IBM437";
    case kCodePageDosLatin1:
        return "IBM850";
    case 1361:
        return "JOHAB";
    case 10001:
        return "SHIFT_JIS";
    case 10007:
        return "MAC-CYRILLIC";
    case 10029:
        return "MAC-CENTRALEUROPE";
    case 20932:
    case 51932:
        return "EUC-JP";
    case 51949:
        return "EUC-KR";
    case 54936:
        return "GB18030";
    default:
        break;
    }
    if (codePage >= 28591 && codePage <= 28606)
        return "ISO-8859-" + QByteArray::number(codePage - 28590);
    return "CP" + QByteArray::number(codePage);
}

const iconv_t kNoConverter = reinterpret_cast<iconv_t>(-1);

} // namespace

int codePageForCharset(int charset)
{
    switch (charset) {
    case 0:
        return kCodePageWindowsLatin1; // ANSI
    case 77:
        return kCodePageMacRoman;
    case 78:
        return 10001; // Mac Japanese
    case 88:
        return 10029; // Mac Central European
    case 89:
        return 10007; // Mac Cyrillic
    case 128:
        return 932; // Shift-JIS
    case 129:
        return 949; // Korean (Unified Hangul)
    case 130:
        return 1361; // Korean (Johab)
    case 134:
        return 936; // Simplified Chinese (GBK)
    case 136:
        return 950; // Traditional Chinese (Big5)
    case 161:
        return 1253; // Greek
    case 162:
        return 1254; // Turkish
    case 163:
        return 1258; // Vietnamese
    case 177:
        return 1255; // Hebrew
    case 178:
        return 1256; // Arabic
    case 186:
        return 1257; // Baltic
    case 204:
        return 1251; // Cyrillic
    case 222:
        return 874; // Thai
    case 238:
        return 1250; // Central European
    case 254:
        return kCodePageDosLatinUs;
    case 255:
        return kCodePageDosLatin1;
    default:
        return 0;
    }
}

bool isDoubleByteCodePage(int codePage)
{
    switch (codePage) {
    case 932:
    case 936:
    case 949:
    case 950:
    case 1361:
    case 10001:
        return true;
    default:
        return false;
    }
}

bool isLeadByte(int codePage, unsigned char byte)
{
    switch (codePage) {
    case 932:
    case 10001:
        return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
    case 936:
    case 949:
    case 950:
    case 1361:
        return byte >= 0x81 && byte <= 0xFE;
    default:
        return false;
    }
}

std::optional<unsigned char> windows1252ByteFor(char16_t character)
{
    if (character >= 0xA0 && character <= 0xFF)
        return static_cast<unsigned char>(character);
    for (std::size_t i = 0; i < kWindows1252High.size(); ++i) {
        // The undefined bytes decode to C1 controls; those are written as \uN instead.
        if (kWindows1252High[i] == character && character > 0x9F)
            return static_cast<unsigned char>(0x80 + i);
    }
    return std::nullopt;
}

CodePageDecoder::~CodePageDecoder()
{
    for (const auto& [codePage, converter] : m_converters) {
        if (converter != kNoConverter)
            iconv_close(converter);
    }
}

iconv_t CodePageDecoder::converterFor(int codePage)
{
    const auto found = m_converters.find(codePage);
    if (found != m_converters.end())
        return found->second;
    const iconv_t converter = iconv_open("UTF-8", iconvName(codePage).constData());
    m_converters.emplace(codePage, converter);
    return converter;
}

void CodePageDecoder::decode(int codePage, std::string_view bytes, QString& out)
{
    if (bytes.empty())
        return;
    switch (codePage) {
    case kCodePageWindowsLatin1:
        decodeWindows1252(bytes, out);
        return;
    case kCodePageMacRoman:
        decodeMacRoman(bytes, out);
        return;
    case 20127:
        decodeAscii(bytes, out);
        return;
    case 65001:
        out += QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
        return;
    default:
        break;
    }
    const iconv_t converter = converterFor(codePage);
    if (converter == kNoConverter) {
        decodeWindows1252(bytes, out);
        return;
    }

    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    // iconv's interface takes non-const input although it never writes through it.
    char* input = const_cast<char*>(bytes.data());
    std::size_t inputLeft = bytes.size();
    std::array<char, 1024> buffer;
    while (inputLeft > 0) {
        char* output = buffer.data();
        std::size_t outputLeft = buffer.size();
        const std::size_t converted = iconv(converter, &input, &inputLeft, &output, &outputLeft);
        const int error = errno;
        out += QString::fromUtf8(buffer.data(), qsizetype(buffer.size() - outputLeft));
        if (converted != std::size_t(-1) || error == E2BIG)
            continue;
        // An invalid or incomplete sequence: the byte stands for nothing readable, and
        // reading goes on after it.
        out += QChar(kReplacementCharacter);
        ++input;
        --inputLeft;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
    }
}

} // namespace lomir::rtf
