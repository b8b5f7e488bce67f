#pragma once

#include <QtGlobal>
#include <algorithm>
#include <cstddef>
#include <string_view>

namespace lomir::rtf {

// One token of RTF: a group's start or end, a control word with its parameter, a
// control symbol, a byte given in hex (\'hh) or a text byte.
struct Token
{
    enum class Kind
    {
        End,
        GroupStart,
        GroupEnd,
        ControlWord,
        ControlSymbol,
        HexByte,
        Text
    };
    Kind kind = Kind::End;
    std::string_view word;     // the letters of a control word
    bool hasParameter = false; // a control word's numeric parameter
    int parameter = 0;
    unsigned char byte = 0; // a text byte, a \'hh byte or a control symbol's character
};

// Splits RTF into groups, control words, control symbols, \'hh bytes and text bytes.
// Numeric parameters are clamped to kRtfParameterLimit (rtf.h) here, and only here. The
// tokens refer into the data, which must outlive them.
class Tokenizer
{
public:
    explicit Tokenizer(std::string_view data) : m_data(data) {}

    // The next token; one of kind End once the data is used up.
    Token next();

    // Passes over the data of \binN, or as much of it as there is.
    void skipBytes(qint64 count)
    {
        if (count <= 0)
            return;
        const auto left = qint64(m_data.size() - m_position);
        m_position += std::size_t(std::min(count, left));
    }

private:
    Token controlWord();

    std::string_view m_data;
    std::size_t m_position = 0;
};

} // namespace lomir::rtf
