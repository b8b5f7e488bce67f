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
// takes a label's default: Helvetica 12, black, no background, natural alignment, as
// documents written on macOS assume.
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

// A run of characters that share one set of attributes, as a text hands it out: where it
// is and a reference to its attributes, which stay in the text. The reference is good as
// long as the text lives and is not changed, like a reference into a container; runs
// with equal attributes refer to one and the same set. Positions count UTF-16 units.
struct AttributeRun
{
    int location = 0;
    int length = 0;
    const TextAttributes& attributes;

    bool operator==(const AttributeRun& other) const
    {
        return location == other.location && length == other.length &&
               attributes == other.attributes;
    }
};

// The label's rich text: a UTF-16 string and the attributes of every character, kept
// as runs. A value type: copies are independent and equality compares characters and
// attributes. Runs are kept canonical (no empty runs, neighbours differ), so two texts
// that format the same characters the same way compare equal however they were built.
//
// Memory: a run is its end and the index of its attribute set (eight bytes); each
// distinct attribute set is stored once, as the keyed archive stores them. A label has a
// handful of distinct sets, so a text takes little more than its characters and eight
// bytes a run, however many runs a file gives it.
class RichText
{
public:
    class Runs;

    RichText() = default;
    explicit RichText(QString text, TextAttributes attributes = {});

    const QString& string() const { return m_string; }
    int length() const { return int(m_string.size()); }
    bool isEmpty() const { return m_string.isEmpty(); }

    // The attributes of the character at position (0 <= position < length()).
    const TextAttributes& attributesAt(int position) const;

    // The runs over the whole text, or over a range with the first and last run
    // clipped to it, in text order: a view into this text, without copies. Not offered
    // on a temporary text, whose runs would die with it.
    Runs runs() const&;
    Runs runs(int location, int length) const&;
    Runs runs() const&& = delete;
    Runs runs(int location, int length) const&& = delete;

    // Calls visit(const TextAttributes&, int location, int length) for each run over
    // the range, clipped to it.
    template <typename Visitor> void forEachRun(int location, int length, Visitor&& visit) const;

    // The characters and attributes of a range.
    RichText mid(int location, int length) const;

    // Replaces a range with plain characters. They take the attributes of the first
    // replaced character; when nothing is replaced, those of the character before
    // (or after, at the start), as typed text takes the formatting around it.
    void replace(int location, int length, const QString& text);
    // Replaces a range with rich text, keeping its attributes.
    void replace(int location, int length, const RichText& text);

    // Appending costs only what is appended, so a text can be built run by run.
    void append(const RichText& text) { replace(length(), 0, text); }
    void append(QStringView text, const TextAttributes& attributes);
    void remove(int location, int length) { replace(location, length, QString()); }

    // Sets exactly these attributes over the range, replacing all others.
    void setAttributes(int location, int length, const TextAttributes& attributes);

    // Changes the attributes over the range, splitting runs at the range's ends; for
    // adding or removing one attribute. change(TextAttributes&) is called once for each
    // distinct attribute set in the range, so it must depend on nothing but the set.
    template <typename Change> void modifyAttributes(int location, int length, Change&& change);

    // Deletes the last user-perceived character (a whole grapheme cluster: an emoji
    // with its modifiers, a letter with its combining marks, a serial placeholder
    // unit). Returns false when the text is empty.
    bool deleteLastCharacter();

    bool operator==(const RichText& other) const
    {
        return m_string == other.m_string && m_runs == other.m_runs &&
               m_attributeSets == other.m_attributeSets;
    }

private:
    struct Run
    {
        qint32 end = 0;           // one past the run's last UTF-16 unit
        quint32 attributeSet = 0; // index into m_attributeSets
        bool operator==(const Run&) const = default;
    };

    int startOf(std::size_t run) const { return run == 0 ? 0 : m_runs[run - 1].end; }
    // A run as handed out, clipped to [from, to).
    AttributeRun clippedRun(std::size_t run, int from, int to) const
    {
        const int start = std::max(startOf(run), from);
        const int end = std::min(int(m_runs[run].end), to);
        return {start, end - start, m_attributeSets[m_runs[run].attributeSet]};
    }
    // The index of the run holding position (m_runs.size() at or after the end).
    std::size_t runAt(int position) const;
    // Splits the run containing position so that a run starts there; returns the
    // index of that run (m_runs.size() when position is the end of the text).
    std::size_t splitAt(int position);
    // The index of an attribute set equal to attributes, added if there is none.
    quint32 attributeSetFor(const TextAttributes& attributes);
    // Merges neighbours with the same set, drops empty runs and sets no run uses, and
    // numbers the sets in order of first use, so that equal texts are stored alike.
    void normalize();
    // After sets were changed in place: makes sets that became equal one, then
    // normalizes.
    void mergeEqualSets();
    void rebuildSetIndex();

    QString m_string;
    std::vector<Run> m_runs;                     // covers m_string exactly, in order
    std::vector<TextAttributes> m_attributeSets; // distinct, in order of first use
    // Finds a set by its hash: an open-addressing table of set indexes (kNoSet where
    // empty), twice as large as the sets or more. Not part of the value.
    std::vector<quint32> m_setIndex;
    static constexpr quint32 kNoSet = 0xffffffff;
};

// The runs of a text over a range, clipped to it: a view that yields AttributeRun
// values, whose attributes refer into the text. Cheap to copy; it and its iterators are
// valid while the text lives and is not changed.
class RichText::Runs
{
public:
    class Iterator
    {
    public:
        using value_type = AttributeRun;
        using difference_type = std::ptrdiff_t;

        Iterator() = default;
        AttributeRun operator*() const { return m_text->clippedRun(m_run, m_from, m_to); }
        Iterator& operator++()
        {
            ++m_run;
            return *this;
        }
        Iterator operator++(int)
        {
            Iterator previous = *this;
            ++m_run;
            return previous;
        }
        bool operator==(const Iterator& other) const { return m_run == other.m_run; }

    private:
        friend class Runs;
        Iterator(const RichText* text, std::size_t run, int from, int to)
            : m_text(text), m_run(run), m_from(from), m_to(to)
        {
        }
        const RichText* m_text = nullptr;
        std::size_t m_run = 0;
        int m_from = 0;
        int m_to = 0;
    };

    std::size_t size() const { return m_last - m_first; }
    bool empty() const { return m_first == m_last; }
    AttributeRun operator[](std::size_t index) const
    {
        Q_ASSERT(index < size());
        return m_text->clippedRun(m_first + index, m_from, m_to);
    }
    AttributeRun front() const { return (*this)[0]; }
    AttributeRun back() const { return (*this)[size() - 1]; }
    Iterator begin() const { return Iterator(m_text, m_first, m_from, m_to); }
    Iterator end() const { return Iterator(m_text, m_last, m_from, m_to); }

    // Equal when the runs are: the same places and equal attributes.
    bool operator==(const Runs& other) const;

private:
    friend class RichText;
    Runs(const RichText& text, std::size_t first, std::size_t last, int from, int to)
        : m_text(&text), m_first(first), m_last(last), m_from(from), m_to(to)
    {
    }

    const RichText* m_text;
    std::size_t m_first;
    std::size_t m_last;
    int m_from;
    int m_to;
};

template <typename Visitor>
void RichText::forEachRun(int location, int length, Visitor&& visit) const
{
    for (const AttributeRun& run : runs(location, length))
        visit(run.attributes, run.location, run.length);
}

template <typename Change>
void RichText::modifyAttributes(int location, int length, Change&& change)
{
    if (length <= 0)
        return;
    const std::size_t first = splitAt(location);
    const std::size_t last = splitAt(location + length);
    if (first == 0 && last == m_runs.size()) {
        // Every set is in the range: each is changed where it is, without copies.
        for (TextAttributes& attributes : m_attributeSets)
            change(attributes);
        mergeEqualSets();
        return;
    }
    // What each set of the range becomes, worked out once per set.
    std::vector<quint32> changed(m_attributeSets.size(), kNoSet);
    for (std::size_t i = first; i < last; ++i) {
        const quint32 set = m_runs[i].attributeSet;
        if (changed[set] == kNoSet) {
            TextAttributes attributes = m_attributeSets[set];
            change(attributes);
            changed[set] = attributeSetFor(attributes);
        }
        m_runs[i].attributeSet = changed[set];
    }
    normalize();
}

} // namespace lomir

Q_DECLARE_METATYPE(lomir::RichText)
