#include "core/document/rtf/rtf.h"
#include "core/document/rtf/rtfcodepage.h"

#include <QHash>
#include <QString>
#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace lomir {

namespace {

// The Cocoa RTF writer version written into the header; readers ignore the number, but
// Apple's reader reads \sa and \sb the Cocoa way only when the word is there.
constexpr int kCocoaRtfVersion = 2822;

// The tab stops written for a paragraph without tab stops of its own, as TextEdit writes
// them: twelve stops every 28 points.
constexpr auto kDefaultTabStops =
    "\\tx560\\tx1120\\tx1680\\tx2240\\tx2800\\tx3360\\tx3920\\tx4480\\tx5040\\tx5600\\tx6160"
    "\\tx6720";

// The sizes the reader accepts, so that what is written reads back.
constexpr double kMinPointSize = 0.001;
constexpr double kMaxPointSize = 16383.5;

constexpr char16_t kParagraphSeparator = 0x2029;

// A run's font as the RTF font table names it, with the size and flags set in the text.
struct WrittenFont
{
    QString name;
    QString family;
};

struct CharacterState
{
    int font = 0;
    double pointSize = 12.0;
    bool bold = false;
    bool italic = false;
    int foreground = 0;
    int background = 0;
    int underline = LineStyle::None;
    int strikethrough = LineStyle::None;
};

// The name a font goes by in the table: its PostScript name when it has one, as Cocoa
// writes, otherwise its family, which Cocoa, Word and LibreOffice all understand.
WrittenFont writtenFontFor(const std::optional<FontSpec>& font)
{
    WrittenFont written;
    if (font) {
        written.name = (font->postScriptName.isEmpty() ? font->family : font->postScriptName);
        written.family = font->family;
    }
    QString cleaned;
    for (const QChar c : std::as_const(written.name)) {
        if (c.unicode() >= 0x20)
            cleaned += c;
    }
    written.name = cleaned.trimmed();
    if (written.name.isEmpty()) {
        written.name = QStringLiteral("Helvetica");
        written.family = written.name;
    }
    return written;
}

double writtenPointSize(const std::optional<FontSpec>& font)
{
    const double size = font ? font->pointSize : 12.0;
    if (!std::isfinite(size))
        return 12.0;
    return std::clamp(size, kMinPointSize, kMaxPointSize);
}

// A number as it is written: within the range the reader keeps. Every number is fitted
// once, as the last step, so that a difference of two lengths is taken before either is
// cut.
qint64 rtfNumber(qint64 value)
{
    return std::clamp<qint64>(value, -kRtfParameterLimit, kRtfParameterLimit);
}

// A length in whole twips, before it is fitted into RTF's range; only the span of a
// double's exact integers bounds it here.
qint64 wholeTwips(double points)
{
    if (!std::isfinite(points))
        return 0;
    return std::llround(std::clamp(points * 20.0, -1e15, 1e15));
}

qint64 twips(double points)
{
    return rtfNumber(wholeTwips(points));
}

// The RTF family class of a font, as AppKit chooses it for the faces it knows; anything
// else is \fnil.
const char* familyClass(const QString& family)
{
    static const char* const swiss[] = {"Helvetica",       "Arial",       "Verdana",
                                        "Tahoma",          "Geneva",      "Lucida Grande",
                                        "Liberation Sans", "DejaVu Sans", "Arimo"};
    static const char* const roman[] = {"Times",    "Times New Roman",  "Georgia",
                                        "Palatino", "Liberation Serif", "DejaVu Serif",
                                        "Tinos"};
    static const char* const modern[] = {"Courier", "Courier New", "Liberation Mono",
                                         "DejaVu Sans Mono", "Cousine"};
    const auto matches = [&](const auto& names) {
        return std::any_of(std::begin(names), std::end(names), [&](const char* name) {
            return family.compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
        });
    };
    if (matches(swiss))
        return "\\fswiss";
    if (matches(roman))
        return "\\froman";
    if (matches(modern))
        return "\\fmodern";
    return "\\fnil";
}

bool isParagraphBreak(char16_t c)
{
    return c == u'\n' || c == u'\r' || c == kParagraphSeparator;
}

// A color's components in one number, the key of the color table's index.
quint32 colorKey(const Rgba& color)
{
    return quint32(color.red) << 24 | quint32(color.green) << 16 | quint32(color.blue) << 8 |
           color.alpha;
}

int componentOf(quint8 value)
{
    return int(std::lround(value * 100000.0 / 255.0));
}

class RtfWriter
{
public:
    explicit RtfWriter(const RichText& text) : m_text(text), m_runs(text.runs()) {}

    QByteArray write();

private:
    void collectTables();
    int fontIndex(const std::optional<FontSpec>& font) const;
    int colorIndex(const Rgba& color) const;
    void writeHeader();
    void writeParagraphStyle(const ParagraphStyle& style);
    void writeCharacterChanges(const TextAttributes& attributes, bool first);
    void writeCharacter(char16_t c);
    void writeEscapedName(const QString& name);

    const RichText& m_text;
    const RichText::Runs m_runs;
    std::vector<WrittenFont> m_fonts;
    std::vector<Rgba> m_colors; // from table index 2 on
    // The tables' indexes by font name and by color, so that looking a run's entries up
    // costs the same however many distinct fonts and colors the text has.
    QHash<QString, int> m_fontIndexes;
    std::unordered_map<quint32, int> m_colorIndexes;
    QByteArray m_out;
    CharacterState m_state;
    bool m_unicodeSkipWritten = false;
};

QByteArray RtfWriter::write()
{
    collectTables();
    writeHeader();

    bool first = true;
    bool atParagraphStart = true;
    ParagraphStyle writtenStyle;
    for (const AttributeRun& run : m_runs) {
        const TextAttributes& attributes = run.attributes;
        bool attributesWritten = false;
        for (int i = run.location; i < run.location + run.length; ++i) {
            if (atParagraphStart) {
                // The whole paragraph style again whenever it changes, as Cocoa does.
                const ParagraphStyle style = attributes.paragraph.value_or(ParagraphStyle{});
                if (first || style != writtenStyle) {
                    writeParagraphStyle(style);
                    writtenStyle = style;
                }
                atParagraphStart = false;
                m_unicodeSkipWritten = false;
            }
            if (!attributesWritten) {
                writeCharacterChanges(attributes, first);
                attributesWritten = true;
                first = false;
            }
            const char16_t c = m_text.string().at(i).unicode();
            writeCharacter(c);
            if (isParagraphBreak(c))
                atParagraphStart = true;
        }
    }
    m_out += '}';
    return m_out;
}

void RtfWriter::collectTables()
{
    // A text keeps each distinct attribute set once: runs that share a set share its
    // address, and each set is looked at once.
    std::unordered_set<const TextAttributes*> seen;
    for (const AttributeRun& run : m_runs) {
        if (!seen.insert(&run.attributes).second)
            continue;
        const WrittenFont font = writtenFontFor(run.attributes.font);
        if (!m_fontIndexes.contains(font.name)) {
            m_fontIndexes.insert(font.name, int(m_fonts.size()));
            m_fonts.push_back(font);
        }
        for (const std::optional<Rgba>& color :
             {run.attributes.foreground, run.attributes.background}) {
            if (color &&
                m_colorIndexes.try_emplace(colorKey(*color), 2 + int(m_colors.size())).second)
                m_colors.push_back(*color);
        }
    }
}

int RtfWriter::fontIndex(const std::optional<FontSpec>& font) const
{
    return m_fontIndexes.value(writtenFontFor(font).name);
}

int RtfWriter::colorIndex(const Rgba& color) const
{
    return m_colorIndexes.at(colorKey(color));
}

void RtfWriter::writeHeader()
{
    m_out += "{\\rtf1\\ansi\\ansicpg1252\\cocoartf" + QByteArray::number(kCocoaRtfVersion) + '\n';
    m_out += "\\cocoatextscaling0\\cocoaplatform0{\\fonttbl";
    for (std::size_t i = 0; i < m_fonts.size(); ++i) {
        m_out += "\\f" + QByteArray::number(qulonglong(i)) + familyClass(m_fonts[i].family) +
                 "\\fcharset0 ";
        writeEscapedName(m_fonts[i].name);
        m_out += ';';
    }
    m_out += "}\n";

    // Entry 0 is "automatic" and entry 1 white, in every file Cocoa writes.
    m_out += "{\\colortbl;\\red255\\green255\\blue255;";
    for (const Rgba& color : m_colors) {
        m_out += "\\red" + QByteArray::number(color.red) + "\\green" +
                 QByteArray::number(color.green) + "\\blue" + QByteArray::number(color.blue) + ';';
    }
    m_out += "}\n";
    // The exact sRGB components (and alpha), which Cocoa's reader prefers.
    m_out += "{\\*\\expandedcolortbl;;";
    for (const Rgba& color : m_colors) {
        m_out += "\\cssrgb\\c" + QByteArray::number(componentOf(color.red)) + "\\c" +
                 QByteArray::number(componentOf(color.green)) + "\\c" +
                 QByteArray::number(componentOf(color.blue));
        if (color.alpha != 255)
            m_out += "\\c" + QByteArray::number(componentOf(color.alpha));
        m_out += ';';
    }
    m_out += "}\n";
}

void RtfWriter::writeEscapedName(const QString& name)
{
    bool unicodeSkipWritten = false;
    for (const QChar character : name) {
        const char16_t c = character.unicode();
        if (c == u'\\' || c == u'{' || c == u'}') {
            m_out += '\\';
            m_out += char(c);
        } else if (c == u';') {
            m_out += "\\'3b"; // a literal ";" would end the entry
        } else if (c >= 0x20 && c < 0x7F) {
            m_out += char(c);
        } else if (const auto byte = rtf::windows1252ByteFor(c)) {
            m_out += "\\'" + QByteArray::number(*byte, 16).rightJustified(2, '0');
        } else {
            if (!unicodeSkipWritten) {
                m_out += "\\uc0";
                unicodeSkipWritten = true;
            }
            m_out += "\\u" + QByteArray::number(int(c)) + ' ';
        }
    }
}

void RtfWriter::writeParagraphStyle(const ParagraphStyle& style)
{
    m_out += "\\pard";
    m_out += kDefaultTabStops;
    // \fi is the first line's offset from \li: a left indent cut to RTF's range keeps
    // its first line where it was relative to it.
    const qint64 head = twips(style.headIndent);
    const qint64 firstLineOffset =
        rtfNumber(wholeTwips(style.firstLineHeadIndent) - wholeTwips(style.headIndent));
    if (head != 0 || firstLineOffset != 0)
        m_out += "\\li" + QByteArray::number(head) + "\\fi" + QByteArray::number(firstLineOffset);
    // Only a tail indent measured from the trailing margin (zero or negative) is a right
    // indent RTF can write.
    if (const qint64 right = -twips(style.tailIndent); right > 0)
        m_out += "\\ri" + QByteArray::number(right);
    if (const qint64 before = twips(style.paragraphSpacingBefore); before != 0)
        m_out += "\\sb" + QByteArray::number(before);
    if (const qint64 after = twips(style.paragraphSpacing); after != 0)
        m_out += "\\sa" + QByteArray::number(after);
    if (std::isfinite(style.lineHeightMultiple) && style.lineHeightMultiple > 0) {
        const qint64 multiple =
            rtfNumber(std::llround(std::min(style.lineHeightMultiple * 240.0, 1e15)));
        if (multiple > 0)
            m_out += "\\sl" + QByteArray::number(multiple) + "\\slmult1";
    }
    if (const qint64 leading = twips(style.lineSpacing); leading != 0)
        m_out += "\\slleading" + QByteArray::number(leading);
    m_out += "\\pardirnatural";
    switch (style.alignment) {
    case TextAlignment::Left:
        m_out += "\\ql";
        break;
    case TextAlignment::Right:
        m_out += "\\qr";
        break;
    case TextAlignment::Center:
        m_out += "\\qc";
        break;
    case TextAlignment::Justified:
        m_out += "\\qj";
        break;
    case TextAlignment::Natural:
        break;
    }
    m_out += "\\partightenfactor0\n";
}

// The RTF words for an underline style. Patterns and by-word underlining come from the
// rich-text archive's values; double underlines have no patterned form in RTF.
QByteArray underlineWords(int style)
{
    const int line = style & 0xFF;
    const int pattern = style & 0x0F00;
    const bool byWord = (style & LineStyle::ByWord) != 0;
    if (line == LineStyle::None)
        return "\\ulnone ";
    if (line == LineStyle::Double)
        return "\\uldb ";
    if (line == LineStyle::Thick) {
        switch (pattern) {
        case LineStyle::PatternDot:
            return "\\ulthd ";
        case LineStyle::PatternDash:
            return "\\ulthdash ";
        case LineStyle::PatternDashDot:
            return "\\ulthdashd ";
        case LineStyle::PatternDashDotDot:
            return "\\ulthdashdd ";
        default:
            return "\\ulth ";
        }
    }
    switch (pattern) {
    case LineStyle::PatternDot:
        return "\\uld ";
    case LineStyle::PatternDash:
        return "\\uldash ";
    case LineStyle::PatternDashDot:
        return "\\uldashd ";
    case LineStyle::PatternDashDotDot:
        return "\\uldashdd ";
    default:
        return byWord ? "\\ulw " : "\\ul ";
    }
}

// Styles that read back differently are written the same way, so compare them as RTF.
bool sameUnderline(int a, int b)
{
    return underlineWords(a) == underlineWords(b);
}

int strikeKind(int style)
{
    const int line = style & 0xFF;
    if (line == LineStyle::None)
        return LineStyle::None;
    return line == LineStyle::Double ? LineStyle::Double : LineStyle::Single;
}

void RtfWriter::writeCharacterChanges(const TextAttributes& attributes, bool first)
{
    CharacterState next;
    next.font = fontIndex(attributes.font);
    next.pointSize = writtenPointSize(attributes.font);
    next.bold = attributes.font && attributes.font->bold;
    next.italic = attributes.font && attributes.font->italic;
    next.foreground = attributes.foreground ? colorIndex(*attributes.foreground) : 0;
    next.background = attributes.background ? colorIndex(*attributes.background) : 0;
    next.underline = attributes.underline;
    next.strikethrough = strikeKind(attributes.strikethrough);

    QByteArray fontWords;
    if (first || next.font != m_state.font)
        fontWords += "\\f" + QByteArray::number(next.font);
    if (next.bold != m_state.bold || (first && next.bold))
        fontWords += next.bold ? "\\b" : "\\b0";
    if (next.italic != m_state.italic || (first && next.italic))
        fontWords += next.italic ? "\\i" : "\\i0";
    if (first || next.pointSize != m_state.pointSize) {
        // Half points, plus Cocoa's thousandths of a point for a size between them.
        const double halfPoints = next.pointSize * 2.0;
        fontWords += "\\fs" + QByteArray::number(qint64(std::floor(halfPoints)));
        if (halfPoints != std::floor(halfPoints))
            fontWords += "\\fsmilli" + QByteArray::number(std::llround(next.pointSize * 1000.0));
    }

    QByteArray words;
    if (!fontWords.isEmpty())
        words += fontWords + ' ';
    if (first || next.foreground != m_state.foreground)
        words += "\\cf" + QByteArray::number(next.foreground) + ' ';
    if ((first && next.background != 0) || (!first && next.background != m_state.background)) {
        // Cocoa ends a background with its white entry 1.
        words += "\\cb" + QByteArray::number(next.background != 0 ? next.background : 1) + ' ';
    }
    if ((first && next.underline != LineStyle::None) ||
        (!first && !sameUnderline(next.underline, m_state.underline)))
        words += underlineWords(next.underline);
    if ((first && next.strikethrough != LineStyle::None) ||
        (!first && next.strikethrough != m_state.strikethrough)) {
        if (next.strikethrough == LineStyle::None)
            words += "\\strike0\\striked0 ";
        else if (next.strikethrough == LineStyle::Double)
            words += "\\strike \\striked1 ";
        else
            words += "\\strike \\strikec0 ";
    }
    m_state = next;
    if (!words.isEmpty())
        m_out += '\n' + words;
}

void RtfWriter::writeCharacter(char16_t c)
{
    if (c == u'\\' || c == u'{' || c == u'}') {
        m_out += '\\';
        m_out += char(c);
    } else if (isParagraphBreak(c)) {
        m_out += "\\\n";
    } else if (c == u'\t' || (c >= 0x20 && c < 0x7F)) {
        m_out += char(c);
    } else if (c == u'\f') {
        m_out += "\\page ";
    } else if (const auto byte = rtf::windows1252ByteFor(c)) {
        m_out += "\\'" + QByteArray::number(*byte, 16).rightJustified(2, '0');
    } else {
        // Every other UTF-16 unit, surrogates included, as a number with no fallback.
        if (!m_unicodeSkipWritten) {
            m_out += "\\uc0";
            m_unicodeSkipWritten = true;
        }
        m_out += "\\u" + QByteArray::number(int(c)) + ' ';
    }
}

} // namespace

QByteArray writeRtf(const RichText& text)
{
    return RtfWriter(text).write();
}

} // namespace lomir
