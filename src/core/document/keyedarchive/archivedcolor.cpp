// Reading archived colours: NSColor objects, with their colour models and colour spaces,
// as macOS and UIKit archive them. The class readers of keyedarchivereader.cpp hand each
// colour they meet to readColor.

#include "core/document/keyedarchive/archivedcolor.h"

#include "core/base/result.h"
#include "core/document/keyedarchive/archiveerrors.h"
#include "core/document/keyedarchive/colorspaces.h"

#include <QScopeGuard>
#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace lomir::archive {

namespace {

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
        Result<std::optional<double>> value = realFor(color, presentKey(color, precise, single));
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
        QStringLiteral("a color has malformed \u201c%1\u201d values").arg(QLatin1String(key)));
    if (node == nullptr || plist_get_node_type(node) != PLIST_DATA)
        return malformed;
    std::optional<std::vector<double>> values = parseComponents(dataValue(node));
    if (!values || values->size() < least || values->size() > most)
        return malformed;
    return std::move(*values);
}

// The RGB space of an NSColorSpace object: by its space number, its older NSID, or the
// profile it carries. A nil space, and every space not known here, is sRGB.
Result<ComponentSpace> readColorSpace(ArchiveObjectGraph& graph, const Object& object)
{
    if (object.isNil())
        return ComponentSpace::Srgb;
    LOMIR_RETURN_IF_ERROR(graph.enter(object));
    const auto leave = qScopeGuard([&graph] { graph.leave(); });
    LOMIR_RETURN_IF_ERROR(graph.expectClass(object, "NSColorSpace", "a color space"));

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
        Result<Object> icc = graph.resolve(iccKey);
        LOMIR_RETURN_IF_ERROR(icc);
        if (!icc->isNil()) {
            Result<QByteArray> profile = graph.readData(*icc, "a color profile");
            LOMIR_RETURN_IF_ERROR(profile);
            if (isDisplayP3Profile(profile.value()))
                return ComponentSpace::DisplayP3;
        }
    }
    return ComponentSpace::Srgb;
}

Result<Rgba> colorFromComponents(const std::vector<double>& v, ComponentSpace space)
{
    // Grey: level and alpha.
    if (v.size() <= 2)
        return rgbaFromFractions({v[0], v[0], v[0]}, v.size() == 2 ? v[1] : 1.0);
    if (v.size() > 4)
        return archiveDamaged("a color has malformed components");
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

// Colours of an ICC or named space: components in that space. The generic NSRGB/NSWhite
// values beside them are only for older readers.
Result<Rgba> readComponentColor(ArchiveObjectGraph& graph, plist_t color, plist_t components)
{
    if (plist_get_node_type(components) != PLIST_DATA)
        return archiveDamaged("a color has malformed components");
    ComponentSpace space = ComponentSpace::Srgb;
    if (plist_t custom = plist_dict_get_item(color, "NSCustomColorSpace")) {
        Result<Object> spaceObject = graph.resolve(custom);
        LOMIR_RETURN_IF_ERROR(spaceObject);
        Result<ComponentSpace> read = readColorSpace(graph, *spaceObject);
        LOMIR_RETURN_IF_ERROR(read);
        space = read.value();
    }
    const auto values = parseComponents(dataValue(components));
    if (!values)
        return archiveDamaged("a color has malformed components");
    return colorFromComponents(*values, space);
}

// A catalog colour carries the colour it stood for when it was archived; one without it
// is known by its name.
Result<Rgba> readNamedColor(ArchiveObjectGraph& graph, plist_t color)
{
    if (plist_t fallback = plist_dict_get_item(color, "NSColor")) {
        Result<Object> fallbackObject = graph.resolve(fallback);
        LOMIR_RETURN_IF_ERROR(fallbackObject);
        if (!fallbackObject->isNil())
            return readColor(graph, *fallbackObject);
    }
    Result<QString> name =
        graph.readString(plist_dict_get_item(color, "NSColorName"), "a color name");
    LOMIR_RETURN_IF_ERROR(name);
    return namedColor(name.value());
}

// A colour by the values of its colour model (NSColorSpace): NSRGB, NSWhite or NSCMYK,
// or a catalog colour.
Result<Rgba> readModelColor(ArchiveObjectGraph& graph, plist_t color, qint64 model)
{
    switch (model) {
    case CalibratedRgb:
    case DeviceRgb: {
        Result<std::vector<double>> values = componentsFor(color, "NSRGB", 3, 4);
        LOMIR_RETURN_IF_ERROR(values);
        const std::vector<double>& v = values.value();
        const Rgb rgb{v[0], v[1], v[2]};
        // Device RGB is taken to be sRGB, as on any current display.
        const Rgb srgb = model == CalibratedRgb ? genericRgbToSrgb(rgb) : rgb;
        return rgbaFromFractions(srgb, v.size() == 4 ? v[3] : 1.0);
    }
    case CalibratedWhite:
    case DeviceWhite: {
        // A grey level is kept as the same sRGB grey level.
        Result<std::vector<double>> values = componentsFor(color, "NSWhite", 1, 2);
        LOMIR_RETURN_IF_ERROR(values);
        const std::vector<double>& v = values.value();
        return rgbaFromFractions({v[0], v[0], v[0]}, v.size() == 2 ? v[1] : 1.0);
    }
    case DeviceCmyk: {
        Result<std::vector<double>> values = componentsFor(color, "NSCMYK", 4, 5);
        LOMIR_RETURN_IF_ERROR(values);
        const std::vector<double>& v = values.value();
        const double k = 1.0 - v[3];
        return rgbaFromFractions({(1.0 - v[0]) * k, (1.0 - v[1]) * k, (1.0 - v[2]) * k},
                                 v.size() == 5 ? v[4] : 1.0);
    }
    case NamedColor:
        return readNamedColor(graph, color);
    default:
        return archiveDamaged(
            QStringLiteral("a color is in a color space (%1) that cannot be read").arg(model));
    }
}

} // namespace

Result<Rgba> readColor(ArchiveObjectGraph& graph, const Object& object)
{
    LOMIR_RETURN_IF_ERROR(graph.enter(object));
    const auto leave = qScopeGuard([&graph] { graph.leave(); });
    LOMIR_RETURN_IF_ERROR(graph.expectClass(object, "NSColor", "a color"));

    Result<std::optional<Rgba>> uiKitColor = readUIKitComponents(object.node);
    LOMIR_RETURN_IF_ERROR(uiKitColor);
    if (*uiKitColor)
        return **uiKitColor;

    Result<std::optional<qint64>> model = integerFor(object.node, "NSColorSpace");
    LOMIR_RETURN_IF_ERROR(model);
    if (!*model)
        return archiveDamaged("a color has no color space");
    if (plist_t components = plist_dict_get_item(object.node, "NSComponents"))
        return readComponentColor(graph, object.node, components);
    return readModelColor(graph, object.node, **model);
}

} // namespace lomir::archive
