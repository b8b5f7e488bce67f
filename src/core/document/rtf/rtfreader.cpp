#include "core/base/result.h"
#include "core/document/richtext/fontnames.h"
#include "core/document/rtf/rtf.h"
#include "core/document/rtf/rtfcodepage.h"
#include "core/document/rtf/rtfcontrolwords.h"
#include "core/document/rtf/rtftokenizer.h"

#include <QCoreApplication>
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
using rtf::ControlWord;
using rtf::lookUpWord;
using rtf::Token;
using rtf::Tokenizer;
using rtf::Word;

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

constexpr char16_t kParagraphSeparator = 0x2029;
constexpr char16_t kReplacementCharacter = 0xFFFD;

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

// The line an underline word draws; none for a word that is not one.
std::optional<int> underlineStyle(Word word)
{
    switch (word) {
    case Word::Underline:
        return LineStyle::Single;
    case Word::UnderlineWord:
        return LineStyle::Single | LineStyle::ByWord;
    case Word::UnderlineDouble:
        return LineStyle::Double;
    case Word::UnderlineThick:
        return LineStyle::Thick;
    case Word::UnderlineDot:
        return LineStyle::Single | LineStyle::PatternDot;
    case Word::UnderlineDash:
        return LineStyle::Single | LineStyle::PatternDash;
    case Word::UnderlineDashDot:
        return LineStyle::Single | LineStyle::PatternDashDot;
    case Word::UnderlineDashDotDot:
        return LineStyle::Single | LineStyle::PatternDashDotDot;
    case Word::UnderlineThickDot:
        return LineStyle::Thick | LineStyle::PatternDot;
    case Word::UnderlineThickDash:
        return LineStyle::Thick | LineStyle::PatternDash;
    case Word::UnderlineThickDashDot:
        return LineStyle::Thick | LineStyle::PatternDashDot;
    case Word::UnderlineThickDashDotDot:
        return LineStyle::Thick | LineStyle::PatternDashDotDot;
    case Word::UnderlineNone:
        return LineStyle::None;
    default:
        return std::nullopt;
    }
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
    void handleTextWord(const ControlWord& word, const Token& token);
    bool handleDocumentWord(Word word, const Token& token);
    bool handleCharacterWord(Word word, const Token& token);
    bool handleUnderlineWord(Word word, const Token& token);
    bool handleColorWord(Word word, const Token& token);
    bool handleUnicodeWord(Word word, const Token& token);
    void handleParagraphWord(Word word, const Token& token);
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
        LOMIR_RETURN_IF_ERROR(handled);
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
        return Error{QString(kRtfErrorDomain), kRtfMalformed,
                     QCoreApplication::translate(
                         "RtfReader", "The RTF document nests its groups more than %1 deep, "
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

    const std::optional<ControlWord> word = lookUpWord(token.word);
    if (!word) {
        // An unknown destination marked with \* is skipped with all it holds; other
        // unknown words are ignored, as RTF asks of every reader.
        if (ignorable)
            state().destination = Destination::Skip;
        return;
    }
    if (handleDestinationWord(word->word))
        return;
    if (ignorable) {
        // \* before a word that is not a destination: the group is something this
        // reader does not know.
        state().destination = Destination::Skip;
        return;
    }

    switch (state().destination) {
    case Destination::Text:
        handleTextWord(*word, token);
        break;
    case Destination::FontTable:
        handleFontTableWord(word->word, token);
        break;
    case Destination::ColorTable:
    case Destination::ExpandedColorTable:
        handleColorTableWord(word->word, token);
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

bool RtfReader::handleDocumentWord(Word word, const Token& token)
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
        return false;
    }
    return true;
}

// A control word in the text: a character or a break, or a word of one of the groups
// below, each handler taking the words of its group.
void RtfReader::handleTextWord(const ControlWord& word, const Token& token)
{
    switch (word.word) {
    case Word::Character:
        emitCharacter(word.character);
        return;
    case Word::Paragraph:
    case Word::Row:
        paragraphBreak();
        return;
    default:
        break;
    }
    if (handleDocumentWord(word.word, token) || handleCharacterWord(word.word, token) ||
        handleUnderlineWord(word.word, token) || handleColorWord(word.word, token) ||
        handleUnicodeWord(word.word, token))
        return;
    handleParagraphWord(word.word, token);
}

bool RtfReader::handleCharacterWord(Word word, const Token& token)
{
    CharacterFormat& character = state().character;
    const int parameter = token.parameter;
    const bool on = !token.hasParameter || parameter != 0;
    switch (word) {
    case Word::Plain: {
        const int skip = state().unicodeSkip;
        character = CharacterFormat{};
        state().unicodeSkip = skip;
        break;
    }
    case Word::Font:
        character.font = token.hasParameter ? parameter : 0;
        break;
    case Word::FontSize:
        character.halfPoints = token.hasParameter && parameter > 0
                                   ? std::min(parameter, kMaxHalfPoints)
                                   : kDefaultHalfPoints;
        character.milliPoints = 0;
        break;
    case Word::FontSizeMilli:
        if (!token.hasParameter || parameter <= 0)
            return true;
        character.milliPoints = std::min(parameter, kMaxMilliPoints);
        break;
    case Word::Bold:
        character.bold = on;
        break;
    case Word::Italic:
        character.italic = on;
        break;
    case Word::Hidden:
        // Hidden text is dropped as it is read, so the attributes of what is shown stay.
        character.hidden = on;
        return true;
    case Word::Strike:
        character.strikethrough = on ? LineStyle::Single : LineStyle::None;
        break;
    case Word::StrikeDouble:
        character.strikethrough = on ? LineStyle::Double : LineStyle::None;
        break;
    default:
        return false;
    }
    characterFormatChanged();
    return true;
}

bool RtfReader::handleUnderlineWord(Word word, const Token& token)
{
    const std::optional<int> style = underlineStyle(word);
    if (!style)
        return false;
    // Underline words turn their style on, or off with a parameter of 0 ("\ul0").
    const bool on = !token.hasParameter || token.parameter != 0;
    state().character.underline = on ? *style : LineStyle::None;
    characterFormatChanged();
    return true;
}

bool RtfReader::handleColorWord(Word word, const Token& token)
{
    // Indices into the colour tables; 0 is the automatic colour, or no background.
    const int index = token.hasParameter ? token.parameter : 0;
    switch (word) {
    case Word::Foreground:
        state().character.foreground = index;
        break;
    case Word::Background:
    case Word::Highlight:
        state().character.background = index;
        break;
    default:
        return false;
    }
    characterFormatChanged();
    return true;
}

bool RtfReader::handleUnicodeWord(Word word, const Token& token)
{
    switch (word) {
    case Word::UnicodeSkip:
        state().unicodeSkip = token.hasParameter ? std::clamp(token.parameter, 0, 16) : 1;
        return true;
    case Word::Unicode: {
        if (!token.hasParameter)
            return true;
        // RTF writes code units as signed 16-bit numbers, Cocoa as unsigned ones.
        int unit = token.parameter < 0 ? token.parameter + 65536 : token.parameter;
        if (unit < 0 || unit > 0xFFFF)
            unit = kReplacementCharacter;
        emitCharacter(char16_t(unit));
        m_fallbackToSkip = state().unicodeSkip;
        return true;
    }
    default:
        return false;
    }
}

void RtfReader::handleParagraphWord(Word word, const Token& token)
{
    ParagraphFormat& paragraph = state().paragraph;
    const int parameter = token.parameter;
    switch (word) {
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
        paragraph.lineHeightIsMultiple = !token.hasParameter || parameter != 0;
        break;
    case Word::LineLeading:
        paragraph.leading = parameter;
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
    // A label's paragraph keeps a right indent as a negative tail indent, measured from
    // the trailing margin (as documents from macOS store it); RTF has no way to write a
    // positive one.
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
        name = QStringLiteral("Helvetica"); // a label's default face
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
        return Error{QString(kRtfErrorDomain), kRtfNotRtf,
                     QCoreApplication::translate(
                         "RtfReader", "The file is not in Rich Text Format: RTF files begin with "
                                      "\u201C{\\rtf\u201D. Open it as plain text instead.")};
    }
    RtfReader reader(data.substr(*start));
    return reader.read();
}

} // namespace lomir
