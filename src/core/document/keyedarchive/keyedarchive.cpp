// Writing keyed archives (NSKeyedArchiver) of rich text. The object graph is the one
// macOS's archiver makes for an immutable NSAttributedString, so that macOS's secure
// unarchiver, asked for exactly that class, accepts it:
//
//   $top.root -> NSAttributedString { NSString -> "text",
//                                     NSAttributes -> NSDictionary (one run)
//                                                  or NSMutableArray of NSDictionary,
//                                     NSAttributeInfo -> NSMutableData (run table) }
//
// Every object is stored once in $objects and referenced by UID; equal values (strings,
// numbers, fonts, colours, paragraph styles, attribute dictionaries) share one entry,
// which is safe because all of them are immutable. Reading is in keyedarchivereader.cpp.

#include "core/document/keyedarchive/keyedarchive.h"

#include "core/document/keyedarchive/colorspaces.h"
#include "core/document/keyedarchive/propertylist.h"
#include "core/document/keyedarchive/runtable.h"
#include "core/document/keyedarchive/srgbprofile.h"
#include "core/document/richtext/fontnames.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <unordered_map>
#include <utility>

namespace lomir {

namespace {

constexpr quint64 kNullUid = 0;
constexpr quint64 kRootUid = 1;

// macOS writes 16 for every ordinary named font; the flag marks a font without a
// matrix of its own.
constexpr quint64 kFontFlags = 16;

// NSColorSpace value of a colour in the RGB model.
constexpr quint64 kRgbColorModel = 1;
// NSID of the sRGB IEC61966-2.1 colour space.
constexpr quint64 kSrgbColorSpaceId = 7;

struct ClassChain
{
    const char* name;
    std::initializer_list<const char*> chain;
};

const ClassChain kClassChains[] = {
    {"NSAttributedString", {"NSAttributedString", "NSObject"}},
    {"NSDictionary", {"NSDictionary", "NSObject"}},
    {"NSMutableArray", {"NSMutableArray", "NSArray", "NSObject"}},
    {"NSMutableData", {"NSMutableData", "NSData", "NSObject"}},
    {"NSFont", {"NSFont", "NSObject"}},
    {"NSColor", {"NSColor", "NSObject"}},
    {"NSColorSpace", {"NSColorSpace", "NSObject"}},
    {"NSParagraphStyle", {"NSParagraphStyle", "NSObject"}},
};

// libplist keeps strings as C strings, so a NUL character cannot be stored; it is
// written as U+FFFD, which keeps every later position (and so the run table) in place.
QByteArray utf8WithoutNul(const QString& text)
{
    QString copy = text;
    copy.replace(QChar(u'\0'), QChar(QChar::ReplacementCharacter));
    return copy.toUtf8();
}

// Colour components as macOS writes them: up to ten significant digits, no exponent
// for the values a colour has in practice.
QByteArray componentText(double value)
{
    return QByteArray::number(value, 'g', 10);
}

double clampFraction(double value)
{
    return std::clamp(value, 0.0, 1.0);
}

class ArchiveWriter
{
public:
    ArchiveWriter() { add(plist_new_string("$null")); }

    QByteArray archive(const RichText& text)
    {
        const quint64 root = reserve();
        Q_ASSERT(root == kRootUid);
        plist_t object = newObject("NSAttributedString");
        plist_dict_set_item(object, "NSString", plist_new_uid(string(text.string())));

        const RichText::Runs runs = text.runs();
        if (runs.size() == 1) {
            plist_dict_set_item(object, "NSAttributes",
                                plist_new_uid(attributes(runs.front().attributes)));
        } else if (runs.size() > 1) {
            // The distinct dictionaries in order of first use, and the run table
            // pointing into them. A text keeps each distinct attribute set once, so the
            // runs that share a set share its address.
            std::unordered_map<const TextAttributes*, qint64> indexOf;
            std::vector<quint64> distinct;
            std::vector<RunTableEntry> table;
            table.reserve(runs.size());
            for (const AttributeRun& run : runs) {
                const auto [found, added] =
                    indexOf.try_emplace(&run.attributes, qint64(distinct.size()));
                if (added)
                    distinct.push_back(attributes(run.attributes));
                table.push_back({run.length, found->second});
            }
            plist_t array = newObject("NSMutableArray");
            plist_t items = plist_new_array();
            for (const quint64 dictionary : distinct)
                plist_array_append_item(items, plist_new_uid(dictionary));
            plist_dict_set_item(array, "NS.objects", items);
            plist_dict_set_item(object, "NSAttributes", plist_new_uid(add(array)));

            const QByteArray info = encodeRunTable(table);
            plist_t data = newObject("NSMutableData");
            plist_dict_set_item(data, "NS.data",
                                plist_new_data(info.constData(), quint64(info.size())));
            plist_dict_set_item(object, "NSAttributeInfo", plist_new_uid(add(data)));
        }
        place(root, object);
        return finish(root);
    }

private:
    QByteArray finish(quint64 root)
    {
        PlistPtr top(plist_new_dict());
        plist_dict_set_item(top.get(), "$version", plist_new_uint(kKeyedArchiveVersion));
        plist_dict_set_item(top.get(), "$archiver", plist_new_string("NSKeyedArchiver"));
        plist_t topObjects = plist_new_dict();
        plist_dict_set_item(topObjects, "root", plist_new_uid(root));
        plist_dict_set_item(top.get(), "$top", topObjects);
        plist_t objects = plist_new_array();
        for (PlistPtr& object : m_objects) {
            Q_ASSERT(object);
            plist_array_append_item(objects, object.release());
        }
        plist_dict_set_item(top.get(), "$objects", objects);
        return binaryPropertyList(top.get());
    }

    quint64 add(plist_t node)
    {
        m_objects.emplace_back(node);
        return m_objects.size() - 1;
    }

    // Takes an index for an object whose contents are written after its children.
    quint64 reserve()
    {
        m_objects.emplace_back();
        return m_objects.size() - 1;
    }

    void place(quint64 uid, plist_t node) { m_objects[uid].reset(node); }

    quint64 classDescription(const char* name)
    {
        const auto known = m_classes.find(name);
        if (known != m_classes.end())
            return known->second;
        const auto entry =
            std::find_if(std::begin(kClassChains), std::end(kClassChains),
                         [&](const ClassChain& c) { return qstrcmp(c.name, name) == 0; });
        Q_ASSERT(entry != std::end(kClassChains));
        plist_t description = plist_new_dict();
        plist_dict_set_item(description, "$classname", plist_new_string(name));
        plist_t chain = plist_new_array();
        for (const char* superclass : entry->chain)
            plist_array_append_item(chain, plist_new_string(superclass));
        plist_dict_set_item(description, "$classes", chain);
        const quint64 uid = add(description);
        m_classes.emplace(name, uid);
        return uid;
    }

    // A dictionary for an object of the class, its class description added if new.
    plist_t newObject(const char* className)
    {
        plist_t object = plist_new_dict();
        plist_dict_set_item(object, "$class", plist_new_uid(classDescription(className)));
        return object;
    }

    quint64 string(const QString& text)
    {
        const QByteArray utf8 = utf8WithoutNul(text);
        const auto known = m_strings.find(utf8);
        if (known != m_strings.end())
            return known->second;
        const quint64 uid = add(plist_new_string(utf8.constData()));
        m_strings.emplace(utf8, uid);
        return uid;
    }

    quint64 integer(qint64 value)
    {
        const auto known = m_integers.find(value);
        if (known != m_integers.end())
            return known->second;
        const quint64 uid = add(plist_new_uint(quint64(value)));
        m_integers.emplace(value, uid);
        return uid;
    }

    quint64 font(const FontSpec& font)
    {
        for (const auto& [known, uid] : m_fonts) {
            if (known == font)
                return uid;
        }
        QString name = font.postScriptName;
        if (name.isEmpty()) {
            const QString family =
                font.family.isEmpty() ? QStringLiteral("Helvetica") : font.family;
            name = postScriptNameFor(family, font.bold, font.italic);
        }
        const double size =
            std::isfinite(font.pointSize) && font.pointSize > 0 ? font.pointSize : 12.0;
        const quint64 uid = reserve();
        plist_t object = newObject("NSFont");
        plist_dict_set_item(object, "NSName", plist_new_uid(string(name)));
        plist_dict_set_item(object, "NSSize", plist_new_real(size));
        plist_dict_set_item(object, "NSfFlags", plist_new_uint(kFontFlags));
        place(uid, object);
        m_fonts.emplace_back(font, uid);
        return uid;
    }

    // The one sRGB colour space object all colours share, with the ICC profile macOS
    // stores with it.
    quint64 colorSpace()
    {
        if (m_colorSpace != kNullUid)
            return m_colorSpace;
        m_colorSpace = reserve();
        plist_t object = newObject("NSColorSpace");
        plist_dict_set_item(object, "NSID", plist_new_uint(kSrgbColorSpaceId));
        const QByteArray profile = srgbIccProfile();
        const quint64 icc = add(plist_new_data(profile.constData(), quint64(profile.size())));
        plist_dict_set_item(object, "NSICC", plist_new_uid(icc));
        place(m_colorSpace, object);
        return m_colorSpace;
    }

    // A colour as a modern macOS writes one made with colorWithSRGBRed:green:blue:alpha:
    // the sRGB components, and for older readers the same colour in generic RGB.
    quint64 color(const Rgba& color)
    {
        const quint32 key = quint32(color.red) << 24 | quint32(color.green) << 16 |
                            quint32(color.blue) << 8 | color.alpha;
        if (const auto known = m_colors.find(key); known != m_colors.end())
            return known->second;
        const Rgb srgb = fractionsOf(color);
        const double alpha = color.alpha / 255.0;
        const Rgb generic = srgbToGenericRgb(srgb);

        QByteArray rgb = componentText(clampFraction(generic[0])) + ' ' +
                         componentText(clampFraction(generic[1])) + ' ' +
                         componentText(clampFraction(generic[2]));
        if (color.alpha != 255)
            rgb += ' ' + componentText(alpha);
        rgb += '\0';
        const QByteArray components = componentText(srgb[0]) + ' ' + componentText(srgb[1]) + ' ' +
                                      componentText(srgb[2]) + ' ' + componentText(alpha);

        const quint64 uid = reserve();
        plist_t object = newObject("NSColor");
        plist_dict_set_item(object, "NSColorSpace", plist_new_uint(kRgbColorModel));
        plist_dict_set_item(object, "NSRGB", plist_new_data(rgb.constData(), quint64(rgb.size())));
        plist_dict_set_item(object, "NSComponents",
                            plist_new_data(components.constData(), quint64(components.size())));
        plist_dict_set_item(object, "NSCustomColorSpace", plist_new_uid(colorSpace()));
        place(uid, object);
        m_colors.emplace(key, uid);
        return uid;
    }

    // Paragraph styles store only what differs from the default, except the tab stops
    // (nil: the default stops) and the tightening flag, which macOS always writes.
    quint64 paragraphStyle(const ParagraphStyle& style)
    {
        for (const auto& [known, uid] : m_paragraphStyles) {
            if (known == style)
                return uid;
        }
        const quint64 uid = reserve();
        plist_t object = newObject("NSParagraphStyle");
        if (style.alignment != TextAlignment::Left)
            plist_dict_set_item(object, "NSAlignment", plist_new_uint(quint64(style.alignment)));
        plist_dict_set_item(object, "NSTabStops", plist_new_uid(kNullUid));
        plist_dict_set_item(object, "NSAllowsTighteningForTruncation", plist_new_uint(1));
        const std::pair<const char*, double> lengths[] = {
            {"NSLineSpacing", style.lineSpacing},
            {"NSParagraphSpacing", style.paragraphSpacing},
            {"NSParagraphSpacingBefore", style.paragraphSpacingBefore},
            {"NSHeadIndent", style.headIndent},
            {"NSFirstLineHeadIndent", style.firstLineHeadIndent},
            {"NSTailIndent", style.tailIndent},
            {"NSLineHeightMultiple", style.lineHeightMultiple},
        };
        for (const auto& [key, value] : lengths) {
            if (value != 0.0 && std::isfinite(value))
                plist_dict_set_item(object, key, plist_new_real(value));
        }
        place(uid, object);
        m_paragraphStyles.emplace_back(style, uid);
        return uid;
    }

    // An NSDictionary of attribute names and values; an empty one for no attributes.
    // Called once for each distinct attribute set of the text.
    quint64 attributes(const TextAttributes& attributes)
    {
        const quint64 uid = reserve();
        std::vector<std::pair<const char*, quint64>> entries;
        if (attributes.font)
            entries.emplace_back("NSFont", font(*attributes.font));
        if (attributes.foreground)
            entries.emplace_back("NSColor", color(*attributes.foreground));
        if (attributes.background)
            entries.emplace_back("NSBackgroundColor", color(*attributes.background));
        if (attributes.paragraph)
            entries.emplace_back("NSParagraphStyle", paragraphStyle(*attributes.paragraph));
        if (attributes.underline != LineStyle::None)
            entries.emplace_back("NSUnderline", integer(attributes.underline));
        if (attributes.strikethrough != LineStyle::None)
            entries.emplace_back("NSStrikethrough", integer(attributes.strikethrough));

        plist_t object = newObject("NSDictionary");
        plist_t keys = plist_new_array();
        plist_t values = plist_new_array();
        for (const auto& [key, value] : entries) {
            plist_array_append_item(keys, plist_new_uid(string(QLatin1String(key))));
            plist_array_append_item(values, plist_new_uid(value));
        }
        plist_dict_set_item(object, "NS.keys", keys);
        plist_dict_set_item(object, "NS.objects", values);
        place(uid, object);
        return uid;
    }

    // The object table, kept here until it is complete: libplist finds an item of an
    // array by walking to it, so placing objects into its array one by one would take
    // time that grows with the square of the table.
    std::vector<PlistPtr> m_objects;
    std::map<QByteArray, quint64> m_classes;
    std::map<QByteArray, quint64> m_strings;
    std::map<qint64, quint64> m_integers;
    std::vector<std::pair<FontSpec, quint64>> m_fonts;
    std::map<quint32, quint64> m_colors; // by red, green, blue and alpha in one number
    std::vector<std::pair<ParagraphStyle, quint64>> m_paragraphStyles;
    quint64 m_colorSpace = kNullUid;
};

} // namespace

QByteArray archiveRichText(const RichText& text)
{
    return ArchiveWriter().archive(text);
}

} // namespace lomir
