#include "core/document/richtext/richtextdocument.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace lomir {

namespace {

// Values Qt's formats have no field for travel in user properties, so that a label
// taken into the editor and back keeps them.
enum : int
{
    // QStringList {family, bold, italic, PostScript name}: the name and the face it
    // was given for. It is kept only while the face is still the same one.
    FontIdentityProperty = QTextFormat::UserProperty + 1,
    UnderlineStyleProperty,     // int, raw line style (double, thick, patterns)
    StrikethroughStyleProperty, // int, raw line style
    ParagraphStyleProperty,     // QList<qreal>: the paragraph style's spacing and indents
};

QColor toQColor(const Rgba& color)
{
    return QColor(color.red, color.green, color.blue, color.alpha);
}

std::optional<Rgba> brushColor(const QTextFormat& format, int property)
{
    if (!format.hasProperty(property))
        return std::nullopt;
    const QBrush brush = format.brushProperty(property);
    if (brush.style() == Qt::NoBrush)
        return std::nullopt;
    const QColor color = brush.color().toRgb();
    return Rgba{quint8(color.red()), quint8(color.green()), quint8(color.blue()),
                quint8(color.alpha())};
}

QStringList fontIdentity(const QString& family, bool bold, bool italic, const QString& name)
{
    return {family, bold ? QStringLiteral("1") : QStringLiteral("0"),
            italic ? QStringLiteral("1") : QStringLiteral("0"), name};
}

Qt::Alignment toQtAlignment(TextAlignment alignment)
{
    switch (alignment) {
    case TextAlignment::Left:
        return Qt::AlignLeft | Qt::AlignAbsolute;
    case TextAlignment::Right:
        return Qt::AlignRight | Qt::AlignAbsolute;
    case TextAlignment::Center:
        return Qt::AlignHCenter;
    case TextAlignment::Justified:
        return Qt::AlignJustify;
    case TextAlignment::Natural:
        break;
    }
    return Qt::AlignLeading;
}

TextAlignment fromQtAlignment(Qt::Alignment alignment)
{
    const Qt::Alignment horizontal = alignment & Qt::AlignHorizontal_Mask;
    if (horizontal & Qt::AlignHCenter)
        return TextAlignment::Center;
    if (horizontal & Qt::AlignJustify)
        return TextAlignment::Justified;
    if ((alignment & Qt::AlignAbsolute) && (horizontal & Qt::AlignRight))
        return TextAlignment::Right;
    if ((alignment & Qt::AlignAbsolute) && (horizontal & Qt::AlignLeft))
        return TextAlignment::Left;
    if (horizontal & Qt::AlignTrailing)
        return TextAlignment::Right;
    return TextAlignment::Natural;
}

QList<qreal> paragraphValues(const ParagraphStyle& style)
{
    return {style.lineSpacing,       style.paragraphSpacing,    style.paragraphSpacingBefore,
            style.headIndent,        style.firstLineHeadIndent, style.tailIndent,
            style.lineHeightMultiple};
}

ParagraphStyle paragraphFromValues(const QList<qreal>& values)
{
    ParagraphStyle style;
    if (values.size() != 7)
        return style;
    style.lineSpacing = values[0];
    style.paragraphSpacing = values[1];
    style.paragraphSpacingBefore = values[2];
    style.headIndent = values[3];
    style.firstLineHeadIndent = values[4];
    style.tailIndent = values[5];
    style.lineHeightMultiple = values[6];
    return style;
}

} // namespace

FontSpec defaultFont()
{
    return FontSpec{QStringLiteral("Helvetica"), QStringLiteral("Helvetica"), 12.0, false, false};
}

QFont toQFont(const FontSpec& font)
{
    QFont result(font.family);
    result.setPointSizeF(font.pointSize);
    result.setBold(font.bold);
    result.setItalic(font.italic);
    return result;
}

QTextCharFormat toCharFormat(const TextAttributes& attributes)
{
    QTextCharFormat format;
    if (attributes.font) {
        const FontSpec& font = *attributes.font;
        format.setFontFamilies(QStringList{font.family});
        format.setFontPointSize(font.pointSize);
        format.setFontWeight(font.bold ? QFont::Bold : QFont::Normal);
        format.setFontItalic(font.italic);
        format.setProperty(FontIdentityProperty,
                           fontIdentity(font.family, font.bold, font.italic, font.postScriptName));
    }
    if (attributes.foreground)
        format.setForeground(toQColor(*attributes.foreground));
    if (attributes.background)
        format.setBackground(toQColor(*attributes.background));
    if (attributes.underline != LineStyle::None) {
        format.setFontUnderline(true);
        const int pattern = attributes.underline & 0x0F00;
        if (pattern == LineStyle::PatternDot)
            format.setUnderlineStyle(QTextCharFormat::DotLine);
        else if (pattern == LineStyle::PatternDash)
            format.setUnderlineStyle(QTextCharFormat::DashUnderline);
        else if (pattern == LineStyle::PatternDashDot)
            format.setUnderlineStyle(QTextCharFormat::DashDotLine);
        else if (pattern == LineStyle::PatternDashDotDot)
            format.setUnderlineStyle(QTextCharFormat::DashDotDotLine);
        format.setProperty(UnderlineStyleProperty, attributes.underline);
    }
    if (attributes.strikethrough != LineStyle::None) {
        format.setFontStrikeOut(true);
        format.setProperty(StrikethroughStyleProperty, attributes.strikethrough);
    }
    return format;
}

QTextBlockFormat toBlockFormat(const std::optional<ParagraphStyle>& paragraph)
{
    QTextBlockFormat format;
    if (!paragraph)
        return format;
    format.setAlignment(toQtAlignment(paragraph->alignment));
    format.setTopMargin(paragraph->paragraphSpacingBefore);
    format.setBottomMargin(paragraph->paragraphSpacing);
    format.setLeftMargin(paragraph->headIndent);
    format.setTextIndent(paragraph->firstLineHeadIndent - paragraph->headIndent);
    if (paragraph->tailIndent < 0)
        format.setRightMargin(-paragraph->tailIndent);
    if (paragraph->lineHeightMultiple > 0)
        format.setLineHeight(paragraph->lineHeightMultiple * 100.0,
                             QTextBlockFormat::ProportionalHeight);
    else if (paragraph->lineSpacing != 0)
        format.setLineHeight(paragraph->lineSpacing, QTextBlockFormat::LineDistanceHeight);
    format.setProperty(ParagraphStyleProperty, QVariant::fromValue(paragraphValues(*paragraph)));
    return format;
}

TextAttributes fromFormats(const QTextCharFormat& format, const QTextBlockFormat& block)
{
    TextAttributes attributes;
    const QStringList families = format.fontFamilies().toStringList();
    if (!families.isEmpty()) {
        FontSpec font;
        font.family = families.first();
        font.pointSize = format.hasProperty(QTextFormat::FontPointSize) ? format.fontPointSize()
                                                                        : defaultFont().pointSize;
        font.bold = format.fontWeight() >= QFont::DemiBold;
        font.italic = format.fontItalic();
        const QStringList identity = format.property(FontIdentityProperty).toStringList();
        if (identity.size() == 4 &&
            identity.mid(0, 3) == fontIdentity(font.family, font.bold, font.italic, {}).mid(0, 3))
            font.postScriptName = identity[3];
        attributes.font = font;
    }
    attributes.foreground = brushColor(format, QTextFormat::ForegroundBrush);
    attributes.background = brushColor(format, QTextFormat::BackgroundBrush);
    if (format.fontUnderline()) {
        const int raw = format.intProperty(UnderlineStyleProperty);
        attributes.underline = raw != LineStyle::None ? raw : LineStyle::Single;
    }
    if (format.fontStrikeOut()) {
        const int raw = format.intProperty(StrikethroughStyleProperty);
        attributes.strikethrough = raw != LineStyle::None ? raw : LineStyle::Single;
    }
    if (block.hasProperty(ParagraphStyleProperty) ||
        block.hasProperty(QTextFormat::BlockAlignment)) {
        ParagraphStyle paragraph =
            paragraphFromValues(block.property(ParagraphStyleProperty).value<QList<qreal>>());
        paragraph.alignment = fromQtAlignment(block.alignment());
        attributes.paragraph = paragraph;
    }
    return attributes;
}

void setRichText(QTextDocument& document, const RichText& text)
{
    document.clear();
    QTextCursor cursor(&document);
    const QString& string = text.string();
    int paragraphStart = 0;
    bool firstParagraph = true;
    while (paragraphStart <= text.length()) {
        int paragraphEnd = int(string.indexOf(QLatin1Char('\n'), paragraphStart));
        if (paragraphEnd < 0)
            paragraphEnd = text.length();

        // A paragraph takes its style from its first character; an empty one from
        // its line feed, or from the line feed before it when it ends the text.
        std::optional<ParagraphStyle> paragraph;
        if (paragraphEnd < text.length())
            paragraph = text.attributesAt(paragraphStart).paragraph;
        else if (paragraphStart < text.length())
            paragraph = text.attributesAt(paragraphStart).paragraph;
        else if (paragraphStart > 0)
            paragraph = text.attributesAt(paragraphStart - 1).paragraph;

        if (firstParagraph) {
            cursor.setBlockFormat(toBlockFormat(paragraph));
            if (!text.isEmpty())
                cursor.setBlockCharFormat(toCharFormat(text.attributesAt(0)));
            firstParagraph = false;
        } else {
            // The line feed before this paragraph becomes the block separator.
            cursor.insertBlock(toBlockFormat(paragraph),
                               toCharFormat(text.attributesAt(paragraphStart - 1)));
        }
        text.forEachRun(paragraphStart, paragraphEnd - paragraphStart,
                        [&](const TextAttributes& attributes, int location, int length) {
                            cursor.insertText(string.mid(location, length),
                                              toCharFormat(attributes));
                        });
        paragraphStart = paragraphEnd + 1;
    }
}

RichText richTextFromDocument(const QTextDocument& document)
{
    RichText text;
    QTextBlockFormat previousBlockFormat;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (block != document.begin())
            text.append(QStringLiteral("\n"), fromFormats(block.charFormat(), previousBlockFormat));
        for (auto fragment = block.begin(); !fragment.atEnd(); ++fragment) {
            const QTextFragment piece = fragment.fragment();
            if (piece.isValid())
                text.append(piece.text(), fromFormats(piece.charFormat(), block.blockFormat()));
        }
        previousBlockFormat = block.blockFormat();
    }
    return text;
}

} // namespace lomir
