#pragma once

#include "core/base/result.h"
#include "core/document/keyedarchive/propertylist.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <map>
#include <optional>
#include <vector>

namespace lomir::archive {

// The classes the class readers decode, as the archive names them. A class hint is
// followed only to one of these.
bool isReadableClass(const QString& name);

// The class of an object in the archive, from its class description: its name, and the
// classes it can be read as. Those are its superclasses ($classes), or, for a class this
// reader does not know, the first class in $classhints that it does know.
struct ClassInfo
{
    QString name;
    QStringList chain;

    bool inherits(const char* className) const
    {
        const QLatin1String wanted(className);
        return name == wanted || chain.contains(wanted);
    }

    // Whether this reader reads objects of the class, as itself or as one it inherits.
    bool readable() const;

    // The error for an object of this class where one of another class was expected:
    // a damaged archive if this class is one the reader knows (or reads another as),
    // otherwise an archive holding what cannot be read.
    Error mismatch(const Error& damaged) const;
};

// An object of the archive: its index in $objects and its node. UID 0 is nil.
struct Object
{
    quint64 uid = 0;
    plist_t node = nullptr;

    bool isNil() const { return node == nullptr; }
};

// Values stored inline in an object's dictionary.
QString stringValue(plist_t node);
QByteArray dataValue(plist_t node);
// A number stored inline or as an NSNumber entry. libplist keeps every integer as its
// unsigned 64-bit pattern; archives store signed integers.
std::optional<double> numberValue(plist_t node);
std::optional<qint64> integerValue(plist_t node);

// The items of an array node, in order, in one walk (see the definition for why).
std::vector<plist_t> arrayItems(plist_t array);

// A dictionary's number or integer for a key: nothing when the key is absent, an error
// when it holds something else.
Result<std::optional<double>> realFor(plist_t dict, const char* key);
Result<std::optional<qint64>> integerFor(plist_t dict, const char* key);

// The first of two keys that the dictionary has, else the second.
const char* presentKey(plist_t dict, const char* first, const char* second);

// A keyed archive's object graph. The archive comes from outside, so nothing in it is
// trusted: every reference is checked against the object table, every class description
// is checked before it is used, and objects that contain themselves or nest too deeply
// are refused (enter/leave around each object a reader decodes).
class ArchiveObjectGraph
{
public:
    // Parses the property list and checks the archive's top level: the archiver, the
    // version, the object table and the root reference.
    static Result<ArchiveObjectGraph> open(const QByteArray& data);

    // The root object, nil for an archive of nil.
    const Object& root() const { return m_root; }

    // The class of an object, with the classes it can be read as; remembered per class
    // description.
    Result<ClassInfo> classOf(const Object& object);

    // Follows a UID reference into the object table.
    Result<Object> resolve(plist_t reference) const;

    // Marks an object as being decoded; refuses one that is already being decoded
    // further up (the archive refers to itself) and chains nested too deeply. Every
    // successful enter is matched by a leave.
    Status enter(const Object& object);
    void leave();

    // Checks that the object is a dictionary-based object of the class (or a subclass,
    // or a class that stands in for it); description names it in the error.
    Status expectClass(const Object& object, const char* className, const char* description);

    // A string: a plain entry, or an NSString object (NSMutableString) that stores its
    // characters inline, as a string or as UTF-8 bytes.
    Result<QString> readString(plist_t reference, const char* what);

    // Bytes: a plain data entry, or an NSData object (NSMutableData) with NS.data.
    Result<QByteArray> readData(const Object& object, const char* what);

    // The references held by an NSArray (NSMutableArray) object, each checked to lead
    // into the object table. They are kept as references, eight bytes each, rather
    // than resolved: an array may be millions long.
    Result<std::vector<plist_t>> readArray(const Object& object, const char* what);

private:
    explicit ArchiveObjectGraph(PlistPtr plist) : m_plist(std::move(plist)) {}

    Status readTop();

    // A list of class names in a class description; an absent list is empty.
    static Result<QStringList> classNames(plist_t description, const char* key,
                                          const char* malformed);

    // The value that an object of a Foundation container class (or a subclass) keeps
    // inline, such as the NS.data of an NSMutableData; `wrong` where there is none.
    Result<plist_t> inlineValue(const Object& object, const char* className, const char* key,
                                plist_type type, const Error& wrong);

    PlistPtr m_plist;
    plist_t m_objects = nullptr;
    std::vector<plist_t> m_objectNodes; // the items of m_objects, by UID
    quint64 m_count = 0;
    Object m_root;
    std::vector<quint64> m_path;
    std::map<quint64, ClassInfo> m_classes;
};

} // namespace lomir::archive
