#include "core/layout/measurement.h"

#include "core/base/units.h"
#include "core/document/richtext/richtextdocument.h"
#include "core/layout/layoutresolution.h"

#include <QFontMetricsF>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>
#include <algorithm>
#include <cmath>
#include <vector>

namespace lomir {

namespace {

constexpr QChar kLineFeed = u'\n';
constexpr QChar kCarriageReturn = u'\r';
constexpr double kWidthPadding = 2.0;
constexpr double kHeightPadding = 1.0;

// Wider than any label; lines are never wrapped anyway.
constexpr qreal kUnboundedLineWidth = 1.0e6;

FontSpec fontOf(const TextAttributes& attributes)
{
    return attributes.font.value_or(defaultFont());
}

struct LineMetrics
{
    double width = 0.0;  // natural width of the laid-out line
    double height = 0.0; // ascent + descent + leading, a negative leading left out
};

// Lays out runs of rich text at one common resolution and reports each line in points.
class PointLayout
{
public:
    explicit PointLayout(double largestSize)
        : m_pixelsPerPoint(layoutDpi(largestSize) / kPointsPerInch)
    {
    }

    // The face at its size in layout pixels, unhinted so that advances are the font's
    // design widths rather than widths snapped to pixels.
    QFont font(const FontSpec& face) const
    {
        QFont font = toQFont(face);
        font.setPixelSize(std::max(1, int(std::lround(face.pointSize * m_pixelsPerPoint))));
        font.setHintingPreference(QFont::PreferNoHinting);
        return font;
    }

    double toPoints(qreal pixels) const { return double(pixels) / m_pixelsPerPoint; }

    // The lines of one paragraph (text between line feeds). An empty paragraph is one
    // line in emptyLineFont.
    std::vector<LineMetrics> paragraphLines(const RichText& text, int location, int length,
                                            const FontSpec& emptyLineFont) const
    {
        QString characters = text.string().mid(location, length);
        // A carriage return or a paragraph separator ends a line of the label as a line
        // feed does; QTextLayout breaks only at the line separator, so they become one.
        for (QChar& character : characters) {
            if (character == kCarriageReturn || character == QChar::ParagraphSeparator)
                character = QChar::LineSeparator;
        }

        QTextLayout layout(characters,
                           font(length > 0 ? fontOf(text.attributesAt(location)) : emptyLineFont));
        QList<QTextLayout::FormatRange> formats;
        text.forEachRun(location, length,
                        [&](const TextAttributes& attributes, int from, int count) {
                            QTextLayout::FormatRange range;
                            range.start = from - location;
                            range.length = count;
                            range.format.setFont(font(fontOf(attributes)));
                            formats.append(range);
                        });
        layout.setFormats(formats);
        QTextOption option;
        option.setWrapMode(QTextOption::NoWrap);
        option.setUseDesignMetrics(true);
        option.setTabStopDistance(kDefaultTabInterval * m_pixelsPerPoint);
        layout.setTextOption(option);

        std::vector<LineMetrics> lines;
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(kUnboundedLineWidth);
            // Faces whose ascent and descent the font engine rounds to whole pixels (the
            // URW fonts, such as Nimbus Sans for Helvetica) can report a negative leading
            // where the rounded line height falls short of them. The document layout that
            // prints the label leaves a negative leading out, and so does the measurement.
            lines.push_back(
                {toPoints(line.naturalTextWidth()),
                 toPoints(line.ascent() + line.descent() + std::max(qreal(0), line.leading()))});
        }
        layout.endLayout();
        return lines;
    }

private:
    double m_pixelsPerPoint;
};

// Calls visit(location, length, emptyLineFont) for each paragraph of the text: the
// pieces between line feeds, a text without one being one paragraph and a trailing line
// feed starting an empty last one. A carriage return just before a line feed belongs to
// the line break and is not laid out. An empty paragraph has the font of the line feed
// that ends it (or, at the end, the one before it).
template <typename Visitor>
void forEachParagraph(const RichText& text, const FontSpec& fontOfEmptyText, Visitor&& visit)
{
    const QString& characters = text.string();
    int location = 0;
    while (true) {
        const qsizetype lineFeed = characters.indexOf(kLineFeed, location);
        const int end = lineFeed < 0 ? text.length() : int(lineFeed);
        int length = end - location;
        if (lineFeed >= 0 && length > 0 && characters.at(end - 1) == kCarriageReturn)
            --length;
        FontSpec emptyLineFont = fontOfEmptyText;
        if (location < text.length())
            emptyLineFont = fontOf(text.attributesAt(location));
        else if (location > 0)
            emptyLineFont = fontOf(text.attributesAt(location - 1));
        visit(location, length, emptyLineFont);
        if (lineFeed < 0)
            return;
        location = end + 1;
    }
}

} // namespace

double widestLineWidth(const RichText& text)
{
    const PointLayout layout(largestPointSize(text));
    double widest = 0.0;
    forEachParagraph(text, defaultFont(),
                     [&](int location, int length, const FontSpec& emptyLineFont) {
                         // A line is measured as drawn on its own, unwrapped.
                         for (const LineMetrics& line :
                              layout.paragraphLines(text, location, length, emptyLineFont))
                             widest = std::max(widest, line.width);
                     });
    return widest + kWidthPadding;
}

FontSpec labelFont()
{
    FontSpec font;
    font.family = QStringLiteral("Arial");
    font.postScriptName = QStringLiteral("ArialMT");
    font.pointSize = 4.0;
    return font;
}

double minimumTextHeight(const FontSpec& font)
{
    const PointLayout layout(font.pointSize);
    const QFontMetricsF metrics(layout.font(font));
    return layout.toPoints(metrics.ascent() + metrics.descent()) + kHeightPadding;
}

double textHeight(const RichText& text, const std::optional<FontSpec>& font)
{
    const FontSpec minimumFont = font.value_or(labelFont());
    TextAttributes emptyTextAttributes;
    emptyTextAttributes.font = minimumFont;
    // An empty label is as tall as one line of the letter "a".
    const RichText measured =
        text.isEmpty() ? RichText(QStringLiteral("a"), emptyTextAttributes) : text;

    const PointLayout layout(std::max(largestPointSize(measured), minimumFont.pointSize));
    double height = 0.0;
    forEachParagraph(measured, minimumFont,
                     [&](int location, int length, const FontSpec& emptyLineFont) {
                         for (const LineMetrics& line :
                              layout.paragraphLines(measured, location, length, emptyLineFont))
                             height += line.height;
                     });
    return std::max(height, minimumTextHeight(minimumFont));
}

RichText withUniformFontSize(const RichText& text, double pointSize)
{
    RichText result = text;
    // Sizes are set, not scaled: every run with a font keeps its face and takes the size;
    // runs without a font stay as they are.
    result.modifyAttributes(0, result.length(), [&](TextAttributes& attributes) {
        if (attributes.font)
            attributes.font->pointSize = pointSize;
    });
    return result;
}

namespace {

// Whether a run of a document carries a font of its own rather than the document's.
bool hasOwnFont(const QTextCharFormat& format)
{
    return format.hasProperty(QTextFormat::FontFamilies) ||
           format.hasProperty(QTextFormat::FontPointSize) ||
           format.hasProperty(QTextFormat::FontPixelSize);
}

QTextCharFormat resized(QTextCharFormat format, double pointSize)
{
    format.clearProperty(QTextFormat::FontPixelSize);
    format.setFontPointSize(pointSize);
    return format;
}

} // namespace

void setUniformFontSize(QTextDocument& document, double pointSize)
{
    // The document's font comes first, so that runs without a font of their own, and new
    // typing, are at the size too.
    QFont documentFont = document.defaultFont();
    documentFont.setPointSizeF(pointSize);
    document.setDefaultFont(documentFont);

    struct Fragment
    {
        int position;
        int length;
        QTextCharFormat format;
    };
    std::vector<Fragment> fragments;
    std::vector<std::pair<int, QTextCharFormat>> blockFormats;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        // A block's own character format is what typing into it starts with.
        if (hasOwnFont(block.charFormat()))
            blockFormats.emplace_back(block.position(), resized(block.charFormat(), pointSize));
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            if (fragment.isValid() && hasOwnFont(fragment.charFormat()))
                fragments.push_back({fragment.position(), fragment.length(),
                                     resized(fragment.charFormat(), pointSize)});
        }
    }

    QTextCursor cursor(&document);
    cursor.beginEditBlock();
    for (const auto& [position, format] : blockFormats) {
        cursor.setPosition(position);
        cursor.setBlockCharFormat(format);
    }
    for (const Fragment& fragment : fragments) {
        cursor.setPosition(fragment.position);
        cursor.setPosition(fragment.position + fragment.length, QTextCursor::KeepAnchor);
        cursor.setCharFormat(fragment.format);
    }
    cursor.endEditBlock();
}

qint64 numberOfDigits(qint64 value)
{
    // Dividing toward zero keeps the sign out of the count, and the smallest 64-bit value
    // needs no negation that could overflow.
    if (value >= -9 && value <= 9)
        return 1;
    return 1 + numberOfDigits(value / 10);
}

double roundToPlaces(int places, RoundingRule rule, double value)
{
    const double factor = std::pow(10.0, places);
    const double scaled = value * factor;
    double rounded = scaled;
    switch (rule) {
    case RoundingRule::ToNearestOrAwayFromZero:
        rounded = std::round(scaled);
        break;
    case RoundingRule::ToNearestOrEven: {
        rounded = std::round(scaled);
        // A tie was rounded away from zero; step back when that made it odd.
        if (std::fabs(scaled - std::trunc(scaled)) == 0.5 && std::fmod(rounded, 2.0) != 0.0)
            rounded -= std::copysign(1.0, scaled);
        break;
    }
    case RoundingRule::Up:
        rounded = std::ceil(scaled);
        break;
    case RoundingRule::Down:
        rounded = std::floor(scaled);
        break;
    case RoundingRule::TowardZero:
        rounded = std::trunc(scaled);
        break;
    case RoundingRule::AwayFromZero:
        rounded = scaled < 0.0 ? std::floor(scaled) : std::ceil(scaled);
        break;
    }
    return rounded / factor;
}

} // namespace lomir
