#pragma once

#include "core/base/result.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace lomir {

class Document;
class RecoveryFolder;

enum class SaveChangesAnswer
{
    Save,
    DontSave,
    Cancel
};

// Where and as what to save a document.
struct SaveDestination
{
    QString path;
    QString typeName;

    bool operator==(const SaveDestination&) const = default;
};

// What a name chosen in a save dialog saves as: the type its extension names (.lomir,
// .txt, .rtf), or else the type of the dialog's chosen filter.
SaveDestination saveDestination(const QString& chosenPath, const QString& filterType);

// What the document controller needs to ask or tell the user. The widgets library
// answers with dialogs; tests answer with a script.
class DocumentUserInterface
{
public:
    virtual ~DocumentUserInterface() = default;

    // The document has unsaved changes and is about to close.
    virtual SaveChangesAnswer askToSaveChanges(const Document& document) = 0;
    // A file and type to save the document as; nothing when the user cancels.
    virtual std::optional<SaveDestination> askSaveDestination(const Document& document) = 0;
    // Files to open; none when the user cancels.
    virtual QStringList askFilesToOpen() = 0;
    // Whether to drop the document's changes and read its file again.
    virtual bool confirmRevert(const Document& document) = 0;
    // An operation failed. The summary says which and names the document; the error's
    // sentence says what went wrong. The document is null when none was made.
    virtual void showError(const Document* document, const QString& summary,
                           const Error& error) = 0;
};

// The open documents and everything done to them as wholes: new, open, save, save as,
// revert and close, the recent files, autosaving and the recovery of documents that
// were not saved when the program ended. Talks to the user only through its
// DocumentUserInterface, so the application and the tests drive the same code.
class DocumentController : public QObject
{
    Q_OBJECT

public:
    // When edits are written without the user saving: once no change has come for the
    // quiet time, and at the latest this long after the first change not yet written.
    struct AutosaveTiming
    {
        std::chrono::milliseconds quiet{1500};
        std::chrono::milliseconds latest{4000};
    };

    // The recovery folder is created under recoveryRoot when first needed.
    DocumentController(DocumentUserInterface& userInterface, QString recoveryRoot,
                       AutosaveTiming timing, QObject* parent = nullptr);
    // Keeps recovered documents in defaultRecoveryRoot() and autosaves on the default
    // timing.
    explicit DocumentController(DocumentUserInterface& userInterface, QObject* parent = nullptr);
    ~DocumentController() override;

    // "Recovery" in the application's data folder (QStandardPaths::AppDataLocation).
    static QString defaultRecoveryRoot();
    QString recoveryRoot() const;

    // The open documents, in the order they were opened.
    std::vector<Document*> documents() const;
    // The open document of the file (compared as absolute paths), or null.
    Document* documentForFile(const QString& path) const;

    // Start-up: brings back the documents that an earlier run left unsaved, opens the
    // files, and makes a new document when nothing else is open.
    void launch(const QStringList& paths);

    Document* newDocument();
    // Opens the file, or asks for the document that has it open already to be shown.
    // Returns null when the file cannot be opened (the user is told why).
    Document* openDocument(const QString& path);
    // Asks the user for files and opens them.
    void openDocuments();
    // Save writes the document to its file, or asks for one when it has none. Each
    // returns whether the document was saved.
    bool saveDocument(Document& document);
    bool saveDocumentAs(Document& document);
    // Asks, then reads the document's file again. Returns whether it was reverted.
    bool revertDocument(Document& document);
    // Closes the document, asking first about unsaved changes. Returns false when the
    // user cancels or the save they asked for fails; the document then stays open.
    bool closeDocument(Document& document);
    // Closes every document after asking about each one with unsaved changes. When the
    // user cancels, or a save they asked for fails, every document stays open.
    bool closeAllDocuments();

    // Writes the document's edits now: titled documents into their own file,
    // untitled ones into the recovery folder. Also called when its window loses focus.
    void autosave(Document& document);
    // Writes every document with unsaved changes into the recovery folder, without
    // asking or telling the user anything. Runs before every deliberate stop.
    void writeRecoveryCopies();
    // Brings back the documents an earlier run left in the recovery folder: modified,
    // marked recovered. Returns how many.
    int restoreRecoveredDocuments();

    // Recently opened or saved files, newest first, kept in the settings.
    QStringList recentFiles() const;
    void clearRecentFiles();
    static constexpr int kMaximumRecentFiles = 10;

Q_SIGNALS:
    // A document was made or opened: give it a window.
    void documentAdded(Document* document);
    // An open document was asked for again: bring its window forward.
    void documentShowRequested(Document* document);
    // The document is closing and is destroyed right after.
    void documentClosed(Document* document);
    void recentFilesChanged();

private:
    struct Entry;

    Entry* entryFor(const Document& document) const;
    // Asks about unsaved changes and saves when told to; false means keep it open.
    bool settleUnsavedChanges(Document& document);
    Document* addDocument(std::unique_ptr<Document> document, QString recoveryKey = {});
    void removeDocument(Document& document);
    QString nextUntitledName() const;
    void scheduleAutosave(Entry& entry);
    [[nodiscard]] Status writeRecoveryCopy(Entry& entry);
    void removeRecoveryCopy(Entry& entry);
    void noteRecentFile(const QString& path);
    void forgetRecentFile(const QString& path);
    void documentSaved(Document& document);

    DocumentUserInterface& m_userInterface;
    AutosaveTiming m_timing;
    std::unique_ptr<RecoveryFolder> m_recovery;
    std::vector<std::unique_ptr<Entry>> m_entries;
    std::function<void()> m_previousWorkBeforeStop;
};

} // namespace lomir
