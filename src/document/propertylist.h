#pragma once

#include "base/result.h"

#include <QByteArray>
#include <memory>
#include <plist/plist.h>

namespace lomir {

// Owns a libplist node tree.
struct PlistDeleter
{
    void operator()(plist_t node) const { plist_free(node); }
};
using PlistPtr = std::unique_ptr<void, PlistDeleter>;

// Limits on property lists read from outside. Keyed archives nest four or five levels
// deep; the limits only stop hostile files.
inline constexpr int kMaxPropertyListDepth = 32;
inline constexpr qsizetype kMaxPropertyListSize = 16 * 1024 * 1024;

// Parses a binary ("bplist00") or XML property list. Never aborts and never uses
// unbounded time or memory, whatever the bytes:
//  - a binary list is first walked without libplist, to refuse object tables that
//    point outside the file, refer to themselves, nest too deeply or would expand
//    (libplist copies an object for every reference to it) into more than one node for
//    every five bytes of the file (and a few thousand), so that the nodes never take
//    more than about 20 times the file's size;
//  - XML is read with QXmlStreamReader into libplist nodes, with the same depth limit.
// Errors are in NSCocoaErrorDomain with the code of a damaged archive.
Result<PlistPtr> parsePropertyList(const QByteArray& data);

// The binary property list of a node tree.
QByteArray binaryPropertyList(plist_t root);

} // namespace lomir
