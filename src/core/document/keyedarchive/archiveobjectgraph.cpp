// The object graph of a keyed archive: the object table, references into it, the
// class of each object and the guards that keep a hostile archive from looping or
// nesting without end. The class readers (keyedarchivereader.cpp, and archivedcolor.cpp
// for colours) walk it.

#include "core/document/keyedarchive/archiveobjectgraph.h"

#include "core/base/result.h"
#include "core/document/keyedarchive/archiveerrors.h"
#include "core/document/keyedarchive/keyedarchive.h"

#include <QScopeGuard>
#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace lomir::archive {

namespace {

// Objects decoded inside one another: an attributed string, its attribute array and
// dictionary, a colour and its colour space are five; catalog colours add one level per
// fallback colour.
constexpr std::size_t kMaxObjectDepth = 16;

} // namespace

bool isReadableClass(const QString& name)
{
    static const char* const kReadable[] = {"NSAttributedString",
                                            "NSMutableAttributedString",
                                            "NSTextStorage",
                                            "NSString",
                                            "NSMutableString",
                                            "NSNumber",
                                            "NSData",
                                            "NSMutableData",
                                            "NSArray",
                                            "NSMutableArray",
                                            "NSDictionary",
                                            "NSMutableDictionary",
                                            "NSFont",
                                            "NSColor",
                                            "NSColorSpace",
                                            "NSParagraphStyle",
                                            "NSMutableParagraphStyle"};
    return std::any_of(std::begin(kReadable), std::end(kReadable),
                       [&name](const char* readable) { return name == QLatin1String(readable); });
}

bool ClassInfo::readable() const
{
    return isReadableClass(name) || std::any_of(chain.begin(), chain.end(), isReadableClass);
}

Error ClassInfo::mismatch(const Error& damaged) const
{
    return readable() ? damaged : archiveHoldsUnreadableClass(name);
}

QString stringValue(plist_t node)
{
    uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    if (text == nullptr)
        return {};
    QString value = QString::fromUtf8(text, qsizetype(length));
    // Kept in step with the writer, which cannot store NUL.
    value.replace(QChar(u'\0'), QChar(QChar::ReplacementCharacter));
    return value;
}

QByteArray dataValue(plist_t node)
{
    uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    return bytes == nullptr ? QByteArray() : QByteArray(bytes, qsizetype(length));
}

// A number stored inline or as an NSNumber entry. libplist keeps every integer as its
// unsigned 64-bit pattern; archives store signed integers.
std::optional<double> numberValue(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return double(qint64(value));
    }
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return value ? 1.0 : 0.0;
    }
    default:
        return std::nullopt;
    }
}

std::optional<qint64> integerValue(plist_t node)
{
    if (plist_get_node_type(node) == PLIST_UINT) {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return qint64(value);
    }
    const std::optional<double> number = numberValue(node);
    // Reals are truncated as NSNumber's integerValue does, if they fit.
    if (!number || !std::isfinite(*number) || std::abs(*number) >= 9.0e18)
        return std::nullopt;
    return qint64(*number);
}

// The items of an array node, in order. libplist looks an item of a parsed array up by
// walking from the first, so reading items by index would take time that grows with the
// square of the array; one walk gives them all.
std::vector<plist_t> arrayItems(plist_t array)
{
    std::vector<plist_t> items;
    items.reserve(plist_array_get_size(array));
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(array, &iterator);
    const auto freeIterator = qScopeGuard([&] { std::free(iterator); });
    for (plist_t item = nullptr;;) {
        plist_array_next_item(array, iterator, &item);
        if (item == nullptr)
            break;
        items.push_back(item);
    }
    return items;
}

Result<ArchiveObjectGraph> ArchiveObjectGraph::open(const QByteArray& data)
{
    Result<PlistPtr> parsed = parsePropertyList(data);
    LOMIR_RETURN_IF_ERROR(parsed);
    ArchiveObjectGraph graph(std::move(parsed).value());
    LOMIR_RETURN_IF_ERROR(graph.readTop());
    return graph;
}

Result<ClassInfo> ArchiveObjectGraph::classOf(const Object& object)
{
    switch (plist_get_node_type(object.node)) {
    case PLIST_STRING:
        return ClassInfo{QStringLiteral("NSString"), {}};
    case PLIST_UINT:
    case PLIST_REAL:
    case PLIST_BOOLEAN:
        return ClassInfo{QStringLiteral("NSNumber"), {}};
    case PLIST_DATA:
        return ClassInfo{QStringLiteral("NSData"), {}};
    case PLIST_DATE:
        return ClassInfo{QStringLiteral("NSDate"), {}};
    case PLIST_DICT:
        break;
    default:
        return archiveDamaged("an object of its object table has no class");
    }
    plist_t reference = plist_dict_get_item(object.node, "$class");
    if (reference == nullptr || plist_get_node_type(reference) != PLIST_UID)
        return archiveDamaged("an object of its object table has no class");
    uint64_t uid = 0;
    plist_get_uid_val(reference, &uid);
    if (const auto known = m_classes.find(uid); known != m_classes.end())
        return known->second;
    if (uid >= m_count)
        return archiveDamaged("an object's class is not in its object table");
    plist_t description = m_objectNodes[uid];
    if (plist_get_node_type(description) != PLIST_DICT)
        return archiveDamaged("an object's class description is not a dictionary");
    plist_t name = plist_dict_get_item(description, "$classname");
    if (name == nullptr || plist_get_node_type(name) != PLIST_STRING)
        return archiveDamaged("an object's class description has no class name");
    ClassInfo info{stringValue(name), {}};
    Result<QStringList> chain =
        classNames(description, "$classes", "a malformed list of superclasses");
    LOMIR_RETURN_IF_ERROR(chain);
    info.chain = std::move(chain).value();
    // As macOS's unarchiver does, the hints are consulted only for a class that is
    // missing; the first that this reader knows stands in for it.
    if (!isReadableClass(info.name)) {
        Result<QStringList> hints =
            classNames(description, "$classhints", "a malformed list of class hints");
        LOMIR_RETURN_IF_ERROR(hints);
        const auto hint = std::find_if(hints->begin(), hints->end(), isReadableClass);
        if (hint != hints->end())
            info.chain = QStringList{*hint};
    }
    m_classes.emplace(uid, info);
    return info;
}

Status ArchiveObjectGraph::readTop()
{
    plist_t top = m_plist.get();
    if (plist_get_node_type(top) != PLIST_DICT)
        return archiveDamaged("it is not a keyed archive");
    plist_t archiver = plist_dict_get_item(top, "$archiver");
    if (archiver == nullptr || plist_get_node_type(archiver) != PLIST_STRING ||
        stringValue(archiver) != QLatin1String("NSKeyedArchiver"))
        return archiveDamaged("it is not a keyed archive");
    plist_t version = plist_dict_get_item(top, "$version");
    if (version == nullptr || integerValue(version) != qint64(kKeyedArchiveVersion))
        return archiveDamaged("it has a keyed-archive version that cannot be read");
    m_objects = plist_dict_get_item(top, "$objects");
    if (m_objects == nullptr || plist_get_node_type(m_objects) != PLIST_ARRAY ||
        plist_array_get_size(m_objects) == 0)
        return archiveDamaged("it has no object table");
    m_objectNodes = arrayItems(m_objects);
    m_count = m_objectNodes.size();
    plist_t topObjects = plist_dict_get_item(top, "$top");
    if (topObjects == nullptr || plist_get_node_type(topObjects) != PLIST_DICT)
        return archiveDamaged("it has no root object");
    plist_t root = plist_dict_get_item(topObjects, "root");
    if (root == nullptr)
        return archiveDamaged("it has no root object");
    Result<Object> resolved = resolve(root);
    LOMIR_RETURN_IF_ERROR(resolved);
    m_root = resolved.value();
    return Done{};
}

Result<QStringList> ArchiveObjectGraph::classNames(plist_t description, const char* key,
                                                   const char* malformed)
{
    plist_t list = plist_dict_get_item(description, key);
    if (list == nullptr)
        return QStringList();
    const Error error = archiveDamaged(
        QStringLiteral("an object's class description has %1").arg(QLatin1String(malformed)));
    if (plist_get_node_type(list) != PLIST_ARRAY)
        return error;
    QStringList names;
    for (plist_t entry : arrayItems(list)) {
        if (plist_get_node_type(entry) != PLIST_STRING)
            return error;
        names.append(stringValue(entry));
    }
    return names;
}

Result<Object> ArchiveObjectGraph::resolve(plist_t reference) const
{
    if (reference == nullptr || plist_get_node_type(reference) != PLIST_UID)
        return archiveDamaged("a value that should refer to an object does not");
    uint64_t uid = 0;
    plist_get_uid_val(reference, &uid);
    if (uid == 0)
        return Object{};
    if (uid >= m_count)
        return archiveDamaged("it refers to an object that is not in its object table");
    return Object{uid, m_objectNodes[uid]};
}

Status ArchiveObjectGraph::enter(const Object& object)
{
    if (m_path.size() >= kMaxObjectDepth)
        return archiveDamaged("its objects are nested too deeply");
    if (std::find(m_path.begin(), m_path.end(), object.uid) != m_path.end())
        return archiveDamaged("an object in it contains itself");
    m_path.push_back(object.uid);
    return Done{};
}

void ArchiveObjectGraph::leave()
{
    m_path.pop_back();
}

Status ArchiveObjectGraph::expectClass(const Object& object, const char* className,
                                       const char* description)
{
    if (object.isNil() || plist_get_node_type(object.node) != PLIST_DICT)
        return archiveDamaged(QStringLiteral("where it should hold %1, it holds something "
                                             "else")
                                  .arg(QLatin1String(description)));
    Result<ClassInfo> info = classOf(object);
    LOMIR_RETURN_IF_ERROR(info);
    if (!info->inherits(className))
        return info->mismatch(
            archiveDamaged(QStringLiteral("where it should hold %1, it holds an object of "
                                          "class \u201c%2\u201d")
                               .arg(QLatin1String(description), info->name)));
    return Done{};
}

Result<QString> ArchiveObjectGraph::readString(plist_t reference, const char* what)
{
    if (reference == nullptr)
        return archiveDamaged(QStringLiteral("%1 is missing").arg(QLatin1String(what)));
    Result<Object> object = resolve(reference);
    LOMIR_RETURN_IF_ERROR(object);
    if (object->isNil())
        return archiveDamaged(QStringLiteral("%1 is missing").arg(QLatin1String(what)));
    const plist_type type = plist_get_node_type(object->node);
    if (type == PLIST_STRING)
        return stringValue(object->node);
    const Error notString =
        archiveDamaged(QStringLiteral("%1 is not a string").arg(QLatin1String(what)));
    if (type != PLIST_DICT)
        return notString;
    Result<ClassInfo> info = classOf(*object);
    LOMIR_RETURN_IF_ERROR(info);
    if (!info->inherits("NSString"))
        return info->mismatch(notString);
    plist_t inlineString = plist_dict_get_item(object->node, "NS.string");
    if (inlineString != nullptr && plist_get_node_type(inlineString) == PLIST_STRING)
        return stringValue(inlineString);
    plist_t bytes = plist_dict_get_item(object->node, "NS.bytes");
    if (bytes != nullptr && plist_get_node_type(bytes) == PLIST_DATA) {
        QString value = QString::fromUtf8(dataValue(bytes));
        value.replace(QChar(u'\0'), QChar(QChar::ReplacementCharacter));
        return value;
    }
    return notString;
}

Result<plist_t> ArchiveObjectGraph::inlineValue(const Object& object, const char* className,
                                                const char* key, plist_type type,
                                                const Error& wrong)
{
    if (object.isNil() || plist_get_node_type(object.node) != PLIST_DICT)
        return wrong;
    Result<ClassInfo> info = classOf(object);
    LOMIR_RETURN_IF_ERROR(info);
    if (!info->inherits(className))
        return info->mismatch(wrong);
    plist_t value = plist_dict_get_item(object.node, key);
    if (value == nullptr || plist_get_node_type(value) != type)
        return wrong;
    return value;
}

Result<QByteArray> ArchiveObjectGraph::readData(const Object& object, const char* what)
{
    if (plist_get_node_type(object.node) == PLIST_DATA)
        return dataValue(object.node);
    Result<plist_t> bytes =
        inlineValue(object, "NSData", "NS.data", PLIST_DATA,
                    archiveDamaged(QStringLiteral("%1 is not data").arg(QLatin1String(what))));
    LOMIR_RETURN_IF_ERROR(bytes);
    return dataValue(bytes.value());
}

Result<std::vector<plist_t>> ArchiveObjectGraph::readArray(const Object& object, const char* what)
{
    Result<plist_t> items = inlineValue(
        object, "NSArray", "NS.objects", PLIST_ARRAY,
        archiveDamaged(QStringLiteral("its %1 are not a list").arg(QLatin1String(what))));
    LOMIR_RETURN_IF_ERROR(items);
    std::vector<plist_t> references = arrayItems(items.value());
    for (plist_t reference : references) {
        LOMIR_RETURN_IF_ERROR(resolve(reference));
    }
    return references;
}

Result<std::optional<double>> realFor(plist_t dict, const char* key)
{
    plist_t node = plist_dict_get_item(dict, key);
    if (node == nullptr)
        return std::optional<double>();
    const std::optional<double> value = numberValue(node);
    if (!value)
        return archiveDamaged(
            QStringLiteral("its value for \u201c%1\u201d is not a number").arg(QLatin1String(key)));
    return value;
}

Result<std::optional<qint64>> integerFor(plist_t dict, const char* key)
{
    plist_t node = plist_dict_get_item(dict, key);
    if (node == nullptr)
        return std::optional<qint64>();
    const std::optional<qint64> value = integerValue(node);
    if (!value)
        return archiveDamaged(QStringLiteral("its value for \u201c%1\u201d is not an integer")
                                  .arg(QLatin1String(key)));
    return value;
}

const char* presentKey(plist_t dict, const char* first, const char* second)
{
    return plist_dict_get_item(dict, first) != nullptr ? first : second;
}

} // namespace lomir::archive
