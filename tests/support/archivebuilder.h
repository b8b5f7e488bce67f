#pragma once

// Keyed archives built by hand, for shapes our writer never makes: other root classes,
// nil roots, odd colour forms, broken run tables.

#include "document/propertylist.h"

#include <QByteArray>
#include <QtGlobal>
#include <initializer_list>
#include <plist/plist.h>

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
        plist_t classes = plist_new_array();
        for (const char* entry : chain)
            plist_array_append_item(classes, plist_new_string(entry));
        plist_dict_set_item(description, "$classes", classes);
        return add(description);
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
    PlistPtr m_objects;
};

} // namespace lomir::testing
