#pragma once

#include <optional>
#include <string_view>

namespace lomir::rtf {

// The control words the reader acts on, by what they do. Several words may stand for
// one of these (every destination whose text is never shown is SkippedDestination).
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
    // breaks
    Paragraph,
    Row,
    // a word that stands for one character, which ControlWord::character gives
    Character,
};

// What a control word does, and for Word::Character the character it stands for (0 for
// every other word).
struct ControlWord
{
    Word word;
    char16_t character = 0;
};

// The meaning of a control word, by its letters; none for a word the reader ignores.
std::optional<ControlWord> lookUpWord(std::string_view name);

} // namespace lomir::rtf
