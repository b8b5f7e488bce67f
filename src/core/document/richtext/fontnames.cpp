#include "core/document/richtext/fontnames.h"

#include <QLatin1String>
#include <QStringList>
#include <array>
#include <optional>

namespace lomir {

namespace {

// The four faces of a family as macOS names them. A face the family does not have on a
// Mac is null; names for it are made by the general rule instead.
struct FamilyFaces
{
    const char* family;
    const char* regular;
    const char* bold;
    const char* italic;
    const char* boldItalic;
};

// Families whose PostScript names do not follow the general rule (family without spaces,
// then "-Bold", "-Italic", "-BoldItalic"), or that labels use often enough that the
// spelling should not depend on a heuristic.
constexpr std::array kFamilies = {
    FamilyFaces{"Helvetica", "Helvetica", "Helvetica-Bold", "Helvetica-Oblique",
                "Helvetica-BoldOblique"},
    FamilyFaces{"Helvetica Neue", "HelveticaNeue", "HelveticaNeue-Bold", "HelveticaNeue-Italic",
                "HelveticaNeue-BoldItalic"},
    FamilyFaces{"Arial", "ArialMT", "Arial-BoldMT", "Arial-ItalicMT", "Arial-BoldItalicMT"},
    FamilyFaces{"Times New Roman", "TimesNewRomanPSMT", "TimesNewRomanPS-BoldMT",
                "TimesNewRomanPS-ItalicMT", "TimesNewRomanPS-BoldItalicMT"},
    FamilyFaces{"Times", "Times-Roman", "Times-Bold", "Times-Italic", "Times-BoldItalic"},
    FamilyFaces{"Courier", "Courier", "Courier-Bold", "Courier-Oblique", "Courier-BoldOblique"},
    FamilyFaces{"Courier New", "CourierNewPSMT", "CourierNewPS-BoldMT", "CourierNewPS-ItalicMT",
                "CourierNewPS-BoldItalicMT"},
    FamilyFaces{"Menlo", "Menlo-Regular", "Menlo-Bold", "Menlo-Italic", "Menlo-BoldItalic"},
    FamilyFaces{"Monaco", "Monaco", nullptr, nullptr, nullptr},
    FamilyFaces{"Avenir", "Avenir-Book", "Avenir-Heavy", "Avenir-BookOblique",
                "Avenir-HeavyOblique"},
    FamilyFaces{"Avenir Next", "AvenirNext-Regular", "AvenirNext-Bold", "AvenirNext-Italic",
                "AvenirNext-BoldItalic"},
    FamilyFaces{"SF Mono", "SFMono-Regular", "SFMono-Bold", "SFMono-RegularItalic",
                "SFMono-BoldItalic"},
    FamilyFaces{"Lucida Grande", "LucidaGrande", "LucidaGrande-Bold", nullptr, nullptr},
    FamilyFaces{"Palatino", "Palatino-Roman", "Palatino-Bold", "Palatino-Italic",
                "Palatino-BoldItalic"},
    FamilyFaces{"Optima", "Optima-Regular", "Optima-Bold", "Optima-Italic", "Optima-BoldItalic"},
    FamilyFaces{"Futura", "Futura-Medium", "Futura-Bold", "Futura-MediumItalic", nullptr},
    FamilyFaces{"Gill Sans", "GillSans", "GillSans-Bold", "GillSans-Italic", "GillSans-BoldItalic"},
    FamilyFaces{"Georgia", "Georgia", "Georgia-Bold", "Georgia-Italic", "Georgia-BoldItalic"},
    FamilyFaces{"Verdana", "Verdana", "Verdana-Bold", "Verdana-Italic", "Verdana-BoldItalic"},
    FamilyFaces{"Trebuchet MS", "TrebuchetMS", "TrebuchetMS-Bold", "TrebuchetMS-Italic",
                "Trebuchet-BoldItalic"},
    FamilyFaces{"Comic Sans MS", "ComicSansMS", "ComicSansMS-Bold", nullptr, nullptr},
    FamilyFaces{"Hiragino Kaku Gothic ProN", "HiraKakuProN-W3", "HiraKakuProN-W6", nullptr,
                nullptr},
    FamilyFaces{"Hiragino Mincho ProN", "HiraMinProN-W3", "HiraMinProN-W6", nullptr, nullptr},
    FamilyFaces{"Liberation Sans", "LiberationSans", "LiberationSans-Bold", "LiberationSans-Italic",
                "LiberationSans-BoldItalic"},
    FamilyFaces{"Liberation Serif", "LiberationSerif", "LiberationSerif-Bold",
                "LiberationSerif-Italic", "LiberationSerif-BoldItalic"},
    FamilyFaces{"Liberation Mono", "LiberationMono", "LiberationMono-Bold", "LiberationMono-Italic",
                "LiberationMono-BoldItalic"},
    FamilyFaces{"DejaVu Sans", "DejaVuSans", "DejaVuSans-Bold", "DejaVuSans-Oblique",
                "DejaVuSans-BoldOblique"},
    FamilyFaces{"DejaVu Serif", "DejaVuSerif", "DejaVuSerif-Bold", "DejaVuSerif-Italic",
                "DejaVuSerif-BoldItalic"},
    FamilyFaces{"DejaVu Sans Mono", "DejaVuSansMono", "DejaVuSansMono-Bold",
                "DejaVuSansMono-Oblique", "DejaVuSansMono-BoldOblique"},
    FamilyFaces{"Noto Sans", "NotoSans-Regular", "NotoSans-Bold", "NotoSans-Italic",
                "NotoSans-BoldItalic"},
    FamilyFaces{"Noto Serif", "NotoSerif-Regular", "NotoSerif-Bold", "NotoSerif-Italic",
                "NotoSerif-BoldItalic"},
};

// macOS's user-interface fonts have private names that begin with a dot
// (".AppleSystemUIFont", ".SFNSText-Medium"). They are not installed under those names
// anywhere, so text in them is shown in a neutral sans-serif family.
constexpr auto kSystemFontFamily = "Helvetica";

const char* faceName(const FamilyFaces& faces, bool bold, bool italic)
{
    if (bold && italic)
        return faces.boldItalic;
    if (bold)
        return faces.bold;
    if (italic)
        return faces.italic;
    return faces.regular;
}

const FamilyFaces* familyNamed(const QString& family)
{
    for (const FamilyFaces& faces : kFamilies) {
        if (family.compare(QLatin1String(faces.family), Qt::CaseInsensitive) == 0)
            return &faces;
    }
    return nullptr;
}

struct Face
{
    QString family;
    bool bold = false;
    bool italic = false;
};

// An exact face of the table ("Arial-BoldMT", "Times-Roman").
std::optional<Face> tableFace(const QString& postScriptName)
{
    for (const FamilyFaces& faces : kFamilies) {
        const std::array<const char*, 4> names = {faces.regular, faces.bold, faces.italic,
                                                  faces.boldItalic};
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (names[i] != nullptr &&
                postScriptName.compare(QLatin1String(names[i]), Qt::CaseInsensitive) == 0)
                return Face{QLatin1String(faces.family), i == 1 || i == 3, i == 2 || i == 3};
        }
    }
    return std::nullopt;
}

// The family part of a PostScript name is the family without spaces, sometimes with a
// vendor suffix ("ArialMT", "TimesNewRomanPS"). Known spellings come from the table:
// each family's compact name and the part before the hyphen of each of its faces.
std::optional<QString> tableFamilyForBase(const QString& base)
{
    for (const FamilyFaces& faces : kFamilies) {
        const QString family = QLatin1String(faces.family);
        QString compact = family;
        compact.remove(QLatin1Char(' '));
        if (base.compare(compact, Qt::CaseInsensitive) == 0)
            return family;
        for (const char* name : {faces.regular, faces.bold, faces.italic, faces.boldItalic}) {
            if (name == nullptr)
                continue;
            const QLatin1String face(name);
            const qsizetype hyphen = face.indexOf(QLatin1Char('-'));
            const QLatin1String faceBase = hyphen < 0 ? face : face.left(hyphen);
            if (base.compare(faceBase, Qt::CaseInsensitive) == 0)
                return family;
        }
    }
    return std::nullopt;
}

// "SourceSansPro" -> "Source Sans Pro", "PTSans" -> "PT Sans", "SFMono" -> "SF Mono".
// A space goes before a capital that follows a small letter, and before the last capital
// of a run of capitals when a small letter follows it.
QString splitCamelCase(const QString& name)
{
    QString result;
    result.reserve(name.size() + 4);
    for (qsizetype i = 0; i < name.size(); ++i) {
        const QChar c = name.at(i);
        if (i > 0 && c.isUpper()) {
            const QChar previous = name.at(i - 1);
            const bool afterSmall = previous.isLower();
            const bool endsAcronym =
                previous.isUpper() && i + 1 < name.size() && name.at(i + 1).isLower();
            if (afterSmall || endsAcronym)
                result += QLatin1Char(' ');
        }
        result += c;
    }
    return result;
}

// The words of a style part ("BoldItalicMT" -> Bold, Italic, MT), split like a family.
QStringList styleWords(const QString& style)
{
    return splitCamelCase(style).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

// Reads weight and slant from the style part of a PostScript name ("BoldOblique",
// "HeavyOblique", "SemiboldIt", "W6"). Weights from semibold up count as bold.
void readStyle(const QString& style, Face& face)
{
    const QString lower = style.toLower();
    const bool demiLight = lower.contains(QLatin1String("demilight"));
    for (const char* word : {"bold", "black", "heavy", "demi"}) {
        if (lower.contains(QLatin1String(word)) && !demiLight)
            face.bold = true;
    }
    // Hiragino and other Japanese faces number their weights W0 to W9.
    if (style.size() == 2 && style.at(0) == QLatin1Char('W') && style.at(1) >= QLatin1Char('6') &&
        style.at(1) <= QLatin1Char('9'))
        face.bold = true;
    if (lower.contains(QLatin1String("italic")) || lower.contains(QLatin1String("oblique")))
        face.italic = true;
    // Adobe's short spelling: "SourceSansPro-It", "MinionPro-BoldIt".
    if (styleWords(style).contains(QLatin1String("It")))
        face.italic = true;
}

Face faceFromGeneralName(const QString& postScriptName)
{
    Face face;
    const qsizetype hyphen = postScriptName.lastIndexOf(QLatin1Char('-'));
    QString base = hyphen < 0 ? postScriptName : postScriptName.left(hyphen);
    const QString style = hyphen < 0 ? QString() : postScriptName.mid(hyphen + 1);

    if (std::optional<QString> family = tableFamilyForBase(base)) {
        face.family = *family;
    } else {
        // Monotype's "MT" and "PSMT" vendor suffixes are not part of the family.
        for (const char* suffix : {"PSMT", "MT", "PS"}) {
            const QLatin1String vendor(suffix);
            if (base.size() > vendor.size() && base.endsWith(vendor)) {
                base.chop(vendor.size());
                break;
            }
        }
        if (std::optional<QString> family = tableFamilyForBase(base))
            face.family = *family;
        else
            face.family = splitCamelCase(base);
    }
    if (face.family.isEmpty())
        face.family = QLatin1String(kSystemFontFamily);
    readStyle(style, face);
    return face;
}

} // namespace

QString postScriptNameFor(const QString& family, bool bold, bool italic)
{
    if (const FamilyFaces* faces = familyNamed(family)) {
        if (const char* name = faceName(*faces, bold, italic))
            return QLatin1String(name);
    }
    QString name = family;
    name.remove(QLatin1Char(' '));
    if (bold && italic)
        name += QLatin1String("-BoldItalic");
    else if (bold)
        name += QLatin1String("-Bold");
    else if (italic)
        name += QLatin1String("-Italic");
    return name;
}

FontSpec fontFromPostScriptName(const QString& postScriptName, double pointSize)
{
    FontSpec font;
    font.postScriptName = postScriptName;
    font.pointSize = pointSize;

    Face face;
    if (postScriptName.trimmed().isEmpty()) {
        face.family = QLatin1String(kSystemFontFamily);
    } else if (std::optional<Face> known = tableFace(postScriptName)) {
        face = *known;
    } else if (postScriptName.startsWith(QLatin1Char('.'))) {
        face.family = QLatin1String(kSystemFontFamily);
        const qsizetype hyphen = postScriptName.lastIndexOf(QLatin1Char('-'));
        if (hyphen > 0)
            readStyle(postScriptName.mid(hyphen + 1), face);
    } else {
        face = faceFromGeneralName(postScriptName);
    }
    font.family = face.family;
    font.bold = face.bold;
    font.italic = face.italic;
    return font;
}

} // namespace lomir
