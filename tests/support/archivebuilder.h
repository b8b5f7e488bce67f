#pragma once

// Keyed archives built by hand, for shapes our writer never makes: other root classes,
// nil roots, odd colour forms, broken run tables, archives written by UIKit.

#include "core/document/keyedarchive/propertylist.h"

#include <QByteArray>
#include <QtGlobal>
#include <initializer_list>
#include <plist/plist.h>
#include <utility>

namespace lomir::testing {

// Builds an archive object by object; the object table starts with "$null".
class ArchiveBuilder
{
public:
    ArchiveBuilder() : m_objects(plist_new_array()) { add(plist_new_string("$null")); }

    quint64 add(plist_t node)
    {
        const quint64 uid = plist_array_get_size(m_objects.get());
        plist_array_append_item(m_objects.get(), node);
        return uid;
    }

    quint64 addClass(const char* name, std::initializer_list<const char*> chain)
    {
        plist_t description = plist_new_dict();
        plist_dict_set_item(description, "$classname", plist_new_string(name));
        plist_dict_set_item(description, "$classes", stringArray(chain));
        return add(description);
    }

    // A class description with $classhints: the classes a reader that lacks this one
    // should use instead, as UIKit names NSColor for UIColor and NSFont for UIFont.
    quint64 addClass(const char* name, std::initializer_list<const char*> chain,
                     std::initializer_list<const char*> hints)
    {
        const quint64 uid = addClass(name, chain);
        plist_dict_set_item(at(uid), "$classhints", stringArray(hints));
        return uid;
    }

    quint64 addString(const char* text) { return add(plist_new_string(text)); }

    // An NSAttributedString of one run: the text and one NSDictionary that maps each
    // attribute name to the object of the UID beside it.
    quint64 addAttributedString(const char* text,
                                std::initializer_list<std::pair<const char*, quint64>> attributes)
    {
        const quint64 stringClass =
            addClass("NSAttributedString", {"NSAttributedString", "NSObject"});
        const quint64 dictionaryClass = addClass("NSDictionary", {"NSDictionary", "NSObject"});
        plist_t dictionary = object(dictionaryClass);
        plist_t keys = plist_new_array();
        plist_t values = plist_new_array();
        for (const auto& [name, value] : attributes) {
            plist_array_append_item(keys, plist_new_uid(addString(name)));
            plist_array_append_item(values, plist_new_uid(value));
        }
        plist_dict_set_item(dictionary, "NS.keys", keys);
        plist_dict_set_item(dictionary, "NS.objects", values);
        plist_t root = object(stringClass);
        plist_dict_set_item(root, "NSString", plist_new_uid(addString(text)));
        plist_dict_set_item(root, "NSAttributes", plist_new_uid(add(dictionary)));
        return add(root);
    }

    static plist_t object(quint64 classUid)
    {
        plist_t dict = plist_new_dict();
        plist_dict_set_item(dict, "$class", plist_new_uid(classUid));
        return dict;
    }

    plist_t at(quint64 uid) const { return plist_array_get_item(m_objects.get(), uint32_t(uid)); }

    QByteArray finish(quint64 root)
    {
        PlistPtr top(plist_new_dict());
        plist_dict_set_item(top.get(), "$version", plist_new_uint(100000));
        plist_dict_set_item(top.get(), "$archiver", plist_new_string("NSKeyedArchiver"));
        plist_t topObjects = plist_new_dict();
        plist_dict_set_item(topObjects, "root", plist_new_uid(root));
        plist_dict_set_item(top.get(), "$top", topObjects);
        plist_dict_set_item(top.get(), "$objects", m_objects.release());
        return binaryPropertyList(top.get());
    }

private:
    static plist_t stringArray(std::initializer_list<const char*> strings)
    {
        plist_t array = plist_new_array();
        for (const char* entry : strings)
            plist_array_append_item(array, plist_new_string(entry));
        return array;
    }

    PlistPtr m_objects;
};

} // namespace lomir::testing
