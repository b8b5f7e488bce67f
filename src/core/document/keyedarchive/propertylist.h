#pragma once

#include "core/base/result.h"

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

// Keyed archives nest four or five levels deep; this limit only stops hostile files.
// How large a list may be is kMaxArchiveSize, shared with the document's writer.
inline constexpr int kMaxPropertyListDepth = 32;

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
