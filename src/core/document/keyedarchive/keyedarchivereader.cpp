// Reading keyed archives (NSKeyedArchiver) of rich text, colours and fonts, as macOS
// and the writer in keyedarchive.cpp make them: the class readers, over the checked
// object graph of archiveobjectgraph.h. Colours are decoded in archivedcolor.cpp.
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
#include "core/document/keyedarchive/archivedcolor.h"
#include "core/document/keyedarchive/archiveerrors.h"
#include "core/document/keyedarchive/archiveobjectgraph.h"
#include "core/document/keyedarchive/keyedarchive.h"
#include "core/document/keyedarchive/propertylist.h"
#include "core/document/keyedarchive/runtable.h"
#include "core/document/richtext/fontnames.h"

#include <QScopeGuard>
#include <QStringList>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <optional>
#include <vector>

namespace lomir {

namespace {

using namespace archive;

Error wrongRootClass(const QString& className, const char* expected)
{
    return Error{QStringLiteral("NSCocoaErrorDomain"), kArchiveReadCorruptError,
                 QStringLiteral("The archive holds an object of class \u201c%1\u201d where %2 "
                                "was expected.")
                     .arg(className, QLatin1String(expected))};
}

// Reads the objects of a keyed archive by class: attributed strings, attribute
// dictionaries, fonts and paragraph styles, and colours through archivedcolor.h. Decoded
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

        return readRuns(string, *info, *attributes);
    }

    Result<Rgba> readColor(const Object& object) { return archive::readColor(m_graph, object); }

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

    // The text of an attributed string of several runs: an array of attribute
    // dictionaries and the run table that gives each run its length and dictionary.
    Result<RichText> readRuns(const QString& string, const Object& info, const Object& attributes)
    {
        Result<QByteArray> table = m_graph.readData(info, "the run table of an attributed string");
        LOMIR_RETURN_IF_ERROR(table);
        Result<std::vector<plist_t>> dictionaries = m_graph.readArray(attributes, "attributes");
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
            LOMIR_RETURN_IF_ERROR(readAttribute(key.value(), valueItems[i], attributes));
        }
        return &m_attributes.emplace(object.uid, std::move(attributes)).first->second;
    }

    // One entry of an attribute dictionary into the attributes: the font, colours,
    // paragraph style and line styles. A nil value leaves its attribute unset; other
    // keys are skipped.
    Status readAttribute(const QString& name, plist_t value, TextAttributes& attributes)
    {
        if (name == QLatin1String("NSFont")) {
            Result<Object> font = m_graph.resolve(value);
            LOMIR_RETURN_IF_ERROR(font);
            if (font->isNil())
                return Done{};
            Result<FontSpec> face = readFont(*font);
            LOMIR_RETURN_IF_ERROR(face);
            attributes.font = std::move(face).value();
        } else if (name == QLatin1String("NSColor") || name == QLatin1String("NSBackgroundColor")) {
            Result<Object> color = m_graph.resolve(value);
            LOMIR_RETURN_IF_ERROR(color);
            if (color->isNil())
                return Done{};
            Result<Rgba> rgba = readColor(*color);
            LOMIR_RETURN_IF_ERROR(rgba);
            (name == QLatin1String("NSColor") ? attributes.foreground : attributes.background) =
                rgba.value();
        } else if (name == QLatin1String("NSParagraphStyle")) {
            Result<Object> paragraph = m_graph.resolve(value);
            LOMIR_RETURN_IF_ERROR(paragraph);
            if (paragraph->isNil())
                return Done{};
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
        return Done{};
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
        openWithRoot(archive, "NSColor", "a color", kArchiveReadCorruptError);
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
