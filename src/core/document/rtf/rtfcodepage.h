#pragma once

#include <QString>
#include <iconv.h>
#include <map>
#include <optional>
#include <string_view>

// Character sets of RTF's 8-bit text: the code page a document declares (\ansicpgN,
// \mac, \pc) or a font declares (\fcharsetN, \cpgN) decides what a \'hh byte means.
namespace lomir::rtf {

inline constexpr int kCodePageWindowsLatin1 = 1252;
inline constexpr int kCodePageMacRoman = 10000;
inline constexpr int kCodePageDosLatinUs = 437;
inline constexpr int kCodePageDosLatin1 = 850;

// The code page of a font's \fcharsetN, or 0 when the font uses the document's own (the
// "default" set 1, and sets without a code page of their own, such as Symbol). ANSI, set
// 0, is Windows-1252 whatever the document declares: a Japanese document's Latin fonts
// still write their quotes and accents as Windows-1252 bytes.
int codePageForCharset(int charset);

// Whether the code page writes some characters as a lead byte and a trail byte, and
// whether a byte is such a lead byte. Trail bytes may be ASCII letters, so a reader
// must not take the byte after a lead byte for a character of its own.
bool isDoubleByteCodePage(int codePage);
bool isLeadByte(int codePage, unsigned char byte);

// The Windows-1252 byte of a character above ASCII, if that code page has one.
std::optional<unsigned char> windows1252ByteFor(char16_t character);

// Turns bytes of a code page into characters. Windows-1252 and Mac Roman are built in;
// the others go through iconv, whose converters are opened once per decoder.
class CodePageDecoder
{
public:
    CodePageDecoder() = default;
    ~CodePageDecoder();
    CodePageDecoder(const CodePageDecoder&) = delete;
    CodePageDecoder& operator=(const CodePageDecoder&) = delete;

    // Appends the characters the bytes stand for. A byte that means nothing in the code
    // page becomes U+FFFD; a code page this system cannot convert is read as
    // Windows-1252, the one RTF assumes.
    void decode(int codePage, std::string_view bytes, QString& out);

private:
    iconv_t converterFor(int codePage);

    std::map<int, iconv_t> m_converters;
};

} // namespace lomir::rtf
