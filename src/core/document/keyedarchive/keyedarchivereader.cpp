// Reading keyed archives (NSKeyedArchiver) of rich text, colours and fonts, as macOS
// and the writer in keyedarchive.cpp make them: the class readers, over the checked
// object graph of archiveobjectgraph.h.
//
// Unknown attribute keys are skipped, whatever their values, as macOS skips attributes
// it has no use for. Objects are read by class. A class this reader does not know may
// name, in its description's $classhints, classes to read it as instead: UIKit archives
// UIColor and UIFont with the hints NSColor and NSFont, and carries NSColor's and
// NSFont's keys beside its own. An object of a class that is neither known nor stands in
// for one cannot be read; where a font, colour, paragraph style or the text itself
// should be, the archive is refused as holding such an object, not as damaged, since
// nothing in it is malformed.

#include "core/base/result.h"
#include "core/document/keyedarchive/archiveerrors.h"
#include "core/document/keyedarchive/archiveobjectgraph.h"
#include "core/document/keyedarchive/colorspaces.h"
#include "core/document/keyedarchive/keyedarchive.h"
#include "core/document/keyedarchive/propertylist.h"
#include "core/document/keyedarchive/runtable.h"
#include "core/document/richtext/fontnames.h"

#include <QScopeGuard>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <optional>
#include <vector>

namespace lomir {

namespace {

using namespace archive;

// NSColorSpace values (the colour model of an NSColor).
enum ColorModel : qint64
{
    CalibratedRgb = 1,
    DeviceRgb = 2,
    CalibratedWhite = 3,
    DeviceWhite = 4,
    DeviceCmyk = 5,
    NamedColor = 6,
};

// The RGB spaces that component colours are converted from.
enum class ComponentSpace
{
    Srgb,
    LinearSrgb,
    DisplayP3,
    GenericRgb
};

Error wrongRootClass(const QString& className, const char* expected)
{
    return Error{QStringLiteral("NSCocoaErrorDomain"), kArchiveReadCorruptError,
                 QStringLiteral("The archive holds an object of class \u201c%1\u201d where %2 "
                                "was expected.")
                     .arg(className, QLatin1String(expected))};
}

// Colour components: ASCII decimal numbers separated by spaces, perhaps ended by NUL.
std::optional<std::vector<double>> parseComponents(const QByteArray& data)
{
    constexpr std::size_t kMaxComponents = 5;
    std::vector<double> values;
    qsizetype end = data.size();
    while (end > 0 && data.at(end - 1) == '\0')
        --end;
    const QByteArray text = data.left(end);
    for (const QByteArray& field : text.split(' ')) {
        if (field.isEmpty())
            continue;
        if (values.size() == kMaxComponents)
            return std::nullopt;
        bool ok = false;
        const double value = field.toDouble(&ok);
        if (!ok || !std::isfinite(value))
            return std::nullopt;
        values.push_back(value);
    }
    if (values.empty())
        return std::nullopt;
    return values;
}

// Whether an ICC profile describes Display P3 (its description names it, in ASCII or in
// the UTF-16 of a multi-localized description).
bool isDisplayP3Profile(const QByteArray& profile)
{
    if (profile.contains("Display P3"))
        return true;
    const QString name = QStringLiteral("Display P3");
    QByteArray utf16;
    for (QChar c : name) {
        utf16.append(char(c.unicode() >> 8));
        utf16.append(char(c.unicode() & 0xff));
    }
    return profile.contains(utf16);
}

// Catalog colours of the "System" list that text uses, as they look on a light
// background. Other names fall back to black, the default colour of text.
Rgba namedColor(const QString& name)
{
    static const char* const kWhite[] = {
        "textBackgroundColor", "controlBackgroundColor",    "windowBackgroundColor",
        "controlColor",        "selectedMenuItemTextColor", "alternateSelectedControlTextColor"};
    for (const char* white : kWhite) {
        if (name == QLatin1String(white))
            return Rgba{255, 255, 255, 255};
    }
    return Rgba{0, 0, 0, 255};
}

// Reads the objects of a keyed archive by class: attributed strings, attribute
// dictionaries, fonts, colours and their colour spaces, paragraph styles. Decoded
// attribute dictionaries are remembered, so that an archive sharing one dictionary among
// many runs costs no more than its size.
class ArchiveReader
{
public:
    static Result<ArchiveReader> open(const QByteArray& data)
    {
        Result<ArchiveObjectGraph> graph = ArchiveObjectGraph::open(data);
        LOMIR_RETURN_IF_ERROR(graph);
        return ArchiveReader(std::move(graph).value());
    }

    const Object& root() const { return m_graph.root(); }
    Result<ClassInfo> classOf(const Object& object) { return m_graph.classOf(object); }

    Result<RichText> readAttributedString(const Object& object)
    {
        LOMIR_RETURN_IF_ERROR(m_graph.enter(object));
        const auto leave = qScopeGuard([this] { m_graph.leave(); });

        Result<QString> text = m_graph.readString(plist_dict_get_item(object.node, "NSString"),
                                                  "the text of an attributed string");
        LOMIR_RETURN_IF_ERROR(text);
        const QString& string = text.value();
        if (string.isEmpty())
            return RichText();

        plist_t attributesKey = plist_dict_get_item(object.node, "NSAttributes");
        plist_t infoKey = plist_dict_get_item(object.node, "NSAttributeInfo");
        Result<Object> info = infoKey ? m_graph.resolve(infoKey) : Result<Object>(Object{});
        LOMIR_RETURN_IF_ERROR(info);
        Result<Object> attributes =
            attributesKey ? m_graph.resolve(attributesKey) : Result<Object>(Object{});
        LOMIR_RETURN_IF_ERROR(attributes);

        if (info->isNil()) {
            // One run: a dictionary, or no attributes at all.
            if (attributes->isNil())
                return RichText(string);
            Result<const TextAttributes*> single = readAttributes(*attributes);
            LOMIR_RETURN_IF_ERROR(single);
            return RichText(string, **single);
        }

        // Several runs: an array of dictionaries and the run table.
        Result<QByteArray> table = m_graph.readData(*info, "the run table of an attributed string");
        LOMIR_RETURN_IF_ERROR(table);
        Result<std::vector<plist_t>> dictionaries = m_graph.readArray(*attributes, "attributes");
        LOMIR_RETURN_IF_ERROR(dictionaries);
        const qint64 dictionaryCount = qint64(dictionaries->size());
        // The whole table is checked before any dictionary is read, so that a damaged
        // table is reported as such whatever the dictionaries hold.
        if (Status checked = readRunTable(table.value(), string.size(), dictionaryCount,
                                          [](const RunTableEntry&) { return Status(Done{}); });
            !checked)
            return checked.error();

        // The runs go straight into the text. A dictionary is read when a run first uses
        // it; later runs find it among those read.
        RichText joined;
        const QStringView characters(string);
        qint64 location = 0;
        const Status built =
            readRunTable(table.value(), string.size(), dictionaryCount,
                         [&](const RunTableEntry& entry) -> Status {
                             Result<Object> dictionary =
                                 m_graph.resolve(dictionaries.value()[std::size_t(entry.index)]);
                             LOMIR_RETURN_IF_ERROR(dictionary);
                             Result<const TextAttributes*> runAttributes =
                                 readAttributes(*dictionary);
                             LOMIR_RETURN_IF_ERROR(runAttributes);
                             joined.append(characters.mid(location, entry.length), **runAttributes);
                             location += entry.length;
                             return Done{};
                         });
        LOMIR_RETURN_IF_ERROR(built);
        return joined;
    }

    Result<Rgba> readColor(const Object& object)
    {
        LOMIR_RETURN_IF_ERROR(m_graph.enter(object));
        const auto leave = qScopeGuard([this] { m_graph.leave(); });
        LOMIR_RETURN_IF_ERROR(m_graph.expectClass(object, "NSColor", "a colour"));

        Result<std::optional<Rgba>> uiKitColor = readUIKitComponents(object.node);
        LOMIR_RETURN_IF_ERROR(uiKitColor);
        if (*uiKitColor)
            return **uiKitColor;

        Result<std::optional<qint64>> model = integerFor(object.node, "NSColorSpace");
        LOMIR_RETURN_IF_ERROR(model);
        if (!*model)
            return archiveDamaged("a colour has no colour space");

        // Colours of an ICC or named space: components in that space. The generic
        // NSRGB/NSWhite values beside them are only for older readers.
        if (plist_t components = plist_dict_get_item(object.node, "NSComponents")) {
            if (plist_get_node_type(components) != PLIST_DATA)
                return archiveDamaged("a colour has malformed components");
            ComponentSpace space = ComponentSpace::Srgb;
            if (plist_t custom = plist_dict_get_item(object.node, "NSCustomColorSpace")) {
                Result<Object> spaceObject = m_graph.resolve(custom);
                LOMIR_RETURN_IF_ERROR(spaceObject);
                Result<ComponentSpace> read = readColorSpace(*spaceObject);
                LOMIR_RETURN_IF_ERROR(read);
                space = read.value();
            }
            const auto values = parseComponents(dataValue(components));
            if (!values)
                return archiveDamaged("a colour has malformed components");
            return colorFromComponents(*values, space);
        }

        switch (**model) {
        case CalibratedRgb:
        case DeviceRgb: {
            Result<std::vector<double>> values = componentsFor(object.node, "NSRGB", 3, 4);
            LOMIR_RETURN_IF_ERROR(values);
            const std::vector<double>& v = values.value();
            const Rgb rgb{v[0], v[1], v[2]};
            // Device RGB is taken to be sRGB, as on any current display.
            const Rgb srgb = **model == CalibratedRgb ? genericRgbToSrgb(rgb) : rgb;
            return rgbaFromFractions(srgb, v.size() == 4 ? v[3] : 1.0);
        }
        case CalibratedWhite:
        case DeviceWhite: {
            // A grey level is kept as the same sRGB grey level.
            Result<std::vector<double>> values = componentsFor(object.node, "NSWhite", 1, 2);
            LOMIR_RETURN_IF_ERROR(values);
            const std::vector<double>& v = values.value();
            return rgbaFromFractions({v[0], v[0], v[0]}, v.size() == 2 ? v[1] : 1.0);
        }
        case DeviceCmyk: {
            Result<std::vector<double>> values = componentsFor(object.node, "NSCMYK", 4, 5);
            LOMIR_RETURN_IF_ERROR(values);
            const std::vector<double>& v = values.value();
            const double k = 1.0 - v[3];
            return rgbaFromFractions({(1.0 - v[0]) * k, (1.0 - v[1]) * k, (1.0 - v[2]) * k},
                                     v.size() == 5 ? v[4] : 1.0);
        }
        case NamedColor: {
            // A catalog colour carries the colour it stood for when it was archived.
            if (plist_t fallback = plist_dict_get_item(object.node, "NSColor")) {
                Result<Object> fallbackObject = m_graph.resolve(fallback);
                LOMIR_RETURN_IF_ERROR(fallbackObject);
                if (!fallbackObject->isNil())
                    return readColor(*fallbackObject);
            }
            Result<QString> name = m_graph.readString(
                plist_dict_get_item(object.node, "NSColorName"), "a colour name");
            LOMIR_RETURN_IF_ERROR(name);
            return namedColor(name.value());
        }
        default:
            return archiveDamaged(QStringLiteral("a colour is in a colour space (%1) that cannot "
                                                 "be read")
                                      .arg(**model));
        }
    }

    Result<FontSpec> readFont(const Object& object)
    {
        LOMIR_RETURN_IF_ERROR(m_graph.enter(object));
        const auto leave = qScopeGuard([this] { m_graph.leave(); });
        LOMIR_RETURN_IF_ERROR(m_graph.expectClass(object, "NSFont", "a font"));

        // A UIFont, read through its NSFont hint, has its name and size under UIKit's keys
        // as well as NSFont's; NSFont's come first, as macOS reads them.
        Result<QString> name = m_graph.readString(
            plist_dict_get_item(object.node, presentKey(object.node, "NSName", "UIFontName")),
            "a font name");
        LOMIR_RETURN_IF_ERROR(name);
        Result<std::optional<double>> size =
            realFor(object.node, presentKey(object.node, "NSSize", "UIFontPointSize"));
        LOMIR_RETURN_IF_ERROR(size);
        // A size of zero asks for the default size, as fontWithName:size: does.
        double pointSize = size->value_or(0.0);
        if (!std::isfinite(pointSize) || pointSize <= 0.0)
            pointSize = 12.0;
        // A nameless font cannot be looked up; it falls back to the default face.
        const QString postScriptName =
            name->isEmpty() ? postScriptNameFor(QStringLiteral("Helvetica"), false, false)
                            : name.value();
        return fontFromPostScriptName(postScriptName, pointSize);
    }

private:
    explicit ArchiveReader(ArchiveObjectGraph graph) : m_graph(std::move(graph)) {}

    // The colour of a UIColor (read through its NSColor hint) from UIKit's own keys: a
    // component count, then red, green, blue and alpha in sRGB, or a grey level and
    // alpha, each a single-precision real with a double-precision twin ("UIRed-Double")
    // where that one is more exact. They are more precise than the three digits of the
    // NSRGB or NSWhite text that UIKit writes beside them for macOS. A missing component
    // is 0, as UIKit reads it. Nothing for a colour without such components, or with a
    // count UIKit never writes; its NSColor keys decide.
    Result<std::optional<Rgba>> readUIKitComponents(plist_t color)
    {
        Result<std::optional<qint64>> count = integerFor(color, "UIColorComponentCount");
        LOMIR_RETURN_IF_ERROR(count);
        if (*count != 2 && *count != 4)
            return std::optional<Rgba>();
        using KeyPair = std::pair<const char*, const char*>;
        static const std::vector<KeyPair> rgbKeys{{"UIRed-Double", "UIRed"},
                                                  {"UIGreen-Double", "UIGreen"},
                                                  {"UIBlue-Double", "UIBlue"},
                                                  {"UIAlpha-Double", "UIAlpha"}};
        static const std::vector<KeyPair> whiteKeys{{"UIWhite-Double", "UIWhite"},
                                                    {"UIAlpha-Double", "UIAlpha"}};
        std::vector<double> values;
        for (const auto& [precise, single] : **count == 4 ? rgbKeys : whiteKeys) {
            Result<std::optional<double>> value =
                realFor(color, presentKey(color, precise, single));
            LOMIR_RETURN_IF_ERROR(value);
            values.push_back(value->value_or(0.0));
        }
        if (values.size() == 2)
            return std::optional(rgbaFromFractions({values[0], values[0], values[0]}, values[1]));
        return std::optional(rgbaFromFractions({values[0], values[1], values[2]}, values[3]));
    }

    // Inline component data such as NSRGB "r g b[ a]\0", with so many numbers.
    Result<std::vector<double>> componentsFor(plist_t dict, const char* key, std::size_t least,
                                              std::size_t most)
    {
        plist_t node = plist_dict_get_item(dict, key);
        const Error malformed = archiveDamaged(
            QStringLiteral("a colour has malformed \u201c%1\u201d values").arg(QLatin1String(key)));
        if (node == nullptr || plist_get_node_type(node) != PLIST_DATA)
            return malformed;
        std::optional<std::vector<double>> values = parseComponents(dataValue(node));
        if (!values || values->size() < least || values->size() > most)
            return malformed;
        return std::move(*values);
    }

    Result<ComponentSpace> readColorSpace(const Object& object)
    {
        if (object.isNil())
            return ComponentSpace::Srgb;
        LOMIR_RETURN_IF_ERROR(m_graph.enter(object));
        const auto leave = qScopeGuard([this] { m_graph.leave(); });
        LOMIR_RETURN_IF_ERROR(m_graph.expectClass(object, "NSColorSpace", "a colour space"));

        Result<std::optional<qint64>> spaceId = integerFor(object.node, "NSSpaceID");
        LOMIR_RETURN_IF_ERROR(spaceId);
        if (*spaceId) {
            switch (**spaceId) {
            case 12: // Display P3
            case 13: // DCI-P3, near enough
                return ComponentSpace::DisplayP3;
            case 16: // linear sRGB
            case 17: // extended linear sRGB
                return ComponentSpace::LinearSrgb;
            default: // extended sRGB and others
                return ComponentSpace::Srgb;
            }
        }
        Result<std::optional<qint64>> id = integerFor(object.node, "NSID");
        LOMIR_RETURN_IF_ERROR(id);
        if (*id)
            return **id == 1 ? ComponentSpace::GenericRgb : ComponentSpace::Srgb;
        // A space known only by its profile.
        if (plist_t iccKey = plist_dict_get_item(object.node, "NSICC")) {
            Result<Object> icc = m_graph.resolve(iccKey);
            LOMIR_RETURN_IF_ERROR(icc);
            if (!icc->isNil()) {
                Result<QByteArray> profile = m_graph.readData(*icc, "a colour profile");
                LOMIR_RETURN_IF_ERROR(profile);
                if (isDisplayP3Profile(profile.value()))
                    return ComponentSpace::DisplayP3;
            }
        }
        return ComponentSpace::Srgb;
    }

    static Result<Rgba> colorFromComponents(const std::vector<double>& v, ComponentSpace space)
    {
        // Grey: level and alpha.
        if (v.size() <= 2)
            return rgbaFromFractions({v[0], v[0], v[0]}, v.size() == 2 ? v[1] : 1.0);
        if (v.size() > 4)
            return archiveDamaged("a colour has malformed components");
        const Rgb rgb{v[0], v[1], v[2]};
        const double alpha = v.size() == 4 ? v[3] : 1.0;
        switch (space) {
        case ComponentSpace::Srgb:
            return rgbaFromFractions(rgb, alpha);
        case ComponentSpace::LinearSrgb: {
            // Linear light to the sRGB curve.
            Rgb encoded{};
            for (std::size_t i = 0; i < 3; ++i) {
                const double c = std::clamp(rgb[i], 0.0, 1.0);
                encoded[i] = c <= 0.0031308 ? c * 12.92 : 1.055 * std::pow(c, 1.0 / 2.4) - 0.055;
            }
            return rgbaFromFractions(encoded, alpha);
        }
        case ComponentSpace::DisplayP3:
            // Converted through linear light; colours outside sRGB are clipped to it.
            return rgbaFromFractions(displayP3ToSrgb(rgb), alpha);
        case ComponentSpace::GenericRgb:
            return rgbaFromFractions(genericRgbToSrgb(rgb), alpha);
        }
        return rgbaFromFractions(rgb, alpha);
    }

    Result<ParagraphStyle> readParagraphStyle(const Object& object)
    {
        LOMIR_RETURN_IF_ERROR(m_graph.enter(object));
        const auto leave = qScopeGuard([this] { m_graph.leave(); });
        LOMIR_RETURN_IF_ERROR(m_graph.expectClass(object, "NSParagraphStyle", "a paragraph style"));

        ParagraphStyle style;
        Result<std::optional<qint64>> alignment = integerFor(object.node, "NSAlignment");
        LOMIR_RETURN_IF_ERROR(alignment);
        // An absent alignment is left (0), not natural. Values beyond the known ones are
        // read as natural.
        const qint64 value = alignment->value_or(0);
        style.alignment = value >= 0 && value <= qint64(TextAlignment::Natural)
                              ? TextAlignment(int(value))
                              : TextAlignment::Natural;

        const std::pair<const char*, double ParagraphStyle::*> lengths[] = {
            {"NSLineSpacing", &ParagraphStyle::lineSpacing},
            {"NSParagraphSpacing", &ParagraphStyle::paragraphSpacing},
            {"NSParagraphSpacingBefore", &ParagraphStyle::paragraphSpacingBefore},
            {"NSHeadIndent", &ParagraphStyle::headIndent},
            {"NSFirstLineHeadIndent", &ParagraphStyle::firstLineHeadIndent},
            {"NSTailIndent", &ParagraphStyle::tailIndent},
            {"NSLineHeightMultiple", &ParagraphStyle::lineHeightMultiple},
        };
        for (const auto& [key, member] : lengths) {
            Result<std::optional<double>> length = realFor(object.node, key);
            LOMIR_RETURN_IF_ERROR(length);
            // A length that is not a finite number has no meaning; it counts as unset.
            const double v = length->value_or(0.0);
            style.*member = std::isfinite(v) ? v : 0.0;
        }
        return style;
    }

    // An underline or strikethrough style: an NSNumber entry.
    Result<int> readLineStyle(plist_t reference, const char* what)
    {
        Result<Object> object = m_graph.resolve(reference);
        LOMIR_RETURN_IF_ERROR(object);
        if (object->isNil())
            return LineStyle::None;
        const std::optional<qint64> value = integerValue(object->node);
        if (!value || *value < std::numeric_limits<int>::min() ||
            *value > std::numeric_limits<int>::max())
            return archiveDamaged(
                QStringLiteral("its %1 style is not a valid number").arg(QLatin1String(what)));
        return int(*value);
    }

    // An attribute dictionary (NSDictionary with NS.keys and NS.objects), read once and
    // kept by the reader, which the result points into. A nil dictionary has no
    // attributes.
    Result<const TextAttributes*> readAttributes(const Object& object)
    {
        static const TextAttributes kNoAttributes;
        if (object.isNil())
            return &kNoAttributes;
        if (const auto known = m_attributes.find(object.uid); known != m_attributes.end())
            return &known->second;
        LOMIR_RETURN_IF_ERROR(m_graph.enter(object));
        const auto leave = qScopeGuard([this] { m_graph.leave(); });
        LOMIR_RETURN_IF_ERROR(
            m_graph.expectClass(object, "NSDictionary", "an attribute dictionary"));

        plist_t keys = plist_dict_get_item(object.node, "NS.keys");
        plist_t values = plist_dict_get_item(object.node, "NS.objects");
        const bool empty = keys == nullptr && values == nullptr;
        if (!empty &&
            (keys == nullptr || values == nullptr || plist_get_node_type(keys) != PLIST_ARRAY ||
             plist_get_node_type(values) != PLIST_ARRAY ||
             plist_array_get_size(keys) != plist_array_get_size(values)))
            return archiveDamaged("an attribute dictionary has keys and values that do not "
                                  "match");

        TextAttributes attributes;
        const std::vector<plist_t> keyItems = empty ? std::vector<plist_t>() : arrayItems(keys);
        const std::vector<plist_t> valueItems = empty ? std::vector<plist_t>() : arrayItems(values);
        for (std::size_t i = 0; i < keyItems.size(); ++i) {
            Result<QString> key = m_graph.readString(keyItems[i], "the name of an attribute");
            LOMIR_RETURN_IF_ERROR(key);
            plist_t value = valueItems[i];
            const QString& name = key.value();
            if (name == QLatin1String("NSFont")) {
                Result<Object> font = m_graph.resolve(value);
                LOMIR_RETURN_IF_ERROR(font);
                if (font->isNil())
                    continue;
                Result<FontSpec> face = readFont(*font);
                LOMIR_RETURN_IF_ERROR(face);
                attributes.font = std::move(face).value();
            } else if (name == QLatin1String("NSColor") ||
                       name == QLatin1String("NSBackgroundColor")) {
                Result<Object> color = m_graph.resolve(value);
                LOMIR_RETURN_IF_ERROR(color);
                if (color->isNil())
                    continue;
                Result<Rgba> rgba = readColor(*color);
                LOMIR_RETURN_IF_ERROR(rgba);
                (name == QLatin1String("NSColor") ? attributes.foreground : attributes.background) =
                    rgba.value();
            } else if (name == QLatin1String("NSParagraphStyle")) {
                Result<Object> paragraph = m_graph.resolve(value);
                LOMIR_RETURN_IF_ERROR(paragraph);
                if (paragraph->isNil())
                    continue;
                Result<ParagraphStyle> style = readParagraphStyle(*paragraph);
                LOMIR_RETURN_IF_ERROR(style);
                attributes.paragraph = style.value();
            } else if (name == QLatin1String("NSUnderline")) {
                Result<int> style = readLineStyle(value, "underline");
                LOMIR_RETURN_IF_ERROR(style);
                attributes.underline = style.value();
            } else if (name == QLatin1String("NSStrikethrough")) {
                Result<int> style = readLineStyle(value, "strikethrough");
                LOMIR_RETURN_IF_ERROR(style);
                attributes.strikethrough = style.value();
            }
        }
        return &m_attributes.emplace(object.uid, std::move(attributes)).first->second;
    }

    ArchiveObjectGraph m_graph;
    std::map<quint64, TextAttributes> m_attributes;
};

// Opens an archive and checks that its root is of the class asked for. A nil root and a
// root of another class are reported as macOS's unarchiver reports them.
Result<ArchiveReader> openWithRoot(const QByteArray& archive, const char* className,
                                   const char* description, int nilCode)
{
    Result<ArchiveReader> reader = ArchiveReader::open(archive);
    if (!reader)
        return reader;
    const Object& root = reader->root();
    if (root.isNil()) {
        return Error{QStringLiteral("NSCocoaErrorDomain"), nilCode,
                     QStringLiteral("The archive is empty: its root object is nil, not %1.")
                         .arg(QLatin1String(description))};
    }
    Result<ClassInfo> info = reader->classOf(root);
    LOMIR_RETURN_IF_ERROR(info);
    if (!info->inherits(className))
        return info->mismatch(wrongRootClass(info->name, description));
    return reader;
}

} // namespace

Result<RichText> unarchiveRichText(const QByteArray& archive)
{
    Result<ArchiveReader> reader = openWithRoot(
        archive, "NSAttributedString", "an attributed string", kArchiveRootNotAttributedString);
    LOMIR_RETURN_IF_ERROR(reader);
    return reader->readAttributedString(reader->root());
}

Result<Rgba> unarchiveColor(const QByteArray& archive)
{
    Result<ArchiveReader> reader =
        openWithRoot(archive, "NSColor", "a colour", kArchiveReadCorruptError);
    LOMIR_RETURN_IF_ERROR(reader);
    return reader->readColor(reader->root());
}

Result<FontSpec> unarchiveFont(const QByteArray& archive)
{
    Result<ArchiveReader> reader =
        openWithRoot(archive, "NSFont", "a font", kArchiveReadCorruptError);
    LOMIR_RETURN_IF_ERROR(reader);
    return reader->readFont(reader->root());
}

} // namespace lomir
