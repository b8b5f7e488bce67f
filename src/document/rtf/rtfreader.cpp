#include "document/richtext/fontnames.h"
#include "document/rtf/rtf.h"
#include "document/rtf/rtfcodepage.h"

#include <QString>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lomir {

namespace {

using namespace std::string_view_literals;

constexpr auto kErrorDomain = "LomirRtfErrorDomain";

// Real documents nest a few dozen groups at most; deeper nesting is damage or an
// attack, and each open group costs a saved formatting state.
constexpr int kMaxGroupDepth = 512;

// Numeric parameters are clamped to kRtfParameterLimit, so that the sum of two of them (a
// left indent plus a first-line offset) still fits in an int.
static_assert(2LL * kRtfParameterLimit <= std::numeric_limits<int>::max());

// Font sizes: \fsN in half points (RTF's 16-bit range) and Cocoa's \fsmilliN in
// thousandths of a point.
constexpr int kDefaultHalfPoints = 24;
constexpr int kMaxHalfPoints = 32767;
constexpr int kMaxMilliPoints = 16'383'500;

constexpr double kTwipsPerPoint = 20.0;
constexpr double kLineMultipleUnit = 240.0; // \slN\slmult1: N/240 lines

constexpr char16_t kLineSeparator = 0x2028;
constexpr char16_t kParagraphSeparator = 0x2029;
constexpr char16_t kReplacementCharacter = 0xFFFD;

// ---------------------------------------------------------------------------------------
// Tokens

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

// Splits RTF into groups, control words, control symbols, \'hh bytes and text bytes.
class Tokenizer
{
public:
    explicit Tokenizer(std::string_view data) : m_data(data) {}

    Token next()
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

    // Passes over the data of \binN, or as much of it as there is.
    void skipBytes(qint64 count)
    {
        if (count <= 0)
            return;
        const auto left = qint64(m_data.size() - m_position);
        m_position += std::size_t(std::min(count, left));
    }

private:
    Token controlWord()
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
                value =
                    std::min<qint64>(value * 10 + (m_data[m_position] - '0'), kRtfParameterLimit);
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

    std::string_view m_data;
    std::size_t m_position = 0;
};

// ---------------------------------------------------------------------------------------
// Control words the reader acts on

enum class Word
{
    // document
    Ansi,
    AnsiCodePage,
    CocoaRtf,
    DefaultFont,
    Mac,
    Pc,
    Pca,
    // destinations
    ColorTable,
    ExpandedColorTable,
    FieldInstruction,
    FieldResult,
    FontTable,
    SkippedDestination,
    // font and colour tables
    Blue,
    ColorComponent,
    ColorSpaceGray,
    ColorSpaceRgb,
    Font,
    FontCharset,
    FontCodePage,
    Green,
    Red,
    // character formatting
    Background,
    Bold,
    FontSize,
    FontSizeMilli,
    Foreground,
    Hidden,
    Highlight,
    Italic,
    Plain,
    Strike,
    StrikeDouble,
    Underline,
    UnderlineDash,
    UnderlineDashDot,
    UnderlineDashDotDot,
    UnderlineDot,
    UnderlineDouble,
    UnderlineNone,
    UnderlineThick,
    UnderlineThickDash,
    UnderlineThickDashDot,
    UnderlineThickDashDotDot,
    UnderlineThickDot,
    UnderlineWord,
    Unicode,
    UnicodeSkip,
    // paragraph formatting
    AlignCenter,
    AlignJustified,
    AlignLeft,
    AlignNatural,
    AlignRight,
    FirstLineIndent,
    LeftIndent,
    LineHeight,
    LineHeightMultiple,
    LineLeading,
    ParagraphDefault,
    RightIndent,
    SpaceAfter,
    SpaceBefore,
    // breaks and special characters
    Bullet,
    Cell,
    EmDash,
    EmSpace,
    EnDash,
    EnSpace,
    LeftDoubleQuote,
    LeftQuote,
    LeftToRightMark,
    Line,
    Page,
    Paragraph,
    QuarterEmSpace,
    RightDoubleQuote,
    RightQuote,
    RightToLeftMark,
    Row,
    Tab,
    ZeroWidthJoiner,
    ZeroWidthNonJoiner,
};

struct WordEntry
{
    std::string_view name;
    Word word;
};

// Sorted by name for binary search. Destinations whose text is never shown are listed
// as skipped even where writers forget the \* that would mark them ignorable.
constexpr std::array kWords = {
    WordEntry{"aftnsep"sv, Word::SkippedDestination},
    WordEntry{"aftnsepc"sv, Word::SkippedDestination},
    WordEntry{"annotation"sv, Word::SkippedDestination},
    WordEntry{"ansi"sv, Word::Ansi},
    WordEntry{"ansicpg"sv, Word::AnsiCodePage},
    WordEntry{"atnauthor"sv, Word::SkippedDestination},
    WordEntry{"atnid"sv, Word::SkippedDestination},
    WordEntry{"author"sv, Word::SkippedDestination},
    WordEntry{"b"sv, Word::Bold},
    WordEntry{"bkmkend"sv, Word::SkippedDestination},
    WordEntry{"bkmkstart"sv, Word::SkippedDestination},
    WordEntry{"blue"sv, Word::Blue},
    WordEntry{"bullet"sv, Word::Bullet},
    WordEntry{"c"sv, Word::ColorComponent},
    WordEntry{"cb"sv, Word::Background},
    WordEntry{"cell"sv, Word::Cell},
    WordEntry{"cf"sv, Word::Foreground},
    WordEntry{"chcbpat"sv, Word::Background},
    WordEntry{"cocoartf"sv, Word::CocoaRtf},
    WordEntry{"colorschememapping"sv, Word::SkippedDestination},
    WordEntry{"colortbl"sv, Word::ColorTable},
    WordEntry{"comment"sv, Word::SkippedDestination},
    WordEntry{"company"sv, Word::SkippedDestination},
    WordEntry{"cpg"sv, Word::FontCodePage},
    WordEntry{"csdevicegray"sv, Word::ColorSpaceGray},
    WordEntry{"csdevicergb"sv, Word::ColorSpaceRgb},
    WordEntry{"csgenericgray"sv, Word::ColorSpaceGray},
    WordEntry{"csgenericrgb"sv, Word::ColorSpaceRgb},
    WordEntry{"csgray"sv, Word::ColorSpaceGray},
    WordEntry{"cssrgb"sv, Word::ColorSpaceRgb},
    WordEntry{"datastore"sv, Word::SkippedDestination},
    WordEntry{"deff"sv, Word::DefaultFont},
    WordEntry{"doccomm"sv, Word::SkippedDestination},
    WordEntry{"docvar"sv, Word::SkippedDestination},
    WordEntry{"emdash"sv, Word::EmDash},
    WordEntry{"emspace"sv, Word::EmSpace},
    WordEntry{"endash"sv, Word::EnDash},
    WordEntry{"enspace"sv, Word::EnSpace},
    WordEntry{"expandedcolortbl"sv, Word::ExpandedColorTable},
    WordEntry{"f"sv, Word::Font},
    WordEntry{"falt"sv, Word::SkippedDestination},
    WordEntry{"fcharset"sv, Word::FontCharset},
    WordEntry{"fi"sv, Word::FirstLineIndent},
    WordEntry{"filetbl"sv, Word::SkippedDestination},
    WordEntry{"fldinst"sv, Word::FieldInstruction},
    WordEntry{"fldrslt"sv, Word::FieldResult},
    WordEntry{"fname"sv, Word::SkippedDestination},
    WordEntry{"fonttbl"sv, Word::FontTable},
    WordEntry{"footer"sv, Word::SkippedDestination},
    WordEntry{"footerf"sv, Word::SkippedDestination},
    WordEntry{"footerl"sv, Word::SkippedDestination},
    WordEntry{"footerr"sv, Word::SkippedDestination},
    WordEntry{"footnote"sv, Word::SkippedDestination},
    WordEntry{"fs"sv, Word::FontSize},
    WordEntry{"fsmilli"sv, Word::FontSizeMilli},
    WordEntry{"ftncn"sv, Word::SkippedDestination},
    WordEntry{"ftnsep"sv, Word::SkippedDestination},
    WordEntry{"ftnsepc"sv, Word::SkippedDestination},
    WordEntry{"generator"sv, Word::SkippedDestination},
    WordEntry{"green"sv, Word::Green},
    WordEntry{"header"sv, Word::SkippedDestination},
    WordEntry{"headerf"sv, Word::SkippedDestination},
    WordEntry{"headerl"sv, Word::SkippedDestination},
    WordEntry{"headerr"sv, Word::SkippedDestination},
    WordEntry{"highlight"sv, Word::Highlight},
    WordEntry{"i"sv, Word::Italic},
    WordEntry{"info"sv, Word::SkippedDestination},
    WordEntry{"keywords"sv, Word::SkippedDestination},
    WordEntry{"latentstyles"sv, Word::SkippedDestination},
    WordEntry{"ldblquote"sv, Word::LeftDoubleQuote},
    WordEntry{"li"sv, Word::LeftIndent},
    WordEntry{"line"sv, Word::Line},
    WordEntry{"listoverridetable"sv, Word::SkippedDestination},
    WordEntry{"listtable"sv, Word::SkippedDestination},
    WordEntry{"lquote"sv, Word::LeftQuote},
    WordEntry{"ltrmark"sv, Word::LeftToRightMark},
    WordEntry{"mac"sv, Word::Mac},
    WordEntry{"nestcell"sv, Word::Cell},
    WordEntry{"nestrow"sv, Word::Row},
    WordEntry{"nonshppict"sv, Word::SkippedDestination},
    WordEntry{"object"sv, Word::SkippedDestination},
    WordEntry{"operator"sv, Word::SkippedDestination},
    WordEntry{"page"sv, Word::Page},
    WordEntry{"par"sv, Word::Paragraph},
    WordEntry{"pard"sv, Word::ParagraphDefault},
    WordEntry{"pc"sv, Word::Pc},
    WordEntry{"pca"sv, Word::Pca},
    WordEntry{"pgdsctbl"sv, Word::SkippedDestination},
    WordEntry{"pict"sv, Word::SkippedDestination},
    WordEntry{"plain"sv, Word::Plain},
    WordEntry{"pn"sv, Word::SkippedDestination},
    WordEntry{"private"sv, Word::SkippedDestination},
    WordEntry{"qc"sv, Word::AlignCenter},
    WordEntry{"qd"sv, Word::AlignJustified},
    WordEntry{"qj"sv, Word::AlignJustified},
    WordEntry{"ql"sv, Word::AlignLeft},
    WordEntry{"qmspace"sv, Word::QuarterEmSpace},
    WordEntry{"qnatural"sv, Word::AlignNatural},
    WordEntry{"qr"sv, Word::AlignRight},
    WordEntry{"rdblquote"sv, Word::RightDoubleQuote},
    WordEntry{"red"sv, Word::Red},
    WordEntry{"revtbl"sv, Word::SkippedDestination},
    WordEntry{"ri"sv, Word::RightIndent},
    WordEntry{"row"sv, Word::Row},
    WordEntry{"rquote"sv, Word::RightQuote},
    WordEntry{"rsidtbl"sv, Word::SkippedDestination},
    WordEntry{"rtlmark"sv, Word::RightToLeftMark},
    WordEntry{"sa"sv, Word::SpaceAfter},
    WordEntry{"sb"sv, Word::SpaceBefore},
    WordEntry{"sect"sv, Word::Paragraph},
    WordEntry{"shp"sv, Word::SkippedDestination},
    WordEntry{"shpinst"sv, Word::SkippedDestination},
    WordEntry{"sl"sv, Word::LineHeight},
    WordEntry{"slleading"sv, Word::LineLeading},
    WordEntry{"slmult"sv, Word::LineHeightMultiple},
    WordEntry{"sp"sv, Word::SkippedDestination},
    WordEntry{"strike"sv, Word::Strike},
    WordEntry{"striked"sv, Word::StrikeDouble},
    WordEntry{"stylesheet"sv, Word::SkippedDestination},
    WordEntry{"subject"sv, Word::SkippedDestination},
    WordEntry{"tab"sv, Word::Tab},
    WordEntry{"tc"sv, Word::SkippedDestination},
    WordEntry{"template"sv, Word::SkippedDestination},
    WordEntry{"themedata"sv, Word::SkippedDestination},
    WordEntry{"title"sv, Word::SkippedDestination},
    WordEntry{"txe"sv, Word::SkippedDestination},
    WordEntry{"u"sv, Word::Unicode},
    WordEntry{"uc"sv, Word::UnicodeSkip},
    WordEntry{"ul"sv, Word::Underline},
    WordEntry{"uld"sv, Word::UnderlineDot},
    WordEntry{"uldash"sv, Word::UnderlineDash},
    WordEntry{"uldashd"sv, Word::UnderlineDashDot},
    WordEntry{"uldashdd"sv, Word::UnderlineDashDotDot},
    WordEntry{"uldb"sv, Word::UnderlineDouble},
    WordEntry{"ulhwave"sv, Word::UnderlineThick},
    WordEntry{"ulldash"sv, Word::UnderlineDash},
    WordEntry{"ulnone"sv, Word::UnderlineNone},
    WordEntry{"ulth"sv, Word::UnderlineThick},
    WordEntry{"ulthd"sv, Word::UnderlineThickDot},
    WordEntry{"ulthdash"sv, Word::UnderlineThickDash},
    WordEntry{"ulthdashd"sv, Word::UnderlineThickDashDot},
    WordEntry{"ulthdashdd"sv, Word::UnderlineThickDashDotDot},
    WordEntry{"ulthldash"sv, Word::UnderlineThickDash},
    WordEntry{"ululdbwave"sv, Word::UnderlineDouble},
    WordEntry{"ulw"sv, Word::UnderlineWord},
    WordEntry{"ulwave"sv, Word::Underline},
    WordEntry{"userprops"sv, Word::SkippedDestination},
    WordEntry{"v"sv, Word::Hidden},
    WordEntry{"xe"sv, Word::SkippedDestination},
    WordEntry{"xmlnstbl"sv, Word::SkippedDestination},
    WordEntry{"zwj"sv, Word::ZeroWidthJoiner},
    WordEntry{"zwnj"sv, Word::ZeroWidthNonJoiner},
};

static_assert(std::is_sorted(kWords.begin(), kWords.end(),
                             [](const WordEntry& a, const WordEntry& b) {
                                 return a.name < b.name;
                             }),
              "the control word table must stay sorted");

std::optional<Word> lookUpWord(std::string_view name)
{
    const auto found = std::lower_bound(
        kWords.begin(), kWords.end(), name,
        [](const WordEntry& entry, std::string_view key) { return entry.name < key; });
    if (found == kWords.end() || found->name != name)
        return std::nullopt;
    return found->word;
}

// ---------------------------------------------------------------------------------------
// Reader state

enum class Destination
{
    Text,
    Skip,
    FontTable,
    ColorTable,
    ExpandedColorTable
};

struct CharacterFormat
{
    int font = -1; // -1: the document's default font
    int halfPoints = kDefaultHalfPoints;
    int milliPoints = 0; // Cocoa's exact size; 0 when only \fs gave one
    bool bold = false;
    bool italic = false;
    int underline = LineStyle::None;
    int strikethrough = LineStyle::None;
    int foreground = 0; // colour table index; 0 is "automatic"
    int background = 0; // colour table index; 0 is none
    bool hidden = false;
};

struct ParagraphFormat
{
    TextAlignment alignment = TextAlignment::Natural;
    int spaceBefore = 0; // twips, like every length here
    int spaceAfter = 0;
    int leftIndent = 0;
    int rightIndent = 0;
    int firstLineIndent = 0; // relative to the left indent
    int lineHeight = 0;
    bool lineHeightIsMultiple = false;
    int leading = 0;
};

struct GroupState
{
    Destination destination = Destination::Text;
    CharacterFormat character;
    ParagraphFormat paragraph;
    int unicodeSkip = 1; // \ucN: fallback characters after each \uN
};

struct FontEntry
{
    QString name;
    std::optional<int> charset; // none declared: the document's code page
    int codePage = 0;           // from \cpgN, which wins over the charset
};

struct ColorEntry
{
    bool hasRed = false;
    bool hasGreen = false;
    bool hasBlue = false;
    int red = 0;
    int green = 0;
    int blue = 0;
};

enum class ColorSpace
{
    None,
    Rgb,
    Gray
};

struct ExpandedColorEntry
{
    ColorSpace space = ColorSpace::None;
    std::vector<int> components; // 0 to 100000
};

quint8 toByte(int value, int scale)
{
    const double clamped = std::clamp(double(value), 0.0, double(scale));
    return quint8(std::lround(clamped * 255.0 / scale));
}

// Replaces halves of surrogate pairs that have no other half with U+FFFD, so that the
// text is well-formed UTF-16 whatever \uN escapes the document held. Returns whether it
// replaced any; a text shared with another is copied only then.
bool replaceLoneSurrogates(QString& text)
{
    bool replaced = false;
    const qsizetype size = text.size();
    for (qsizetype i = 0; i < size; ++i) {
        const QChar c = text.at(i);
        if (c.isHighSurrogate() && i + 1 < size && text.at(i + 1).isLowSurrogate()) {
            ++i;
            continue;
        }
        if (c.isSurrogate()) {
            text[i] = QChar(kReplacementCharacter);
            replaced = true;
        }
    }
    return replaced;
}

class RtfReader
{
public:
    explicit RtfReader(std::string_view data) : m_tokenizer(data) {}

    Result<RichText> read();

private:
    Status handleToken(const Token& token);
    Status startGroup();
    void endGroup();
    void handleControlWord(const Token& token);
    void handleControlSymbol(unsigned char symbol);
    void handleTextByte(unsigned char byte);
    void handleTableDelimiter();
    bool handleDestinationWord(Word word);
    void handleDocumentWord(Word word, const Token& token);
    void handleFormattingWord(Word word, const Token& token);
    void handleFontTableWord(Word word, const Token& token);
    void handleColorTableWord(Word word, const Token& token);

    GroupState& state() { return m_stack.back(); }
    void characterFormatChanged() { m_attributesDirty = true; }

    void addByte(unsigned char byte);
    void flushBytes();
    int currentCodePage() const;
    void emitCharacter(char16_t character);
    void appendText(char16_t character);
    void flushPiece();
    void paragraphBreak();
    void closeParagraph(const ParagraphFormat& format);
    void finishFontEntry();
    void finishColorEntry();
    void finishExpandedColorEntry();

    TextAttributes currentAttributes();
    FontSpec fontFor(int index);
    std::optional<Rgba> colorAt(int index) const;
    RichText result();

    Tokenizer m_tokenizer;
    std::vector<GroupState> m_stack;
    bool m_finished = false;
    bool m_ignorableDestinationPending = false;
    int m_fallbackToSkip = 0;

    // document
    int m_codePage = rtf::kCodePageWindowsLatin1;
    int m_defaultFont = -1;
    bool m_writtenByCocoa = false;

    // font table
    std::map<int, FontEntry> m_fonts;
    std::optional<int> m_fontEntryNumber;
    FontEntry m_fontEntry;
    std::map<int, FontSpec> m_fontSpecs;

    // colour tables
    std::vector<std::optional<Rgba>> m_colors;
    ColorEntry m_colorEntry;
    std::vector<std::optional<Rgba>> m_expandedColors;
    ExpandedColorEntry m_expandedEntry;

    // 8-bit text waiting to be decoded
    std::string m_pendingBytes;
    int m_pendingCodePage = 0;
    bool m_leadBytePending = false;
    rtf::CodePageDecoder m_decoder;

    // output: the characters read since the attributes last changed, which take
    // m_attributes; the rest of the paragraph being read; the paragraphs before it
    QString m_piece;
    TextAttributes m_attributes;
    RichText m_paragraph;
    RichText m_text;
    bool m_attributesDirty = true;
    ParagraphFormat m_lastTextParagraph;
};

Result<RichText> RtfReader::read()
{
    // The caller has checked that the data begin with "{\rtf".
    while (!m_finished) {
        const Token token = m_tokenizer.next();
        if (token.kind == Token::Kind::End)
            break;
        const Status handled = handleToken(token);
        if (!handled)
            return handled.error();
    }
    // A document cut off before its closing braces keeps what it has, as editors do.
    flushBytes();
    if (!m_stack.empty() && state().destination == Destination::FontTable)
        finishFontEntry();
    return result();
}

Status RtfReader::handleToken(const Token& token)
{
    // \binN data is skipped wherever it is, so that its bytes are never read as RTF.
    if (token.kind == Token::Kind::ControlWord && token.word == "bin"sv) {
        flushBytes();
        m_tokenizer.skipBytes(token.hasParameter ? token.parameter : 0);
        return Done{};
    }

    // The fallback characters after \uN: \'hh bytes, text bytes and control words count
    // one each; a group boundary ends them.
    if (m_fallbackToSkip > 0) {
        if (token.kind == Token::Kind::GroupStart || token.kind == Token::Kind::GroupEnd) {
            m_fallbackToSkip = 0;
        } else if (token.kind == Token::Kind::Text && (token.byte == '\r' || token.byte == '\n')) {
            return Done{};
        } else {
            --m_fallbackToSkip;
            return Done{};
        }
    }

    switch (token.kind) {
    case Token::Kind::GroupStart:
        flushBytes();
        return startGroup();
    case Token::Kind::GroupEnd:
        flushBytes();
        endGroup();
        return Done{};
    case Token::Kind::ControlWord:
        flushBytes();
        handleControlWord(token);
        return Done{};
    case Token::Kind::ControlSymbol:
        handleControlSymbol(token.byte);
        return Done{};
    case Token::Kind::HexByte:
        if (!m_stack.empty() && state().destination != Destination::Skip)
            addByte(token.byte);
        return Done{};
    case Token::Kind::Text:
        handleTextByte(token.byte);
        return Done{};
    case Token::Kind::End:
        break;
    }
    return Done{};
}

Status RtfReader::startGroup()
{
    if (m_stack.size() >= std::size_t(kMaxGroupDepth)) {
        return Error{QLatin1String(kErrorDomain), kRtfMalformed,
                     QStringLiteral("The RTF document nests its groups more than %1 deep, "
                                    "which no word processor does; it is probably damaged.")
                         .arg(kMaxGroupDepth)};
    }
    if (m_stack.empty())
        m_stack.emplace_back();
    else
        m_stack.push_back(m_stack.back());
    m_ignorableDestinationPending = false;
    return Done{};
}

void RtfReader::endGroup()
{
    m_ignorableDestinationPending = false;
    if (m_stack.empty()) {
        m_finished = true;
        return;
    }
    switch (state().destination) {
    case Destination::FontTable:
        // Ends a braced font entry, or the table itself.
        finishFontEntry();
        break;
    case Destination::ColorTable:
        // A last entry without its ";" still counts; the ";" after a complete one has
        // already added it.
        if (m_colorEntry.hasRed || m_colorEntry.hasGreen || m_colorEntry.hasBlue)
            finishColorEntry();
        break;
    case Destination::ExpandedColorTable:
        if (m_expandedEntry.space != ColorSpace::None || !m_expandedEntry.components.empty())
            finishExpandedColorEntry();
        break;
    case Destination::Text:
    case Destination::Skip:
        break;
    }
    m_stack.pop_back();
    // The group around the whole document has closed; anything after it is not read.
    if (m_stack.empty())
        m_finished = true;
    characterFormatChanged();
}

void RtfReader::handleControlWord(const Token& token)
{
    if (m_stack.empty())
        return;
    const bool ignorable = m_ignorableDestinationPending;
    m_ignorableDestinationPending = false;
    if (state().destination == Destination::Skip)
        return;

    const std::optional<Word> word = lookUpWord(token.word);
    if (!word) {
        // An unknown destination marked with \* is skipped with all it holds; other
        // unknown words are ignored, as RTF asks of every reader.
        if (ignorable)
            state().destination = Destination::Skip;
        return;
    }
    if (handleDestinationWord(*word))
        return;
    if (ignorable) {
        // \* before a word that is not a destination: the group is something this
        // reader does not know.
        state().destination = Destination::Skip;
        return;
    }

    switch (state().destination) {
    case Destination::Text:
        handleDocumentWord(*word, token);
        handleFormattingWord(*word, token);
        break;
    case Destination::FontTable:
        handleFontTableWord(*word, token);
        break;
    case Destination::ColorTable:
    case Destination::ExpandedColorTable:
        handleColorTableWord(*word, token);
        break;
    case Destination::Skip:
        break;
    }
}

bool RtfReader::handleDestinationWord(Word word)
{
    switch (word) {
    case Word::FontTable:
        state().destination = Destination::FontTable;
        m_fontEntryNumber.reset();
        return true;
    case Word::ColorTable:
        state().destination = Destination::ColorTable;
        m_colors.clear();
        m_colorEntry = {};
        return true;
    case Word::ExpandedColorTable:
        state().destination = Destination::ExpandedColorTable;
        m_expandedColors.clear();
        m_expandedEntry = {};
        return true;
    case Word::FieldInstruction:
    case Word::SkippedDestination:
        state().destination = Destination::Skip;
        return true;
    case Word::FieldResult:
        // The shown text of a field (a link's title); its instruction is skipped.
        return state().destination == Destination::Text;
    default:
        return false;
    }
}

void RtfReader::handleDocumentWord(Word word, const Token& token)
{
    switch (word) {
    case Word::Ansi:
        m_codePage = rtf::kCodePageWindowsLatin1;
        break;
    case Word::Mac:
        m_codePage = rtf::kCodePageMacRoman;
        break;
    case Word::Pc:
        m_codePage = rtf::kCodePageDosLatinUs;
        break;
    case Word::Pca:
        m_codePage = rtf::kCodePageDosLatin1;
        break;
    case Word::AnsiCodePage:
        if (token.hasParameter && token.parameter > 0)
            m_codePage = token.parameter;
        break;
    case Word::DefaultFont:
        if (token.hasParameter) {
            m_defaultFont = token.parameter;
            characterFormatChanged();
        }
        break;
    case Word::CocoaRtf:
        m_writtenByCocoa = true;
        characterFormatChanged();
        break;
    default:
        break;
    }
}

void RtfReader::handleFormattingWord(Word word, const Token& token)
{
    CharacterFormat& character = state().character;
    ParagraphFormat& paragraph = state().paragraph;
    const int parameter = token.parameter;
    const bool on = !token.hasParameter || parameter != 0;
    // Underline words turn their style on, or off with a parameter of 0 ("\ul0").
    const auto underline = [&](int style) {
        character.underline = on ? style : LineStyle::None;
        characterFormatChanged();
    };

    switch (word) {
    case Word::Plain: {
        const int skip = state().unicodeSkip;
        character = CharacterFormat{};
        state().unicodeSkip = skip;
        characterFormatChanged();
        break;
    }
    case Word::Font:
        character.font = token.hasParameter ? parameter : 0;
        characterFormatChanged();
        break;
    case Word::FontSize:
        character.halfPoints = token.hasParameter && parameter > 0
                                   ? std::min(parameter, kMaxHalfPoints)
                                   : kDefaultHalfPoints;
        character.milliPoints = 0;
        characterFormatChanged();
        break;
    case Word::FontSizeMilli:
        if (token.hasParameter && parameter > 0) {
            character.milliPoints = std::min(parameter, kMaxMilliPoints);
            characterFormatChanged();
        }
        break;
    case Word::Bold:
        character.bold = on;
        characterFormatChanged();
        break;
    case Word::Italic:
        character.italic = on;
        characterFormatChanged();
        break;
    case Word::Hidden:
        character.hidden = on;
        break;
    case Word::Underline:
        underline(LineStyle::Single);
        break;
    case Word::UnderlineWord:
        underline(LineStyle::Single | LineStyle::ByWord);
        break;
    case Word::UnderlineDouble:
        underline(LineStyle::Double);
        break;
    case Word::UnderlineThick:
        underline(LineStyle::Thick);
        break;
    case Word::UnderlineDot:
        underline(LineStyle::Single | LineStyle::PatternDot);
        break;
    case Word::UnderlineDash:
        underline(LineStyle::Single | LineStyle::PatternDash);
        break;
    case Word::UnderlineDashDot:
        underline(LineStyle::Single | LineStyle::PatternDashDot);
        break;
    case Word::UnderlineDashDotDot:
        underline(LineStyle::Single | LineStyle::PatternDashDotDot);
        break;
    case Word::UnderlineThickDot:
        underline(LineStyle::Thick | LineStyle::PatternDot);
        break;
    case Word::UnderlineThickDash:
        underline(LineStyle::Thick | LineStyle::PatternDash);
        break;
    case Word::UnderlineThickDashDot:
        underline(LineStyle::Thick | LineStyle::PatternDashDot);
        break;
    case Word::UnderlineThickDashDotDot:
        underline(LineStyle::Thick | LineStyle::PatternDashDotDot);
        break;
    case Word::UnderlineNone:
        underline(LineStyle::None);
        break;
    case Word::Strike:
        character.strikethrough = on ? LineStyle::Single : LineStyle::None;
        characterFormatChanged();
        break;
    case Word::StrikeDouble:
        character.strikethrough = on ? LineStyle::Double : LineStyle::None;
        characterFormatChanged();
        break;
    case Word::Foreground:
        character.foreground = token.hasParameter ? parameter : 0;
        characterFormatChanged();
        break;
    case Word::Background:
    case Word::Highlight:
        character.background = token.hasParameter ? parameter : 0;
        characterFormatChanged();
        break;
    case Word::UnicodeSkip:
        state().unicodeSkip = token.hasParameter ? std::clamp(parameter, 0, 16) : 1;
        break;
    case Word::Unicode: {
        if (!token.hasParameter)
            break;
        // RTF writes code units as signed 16-bit numbers, Cocoa as unsigned ones.
        int unit = parameter < 0 ? parameter + 65536 : parameter;
        if (unit < 0 || unit > 0xFFFF)
            unit = kReplacementCharacter;
        emitCharacter(char16_t(unit));
        m_fallbackToSkip = state().unicodeSkip;
        break;
    }

    case Word::ParagraphDefault:
        paragraph = ParagraphFormat{};
        break;
    case Word::AlignLeft:
        paragraph.alignment = TextAlignment::Left;
        break;
    case Word::AlignRight:
        paragraph.alignment = TextAlignment::Right;
        break;
    case Word::AlignCenter:
        paragraph.alignment = TextAlignment::Center;
        break;
    case Word::AlignJustified:
        paragraph.alignment = TextAlignment::Justified;
        break;
    case Word::AlignNatural:
        paragraph.alignment = TextAlignment::Natural;
        break;
    case Word::SpaceBefore:
        paragraph.spaceBefore = parameter;
        break;
    case Word::SpaceAfter:
        paragraph.spaceAfter = parameter;
        break;
    case Word::LeftIndent:
        paragraph.leftIndent = parameter;
        break;
    case Word::RightIndent:
        paragraph.rightIndent = parameter;
        break;
    case Word::FirstLineIndent:
        paragraph.firstLineIndent = parameter;
        break;
    case Word::LineHeight:
        paragraph.lineHeight = parameter;
        break;
    case Word::LineHeightMultiple:
        paragraph.lineHeightIsMultiple = on;
        break;
    case Word::LineLeading:
        paragraph.leading = parameter;
        break;

    case Word::Paragraph:
    case Word::Row:
        paragraphBreak();
        break;
    case Word::Line:
        emitCharacter(kLineSeparator);
        break;
    case Word::Tab:
    case Word::Cell:
        emitCharacter(u'\t');
        break;
    case Word::Page:
        emitCharacter(u'\f');
        break;
    case Word::EmDash:
        emitCharacter(0x2014);
        break;
    case Word::EnDash:
        emitCharacter(0x2013);
        break;
    case Word::EmSpace:
        emitCharacter(0x2003);
        break;
    case Word::EnSpace:
        emitCharacter(0x2002);
        break;
    case Word::QuarterEmSpace:
        emitCharacter(0x2005);
        break;
    case Word::Bullet:
        emitCharacter(0x2022);
        break;
    case Word::LeftQuote:
        emitCharacter(0x2018);
        break;
    case Word::RightQuote:
        emitCharacter(0x2019);
        break;
    case Word::LeftDoubleQuote:
        emitCharacter(0x201C);
        break;
    case Word::RightDoubleQuote:
        emitCharacter(0x201D);
        break;
    case Word::ZeroWidthJoiner:
        emitCharacter(0x200D);
        break;
    case Word::ZeroWidthNonJoiner:
        emitCharacter(0x200C);
        break;
    case Word::LeftToRightMark:
        emitCharacter(0x200E);
        break;
    case Word::RightToLeftMark:
        emitCharacter(0x200F);
        break;
    default:
        break;
    }
}

void RtfReader::handleFontTableWord(Word word, const Token& token)
{
    switch (word) {
    case Word::Font:
        // Cocoa does not brace its entries: a new \fN ends the one before.
        finishFontEntry();
        m_fontEntryNumber = token.hasParameter ? token.parameter : 0;
        m_fontEntry = FontEntry{};
        break;
    case Word::FontCharset:
        if (token.hasParameter)
            m_fontEntry.charset = token.parameter;
        break;
    case Word::FontCodePage:
        m_fontEntry.codePage = token.parameter;
        break;
    case Word::Unicode:
        if (m_fontEntryNumber && token.hasParameter) {
            const int unit = token.parameter < 0 ? token.parameter + 65536 : token.parameter;
            emitCharacter(unit >= 0 && unit <= 0xFFFF ? char16_t(unit) : kReplacementCharacter);
            m_fallbackToSkip = state().unicodeSkip;
        }
        break;
    case Word::UnicodeSkip:
        state().unicodeSkip = token.hasParameter ? std::clamp(token.parameter, 0, 16) : 1;
        break;
    default:
        break;
    }
}

void RtfReader::handleColorTableWord(Word word, const Token& token)
{
    const int parameter = token.parameter;
    if (state().destination == Destination::ColorTable) {
        switch (word) {
        case Word::Red:
            m_colorEntry.red = parameter;
            m_colorEntry.hasRed = true;
            break;
        case Word::Green:
            m_colorEntry.green = parameter;
            m_colorEntry.hasGreen = true;
            break;
        case Word::Blue:
            m_colorEntry.blue = parameter;
            m_colorEntry.hasBlue = true;
            break;
        default:
            break;
        }
        return;
    }
    switch (word) {
    case Word::ColorSpaceRgb:
        m_expandedEntry.space = ColorSpace::Rgb;
        break;
    case Word::ColorSpaceGray:
        m_expandedEntry.space = ColorSpace::Gray;
        break;
    case Word::ColorComponent:
        // At most the components and alpha of an RGB colour are of any use.
        if (m_expandedEntry.components.size() < 4)
            m_expandedEntry.components.push_back(parameter);
        break;
    default:
        break;
    }
}

void RtfReader::handleControlSymbol(unsigned char symbol)
{
    if (m_stack.empty())
        return;
    if (symbol == '*') {
        m_ignorableDestinationPending = true;
        return;
    }
    m_ignorableDestinationPending = false;
    switch (symbol) {
    case '\\':
    case '{':
    case '}':
        handleTextByte(symbol);
        return;
    default:
        break;
    }
    flushBytes();
    if (state().destination != Destination::Text)
        return;
    switch (symbol) {
    case '\n':
    case '\r':
        // Backslash and a line end: how Cocoa writes a paragraph break.
        paragraphBreak();
        break;
    case '~':
        emitCharacter(0x00A0);
        break;
    case '_':
        emitCharacter(0x2011);
        break;
    case '\t':
        emitCharacter(u'\t');
        break;
    default:
        // \- (optional hyphen), \: (index entry) and the like show nothing.
        break;
    }
}

void RtfReader::handleTextByte(unsigned char byte)
{
    if (m_stack.empty())
        return;
    m_ignorableDestinationPending = false;
    switch (state().destination) {
    case Destination::Skip:
        return;
    case Destination::ColorTable:
    case Destination::ExpandedColorTable:
        if (byte == ';')
            handleTableDelimiter();
        return;
    case Destination::FontTable:
        if (byte == ';') {
            flushBytes();
            finishFontEntry();
            return;
        }
        break;
    case Destination::Text:
        break;
    }
    // Line ends in RTF source are layout only; a literal tab is a tab (Cocoa writes them
    // so); other control bytes mean nothing.
    if (byte == '\t') {
        flushBytes();
        emitCharacter(u'\t');
        return;
    }
    if (byte < 0x20)
        return;
    addByte(byte);
}

void RtfReader::handleTableDelimiter()
{
    if (state().destination == Destination::ColorTable)
        finishColorEntry();
    else
        finishExpandedColorEntry();
}

// The code page of the bytes being read: the current font's own (\cpgN, else the
// \fcharsetN it declares), or the document's for a font that declares none or the
// default set.
int RtfReader::currentCodePage() const
{
    int index = -1;
    const FontEntry* entry = nullptr;
    if (m_stack.back().destination == Destination::FontTable) {
        entry = &m_fontEntry;
    } else {
        index = m_stack.back().character.font;
        if (index < 0)
            index = m_defaultFont;
        const auto found = m_fonts.find(index);
        if (found != m_fonts.end())
            entry = &found->second;
    }
    if (entry != nullptr) {
        if (entry->codePage > 0)
            return entry->codePage;
        const int codePage = entry->charset ? rtf::codePageForCharset(*entry->charset) : 0;
        if (codePage != 0)
            return codePage;
    }
    return m_codePage;
}

void RtfReader::addByte(unsigned char byte)
{
    const int codePage = currentCodePage();
    if (!m_pendingBytes.empty() && codePage != m_pendingCodePage)
        flushBytes();
    if (byte < 0x80 && !m_leadBytePending) {
        flushBytes();
        emitCharacter(byte);
        return;
    }
    m_pendingBytes.push_back(char(byte));
    m_pendingCodePage = codePage;
    if (rtf::isDoubleByteCodePage(codePage))
        m_leadBytePending = !m_leadBytePending && rtf::isLeadByte(codePage, byte);
}

void RtfReader::flushBytes()
{
    if (m_pendingBytes.empty())
        return;
    QString decoded;
    m_decoder.decode(m_pendingCodePage, m_pendingBytes, decoded);
    m_pendingBytes.clear();
    m_leadBytePending = false;
    for (const QChar c : std::as_const(decoded))
        emitCharacter(c.unicode());
}

void RtfReader::emitCharacter(char16_t character)
{
    switch (state().destination) {
    case Destination::Text:
        // Every kind of line end in the text is a paragraph break, which the label's
        // text holds as a line feed.
        if (character == u'\n' || character == u'\r' || character == kParagraphSeparator)
            paragraphBreak();
        else
            appendText(character);
        return;
    case Destination::FontTable:
        if (m_fontEntryNumber)
            m_fontEntry.name += QChar(character);
        return;
    case Destination::Skip:
    case Destination::ColorTable:
    case Destination::ExpandedColorTable:
        return;
    }
}

void RtfReader::appendText(char16_t character)
{
    if (state().character.hidden)
        return;
    if (m_attributesDirty) {
        TextAttributes attributes = currentAttributes();
        if (attributes != m_attributes) {
            flushPiece();
            m_attributes = std::move(attributes);
        }
        m_attributesDirty = false;
    }
    m_piece += QChar(character);
    m_lastTextParagraph = state().paragraph;
}

void RtfReader::flushPiece()
{
    m_paragraph.append(m_piece, m_attributes);
    m_piece.clear();
}

void RtfReader::paragraphBreak()
{
    if (state().destination != Destination::Text || state().character.hidden)
        return;
    appendText(u'\n');
    closeParagraph(state().paragraph);
}

void RtfReader::closeParagraph(const ParagraphFormat& format)
{
    ParagraphStyle style;
    style.alignment = format.alignment;
    style.paragraphSpacingBefore = format.spaceBefore / kTwipsPerPoint;
    style.paragraphSpacing = format.spaceAfter / kTwipsPerPoint;
    style.headIndent = format.leftIndent / kTwipsPerPoint;
    style.firstLineHeadIndent = (format.leftIndent + format.firstLineIndent) / kTwipsPerPoint;
    // The text system measures a right indent from the trailing margin as a negative
    // tail indent; RTF has no way to write a positive one.
    style.tailIndent = format.rightIndent > 0 ? -format.rightIndent / kTwipsPerPoint : 0.0;
    style.lineSpacing = format.leading / kTwipsPerPoint;
    if (format.lineHeightIsMultiple && format.lineHeight > 0)
        style.lineHeightMultiple = format.lineHeight / kLineMultipleUnit;

    std::optional<ParagraphStyle> paragraph;
    if (style != ParagraphStyle{})
        paragraph = style;
    // A surrogate pair never spans a paragraph break, so each paragraph can be mended
    // on its own before it joins the text. Mending keeps every position.
    flushPiece();
    RichText text = std::exchange(m_paragraph, RichText());
    QString mended = text.string();
    if (replaceLoneSurrogates(mended)) {
        RichText rebuilt;
        for (const AttributeRun& run : text.runs())
            rebuilt.append(QStringView(mended).mid(run.location, run.length), run.attributes);
        text = std::move(rebuilt);
    }
    text.modifyAttributes(0, text.length(),
                          [&](TextAttributes& attributes) { attributes.paragraph = paragraph; });
    if (m_text.isEmpty())
        m_text = std::move(text);
    else
        m_text.append(text);
}

void RtfReader::finishFontEntry()
{
    flushBytes();
    if (!m_fontEntryNumber)
        return;
    QString name;
    for (const QChar c : std::as_const(m_fontEntry.name)) {
        if (c.unicode() >= 0x20)
            name += c;
    }
    replaceLoneSurrogates(name);
    m_fontEntry.name = name.trimmed();
    m_fonts.try_emplace(*m_fontEntryNumber, m_fontEntry);
    m_fontEntryNumber.reset();
    m_fontEntry = FontEntry{};
    m_fontSpecs.clear();
    characterFormatChanged();
}

void RtfReader::finishColorEntry()
{
    std::optional<Rgba> color;
    if (m_colorEntry.hasRed || m_colorEntry.hasGreen || m_colorEntry.hasBlue) {
        color = Rgba{toByte(m_colorEntry.red, 255), toByte(m_colorEntry.green, 255),
                     toByte(m_colorEntry.blue, 255), 255};
    }
    m_colors.push_back(color);
    m_colorEntry = {};
    characterFormatChanged();
}

void RtfReader::finishExpandedColorEntry()
{
    constexpr int kScale = 100000;
    const ExpandedColorEntry& entry = m_expandedEntry;
    const std::vector<int>& c = entry.components;
    std::optional<Rgba> color;
    if (entry.space == ColorSpace::Rgb && c.size() >= 3) {
        color = Rgba{toByte(c[0], kScale), toByte(c[1], kScale), toByte(c[2], kScale),
                     c.size() >= 4 ? toByte(c[3], kScale) : quint8(255)};
    } else if (entry.space == ColorSpace::Gray && !c.empty()) {
        const quint8 white = toByte(c[0], kScale);
        color = Rgba{white, white, white, c.size() >= 2 ? toByte(c[1], kScale) : quint8(255)};
    }
    m_expandedColors.push_back(color);
    m_expandedEntry = {};
    characterFormatChanged();
}

FontSpec RtfReader::fontFor(int index)
{
    const auto cached = m_fontSpecs.find(index);
    if (cached != m_fontSpecs.end())
        return cached->second;

    QString name;
    const auto found = m_fonts.find(index);
    if (found != m_fonts.end())
        name = found->second.name;
    if (name.isEmpty())
        name = QStringLiteral("Helvetica"); // the text system's default face
    FontSpec font;
    // Cocoa names a face by its PostScript name, which has no spaces; Word and
    // LibreOffice name the family ("Times New Roman") and set \b and \i.
    if (name.contains(QLatin1Char(' ')))
        font.family = name;
    else
        font = fontFromPostScriptName(name, 12.0);
    m_fontSpecs.emplace(index, font);
    return font;
}

std::optional<Rgba> RtfReader::colorAt(int index) const
{
    if (index < 0)
        return std::nullopt;
    const auto position = std::size_t(index);
    // Cocoa's expanded table holds the exact colour; an empty entry there defers to the
    // 8-bit values.
    if (position < m_expandedColors.size() && m_expandedColors[position])
        return m_expandedColors[position];
    if (position < m_colors.size())
        return m_colors[position];
    return std::nullopt;
}

TextAttributes RtfReader::currentAttributes()
{
    const CharacterFormat& character = state().character;
    TextAttributes attributes;

    FontSpec font = fontFor(character.font >= 0 ? character.font : m_defaultFont);
    font.pointSize =
        character.milliPoints > 0 ? character.milliPoints / 1000.0 : character.halfPoints / 2.0;
    // The flags decide the face: Word and LibreOffice name only a family, and Cocoa
    // writes them together with the bold or italic face.
    font.bold = character.bold;
    font.italic = character.italic;
    attributes.font = font;

    if (character.foreground != 0)
        attributes.foreground = colorAt(character.foreground);
    if (character.background != 0) {
        // Cocoa closes a background run with \cb1, its always-white entry 1.
        const bool cocoaNoBackground =
            m_writtenByCocoa && character.background == 1 && colorAt(1) == Rgba{255, 255, 255, 255};
        if (!cocoaNoBackground)
            attributes.background = colorAt(character.background);
    }
    attributes.underline = character.underline;
    attributes.strikethrough = character.strikethrough;
    return attributes;
}

RichText RtfReader::result()
{
    if (!m_piece.isEmpty() || !m_paragraph.isEmpty())
        closeParagraph(m_lastTextParagraph);
    return std::move(m_text);
}

// Whether the bytes open an RTF document: "{\rtf", after white space or a UTF-8 byte
// order mark at most.
std::optional<std::size_t> rtfStart(std::string_view data)
{
    std::size_t position = 0;
    if (data.substr(0, 3) == "\xEF\xBB\xBF"sv)
        position = 3;
    while (position < data.size() && (data[position] == ' ' || data[position] == '\t' ||
                                      data[position] == '\r' || data[position] == '\n'))
        ++position;
    if (data.substr(position, 5) != "{\\rtf"sv)
        return std::nullopt;
    return position;
}

} // namespace

Result<RichText> readRtf(const QByteArray& rtf)
{
    const std::string_view data(rtf.constData(), std::size_t(rtf.size()));
    const std::optional<std::size_t> start = rtfStart(data);
    if (!start) {
        return Error{QLatin1String(kErrorDomain), kRtfNotRtf,
                     QStringLiteral("The file is not in Rich Text Format: RTF files begin with "
                                    "\u201C{\\rtf\u201D. Open it as plain text instead.")};
    }
    RtfReader reader(data.substr(*start));
    return reader.read();
}

} // namespace lomir
