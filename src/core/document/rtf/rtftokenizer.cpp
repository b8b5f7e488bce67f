#include "core/document/rtf/rtftokenizer.h"

#include "core/document/rtf/rtf.h"

namespace lomir::rtf {

namespace {

Token tokenOf(Token::Kind kind)
{
    Token token;
    token.kind = kind;
    return token;
}

bool isAsciiLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

Token Tokenizer::next()
{
    while (m_position < m_data.size()) {
        const char c = m_data[m_position++];
        if (c == '{')
            return tokenOf(Token::Kind::GroupStart);
        if (c == '}')
            return tokenOf(Token::Kind::GroupEnd);
        if (c != '\\') {
            Token text = tokenOf(Token::Kind::Text);
            text.byte = static_cast<unsigned char>(c);
            return text;
        }
        if (m_position >= m_data.size())
            break;
        const char first = m_data[m_position];
        if (isAsciiLetter(first))
            return controlWord();
        ++m_position;
        if (first == '\'') {
            // A byte in hex. Malformed escapes ("\'zz") stand for nothing.
            int value = 0;
            int digits = 0;
            while (digits < 2 && m_position < m_data.size()) {
                const int digit = hexValue(m_data[m_position]);
                if (digit < 0)
                    break;
                value = value * 16 + digit;
                ++digits;
                ++m_position;
            }
            if (digits == 0)
                continue;
            Token hex = tokenOf(Token::Kind::HexByte);
            hex.byte = static_cast<unsigned char>(value);
            return hex;
        }
        Token symbol = tokenOf(Token::Kind::ControlSymbol);
        symbol.byte = static_cast<unsigned char>(first);
        return symbol;
    }
    return tokenOf(Token::Kind::End);
}

Token Tokenizer::controlWord()
{
    const std::size_t start = m_position;
    while (m_position < m_data.size() && isAsciiLetter(m_data[m_position]))
        ++m_position;
    Token token = tokenOf(Token::Kind::ControlWord);
    token.word = m_data.substr(start, m_position - start);

    bool negative = false;
    if (m_position + 1 < m_data.size() && m_data[m_position] == '-' &&
        isDigit(m_data[m_position + 1])) {
        negative = true;
        ++m_position;
    }
    if (m_position < m_data.size() && isDigit(m_data[m_position])) {
        qint64 value = 0;
        while (m_position < m_data.size() && isDigit(m_data[m_position])) {
            value = std::min<qint64>(value * 10 + (m_data[m_position] - '0'), kRtfParameterLimit);
            ++m_position;
        }
        token.hasParameter = true;
        token.parameter = int(negative ? -value : value);
    }
    // A space ends a control word and belongs to it; any other delimiter is content.
    if (m_position < m_data.size() && m_data[m_position] == ' ')
        ++m_position;
    return token;
}

} // namespace lomir::rtf
