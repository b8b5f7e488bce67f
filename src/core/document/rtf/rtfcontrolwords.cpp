#include "core/document/rtf/rtfcontrolwords.h"

#include <algorithm>
#include <array>

namespace lomir::rtf {

namespace {

using namespace std::string_view_literals;

struct WordEntry
{
    std::string_view name;
    Word word;
    char16_t character = 0; // what a Word::Character word stands for
};

// Sorted by name for binary search. Destinations whose text is never shown are listed
// as skipped even where writers forget the \* that would mark them ignorable. Breaks
// within a paragraph, table cells and typographic characters are each one character of
// the text, given here.
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
    WordEntry{"bullet"sv, Word::Character, 0x2022},
    WordEntry{"c"sv, Word::ColorComponent},
    WordEntry{"cb"sv, Word::Background},
    WordEntry{"cell"sv, Word::Character, u'\t'}, // a table cell ends: a tab between cells
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
    WordEntry{"emdash"sv, Word::Character, 0x2014},  // em dash
    WordEntry{"emspace"sv, Word::Character, 0x2003}, // em space
    WordEntry{"endash"sv, Word::Character, 0x2013},  // en dash
    WordEntry{"enspace"sv, Word::Character, 0x2002}, // en space
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
    WordEntry{"ldblquote"sv, Word::Character, 0x201C}, // left double quotation mark
    WordEntry{"li"sv, Word::LeftIndent},
    WordEntry{"line"sv, Word::Character, 0x2028}, // line separator: a break within the paragraph
    WordEntry{"listoverridetable"sv, Word::SkippedDestination},
    WordEntry{"listtable"sv, Word::SkippedDestination},
    WordEntry{"lquote"sv, Word::Character, 0x2018},  // left single quotation mark
    WordEntry{"ltrmark"sv, Word::Character, 0x200E}, // left-to-right mark
    WordEntry{"mac"sv, Word::Mac},
    WordEntry{"nestcell"sv, Word::Character, u'\t'}, // a nested table cell ends
    WordEntry{"nestrow"sv, Word::Row},
    WordEntry{"nonshppict"sv, Word::SkippedDestination},
    WordEntry{"object"sv, Word::SkippedDestination},
    WordEntry{"operator"sv, Word::SkippedDestination},
    WordEntry{"page"sv, Word::Character, u'\f'}, // form feed: a page break
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
    WordEntry{"qmspace"sv, Word::Character, 0x2005}, // four-per-em space
    WordEntry{"qnatural"sv, Word::AlignNatural},
    WordEntry{"qr"sv, Word::AlignRight},
    WordEntry{"rdblquote"sv, Word::Character, 0x201D}, // right double quotation mark
    WordEntry{"red"sv, Word::Red},
    WordEntry{"revtbl"sv, Word::SkippedDestination},
    WordEntry{"ri"sv, Word::RightIndent},
    WordEntry{"row"sv, Word::Row},
    WordEntry{"rquote"sv, Word::Character, 0x2019}, // right single quotation mark
    WordEntry{"rsidtbl"sv, Word::SkippedDestination},
    WordEntry{"rtlmark"sv, Word::Character, 0x200F}, // right-to-left mark
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
    WordEntry{"tab"sv, Word::Character, u'\t'},
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
    WordEntry{"zwj"sv, Word::Character, 0x200D},  // zero width joiner
    WordEntry{"zwnj"sv, Word::Character, 0x200C}, // zero width non-joiner
};

static_assert(std::is_sorted(kWords.begin(), kWords.end(),
                             [](const WordEntry& a, const WordEntry& b) {
                                 return a.name < b.name;
                             }),
              "the control word table must stay sorted");

static_assert(std::all_of(kWords.begin(), kWords.end(),
                          [](const WordEntry& entry) {
                              return (entry.word == Word::Character) == (entry.character != 0);
                          }),
              "exactly the words that stand for a character give one");

} // namespace

std::optional<ControlWord> lookUpWord(std::string_view name)
{
    const auto found = std::lower_bound(
        kWords.begin(), kWords.end(), name,
        [](const WordEntry& entry, std::string_view key) { return entry.name < key; });
    if (found == kWords.end() || found->name != name)
        return std::nullopt;
    return ControlWord{found->word, found->character};
}

} // namespace lomir::rtf
