#pragma once

#include "core/base/result.h"

#include <QString>
#include <memory>
#include <vector>

class QLockFile;

namespace lomir {

class Document;

// Where copies of documents with unsaved changes wait until they are saved or thrown
// away, so that they outlive a crash, a kill or a deliberate stop of the program.
//
// Each running program keeps its copies in a session folder of its own, held by a lock
// file next to it: <root>/<session>/ and <root>/<session>.lock. A session whose lock
// no running program holds was left behind by one that ended without cleaning up; the
// next program to start adopts its copies. Two programs running side by side never
// take each other's copies. Each copy is two files: <key>.lomir, the document in the
// own type, and <key>.json, the file and type it belongs to.
class RecoveryFolder
{
public:
    struct Copy
    {
        QString key;
        QString copyPath; // the copy in the own type
        QString filePath; // the document's own file; empty for an untitled one
        QString fileType; // the type of that file
    };

    explicit RecoveryFolder(QString root);
    ~RecoveryFolder();
    RecoveryFolder(const RecoveryFolder&) = delete;
    RecoveryFolder& operator=(const RecoveryFolder&) = delete;

    const QString& root() const { return m_root; }

    // A key no copy of this session uses yet.
    QString newKey();

    // Writes the document's current record and where it belongs under the key, each
    // through writeRegularFile; a copy already there is replaced whole or not at all.
    // Failures are those of document files, or kFolderUnavailable for the folder.
    [[nodiscard]] Status write(const QString& key, const Document& document);
    // Removes the copy under the key, if there is one.
    void remove(const QString& key);
    // The path of the copy in the own type under the key.
    QString copyPath(const QString& key) const;

    // Moves the copies of abandoned sessions into this one and lists them, with their
    // new keys, oldest session first.
    std::vector<Copy> adoptAbandonedCopies();

private:
    [[nodiscard]] Status openSession();
    QString sessionPath() const;

    QString m_root;
    QString m_session;
    std::unique_ptr<QLockFile> m_lock;
    int m_lastKey = 0;
};

} // namespace lomir
