#pragma once

#include <QMetaType>
#include <QString>
#include <QtGlobal>
#include <algorithm>
#include <optional>
#include <vector>

namespace lomir {

// A colour as 8-bit red, green, blue and alpha in sRGB. Label text, RTF colour tables
// and the rich-text archive all carry colours at this precision or are read into it.
struct Rgba
{
    quint8 red = 0;
    quint8 green = 0;
    quint8 blue = 0;
    quint8 alpha = 255;

    bool operator==(const Rgba&) const = default;

    // "#rrggbbaa", lower case.
    QString toHex() const;
};

// A font as the label stores it. The PostScript name is what the rich-text archive
// and Cocoa RTF name a face by; family, bold and italic are what Qt selects by.
struct FontSpec
{
    QString family;         // "Helvetica", "Liberation Sans"
    QString postScriptName; // "Helvetica-Bold"; may be empty for fonts made on Linux
    double pointSize = 12.0;
    bool bold = false;
    bool italic = false;

    bool operator==(const FontSpec&) const = default;
};

// Paragraph alignment, numbered as the rich-text archive and Core Text number it.
enum class TextAlignment : int
{
    Left = 0,
    Right = 1,
    Center = 2,
    Justified = 3,
    Natural = 4
};

// The paragraph attributes a label can carry. Lengths are in points.
struct ParagraphStyle
{
    TextAlignment alignment = TextAlignment::Natural;
    double lineSpacing = 0.0;            // extra space between the lines of a paragraph
    double paragraphSpacing = 0.0;       // space after the paragraph
    double paragraphSpacingBefore = 0.0; // space before the paragraph
    double headIndent = 0.0;             // left indent of every line but the first
    double firstLineHeadIndent = 0.0;    // left indent of the first line
    double tailIndent = 0.0;             // right indent (0 means none)
    double lineHeightMultiple = 0.0;     // 0 means single spacing

    bool operator==(const ParagraphStyle&) const = default;
};

// Underline and strikethrough styles, with the raw values of the rich-text archive:
// a line style in the low byte, a dash pattern above it, and a by-word flag.
namespace LineStyle {
inline constexpr int None = 0x00;
inline constexpr int Single = 0x01;
inline constexpr int Thick = 0x02;
inline constexpr int Double = 0x09;
inline constexpr int PatternDot = 0x100;
inline constexpr int PatternDash = 0x200;
inline constexpr int PatternDashDot = 0x300;
inline constexpr int PatternDashDotDot = 0x400;
inline constexpr int ByWord = 0x8000;
} // namespace LineStyle

// Everything one run of characters is formatted with. An attribute that is absent
// takes the text system's default: Helvetica 12, black, no background, natural
// alignment.
struct TextAttributes
{
    std::optional<FontSpec> font;
    std::optional<Rgba> foreground;
    std::optional<Rgba> background;
    int underline = LineStyle::None;
    int strikethrough = LineStyle::None;
    std::optional<ParagraphStyle> paragraph;

    bool operator==(const TextAttributes&) const = default;
};

// A run of characters that share one set of attributes. Positions count UTF-16 units.
struct AttributeRun
{
    int location = 0;
    int length = 0;
    TextAttributes attributes;

    bool operator==(const AttributeRun&) const = default;
};

// The label's rich text: a UTF-16 string and the attributes of every character, kept
// as runs. A value type: copies are independent and equality compares characters and
// attributes. Runs are kept canonical (no empty runs, neighbours differ), so two texts
// that format the same characters the same way compare equal however they were built.
class RichText
{
public:
    RichText() = default;
    explicit RichText(QString text, TextAttributes attributes = {});

    const QString& string() const { return m_string; }
    int length() const { return int(m_string.size()); }
    bool isEmpty() const { return m_string.isEmpty(); }

    // The attributes of the character at position (0 <= position < length()).
    const TextAttributes& attributesAt(int position) const;

    // The runs over the whole text, or over a range with the first and last run
    // clipped to it, in text order.
    std::vector<AttributeRun> runs() const { return runs(0, length()); }
    std::vector<AttributeRun> runs(int location, int length) const;

    // Calls visit(const TextAttributes&, int location, int length) for each run over
    // the range, clipped to it, without building a vector.
    template <typename Visitor> void forEachRun(int location, int length, Visitor&& visit) const;

    // The characters and attributes of a range.
    RichText mid(int location, int length) const;

    // Replaces a range with plain characters. They take the attributes of the first
    // replaced character; when nothing is replaced, those of the character before
    // (or after, at the start), as the text system does for typing.
    void replace(int location, int length, const QString& text);
    // Replaces a range with rich text, keeping its attributes.
    void replace(int location, int length, const RichText& text);

    void append(const RichText& text) { replace(length(), 0, text); }
    void append(const QString& text, const TextAttributes& attributes);
    void remove(int location, int length) { replace(location, length, QString()); }

    // Sets exactly these attributes over the range, replacing all others.
    void setAttributes(int location, int length, const TextAttributes& attributes);

    // Calls change(TextAttributes&) on the attributes of every run over the range,
    // splitting runs at the range's ends; for adding or removing one attribute.
    template <typename Change> void modifyAttributes(int location, int length, Change&& change);

    // Deletes the last user-perceived character (a whole grapheme cluster: an emoji
    // with its modifiers, a letter with its combining marks, a serial placeholder
    // unit). Returns false when the text is empty.
    bool deleteLastCharacter();

    bool operator==(const RichText& other) const = default;

private:
    struct Run
    {
        int length = 0;
        TextAttributes attributes;
        bool operator==(const Run&) const = default;
    };

    // Splits the run containing position so that a run starts there; returns the
    // index of that run (m_runs.size() when position is the end of the text).
    std::size_t splitAt(int position);
    void normalize();

    QString m_string;
    std::vector<Run> m_runs; // covers m_string exactly
};

template <typename Visitor>
void RichText::forEachRun(int location, int length, Visitor&& visit) const
{
    const int end = location + length;
    int start = 0;
    for (const Run& run : m_runs) {
        const int runEnd = start + run.length;
        if (runEnd > location && start < end) {
            const int from = std::max(start, location);
            const int to = std::min(runEnd, end);
            visit(run.attributes, from, to - from);
        }
        if (runEnd >= end)
            break;
        start = runEnd;
    }
}

template <typename Change>
void RichText::modifyAttributes(int location, int length, Change&& change)
{
    if (length <= 0)
        return;
    const std::size_t first = splitAt(location);
    const std::size_t last = splitAt(location + length);
    for (std::size_t i = first; i < last; ++i)
        change(m_runs[i].attributes);
    normalize();
}

} // namespace lomir

Q_DECLARE_METATYPE(lomir::RichText)
