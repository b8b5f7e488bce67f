#include "core/document/documentcontroller.h"

#include "core/base/errors.h"
#include "core/base/fatal.h"
#include "core/document/document.h"
#include "core/document/documentformats.h"
#include "core/document/recoveryfolder.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QTimer>
#include <algorithm>

namespace lomir {

namespace {

const QString kRecentFilesKey = QStringLiteral("RecentDocuments");

QString absolutePath(const QString& path)
{
    return QFileInfo(path).absoluteFilePath();
}

} // namespace

SaveDestination saveDestination(const QString& chosenPath, const QString& filterType)
{
    const QString typeOfName = typeForFileName(chosenPath);
    return {chosenPath, typeOfName.isEmpty() ? filterType : typeOfName};
}

struct DocumentController::Entry
{
    std::unique_ptr<Document> document;
    // The document's key in the recovery folder, and whether a copy is there now.
    QString recoveryKey;
    bool hasRecoveryCopy = false;
    QTimer autosaveTimer;
    QDeadlineTimer latestAutosave;
    // A failing autosave is told once, not every few seconds, until a save succeeds.
    bool autosaveFailureShown = false;
};

DocumentController::DocumentController(DocumentUserInterface& userInterface, QString recoveryRoot,
                                       AutosaveTiming timing, QObject* parent)
    : QObject(parent), m_userInterface(userInterface), m_timing(timing),
      m_recovery(std::make_unique<RecoveryFolder>(std::move(recoveryRoot)))
{
    m_previousWorkBeforeStop = setWorkBeforeFatalStop([this] { writeRecoveryCopies(); });
}

DocumentController::DocumentController(DocumentUserInterface& userInterface, QObject* parent)
    : DocumentController(userInterface, defaultRecoveryRoot(), AutosaveTiming{}, parent)
{
}

DocumentController::~DocumentController()
{
    setWorkBeforeFatalStop(std::move(m_previousWorkBeforeStop));
}

QString DocumentController::defaultRecoveryRoot()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
           QStringLiteral("/Recovery");
}

QString DocumentController::recoveryRoot() const
{
    return m_recovery->root();
}

std::vector<Document*> DocumentController::documents() const
{
    std::vector<Document*> result;
    result.reserve(m_entries.size());
    for (const auto& entry : m_entries)
        result.push_back(entry->document.get());
    return result;
}

Document* DocumentController::documentForFile(const QString& path) const
{
    const QString wanted = absolutePath(path);
    for (const auto& entry : m_entries) {
        if (entry->document->filePath() == wanted)
            return entry->document.get();
    }
    return nullptr;
}

DocumentController::Entry* DocumentController::entryFor(const Document& document) const
{
    for (const auto& entry : m_entries) {
        if (entry->document.get() == &document)
            return entry.get();
    }
    return nullptr;
}

void DocumentController::launch(const QStringList& paths)
{
    restoreRecoveredDocuments();
    for (const QString& path : paths)
        openDocument(path);
    if (m_entries.empty())
        newDocument();
}

Document* DocumentController::newDocument()
{
    return addDocument(std::make_unique<Document>());
}

Document* DocumentController::openDocument(const QString& path)
{
    if (Document* open = documentForFile(path)) {
        Q_EMIT documentShowRequested(open);
        return open;
    }
    const QString summary =
        tr("The document “%1” could not be opened.").arg(QFileInfo(path).fileName());
    const QString type = typeForFileName(path);
    if (type.isEmpty()) {
        m_userInterface.showError(
            nullptr, summary,
            Error{QString(kOSStatusErrorDomain), kUnsupportedTypeError,
                  tr("Lomir opens label documents (.lomir), plain text (.txt) and RTF "
                     "(.rtf).")});
        return nullptr;
    }
    auto document = std::make_unique<Document>();
    if (const Status read = document->readFromFile(path, type); !read) {
        m_userInterface.showError(nullptr, summary, read.error());
        forgetRecentFile(absolutePath(path));
        return nullptr;
    }
    // A new document that nobody has touched gives way to the file, as when a file
    // is opened right after start-up.
    Document* untouched = nullptr;
    if (m_entries.size() == 1) {
        Document& only = *m_entries.front()->document;
        if (only.filePath().isEmpty() && !only.isModified() && !only.isRecovered())
            untouched = &only;
    }
    Document* opened = addDocument(std::move(document));
    noteRecentFile(opened->filePath());
    if (untouched)
        removeDocument(*untouched);
    return opened;
}

void DocumentController::openDocuments()
{
    for (const QString& path : m_userInterface.askFilesToOpen())
        openDocument(path);
}

bool DocumentController::saveDocument(Document& document)
{
    if (document.filePath().isEmpty())
        return saveDocumentAs(document);
    const Status saved = document.saveToFile(document.filePath(), document.fileType());
    if (!saved) {
        m_userInterface.showError(
            &document, tr("The document “%1” could not be saved.").arg(document.displayName()),
            saved.error());
        return false;
    }
    documentSaved(document);
    return true;
}

bool DocumentController::saveDocumentAs(Document& document)
{
    const std::optional<SaveDestination> destination = m_userInterface.askSaveDestination(document);
    if (!destination)
        return false;
    const Status saved = document.saveToFile(destination->path, destination->typeName);
    if (!saved) {
        m_userInterface.showError(&document,
                                  tr("The document “%1” could not be saved.")
                                      .arg(QFileInfo(destination->path).fileName()),
                                  saved.error());
        return false;
    }
    documentSaved(document);
    return true;
}

void DocumentController::documentSaved(Document& document)
{
    if (Entry* entry = entryFor(document)) {
        entry->autosaveTimer.stop();
        entry->autosaveFailureShown = false;
        removeRecoveryCopy(*entry);
    }
    noteRecentFile(document.filePath());
}

bool DocumentController::revertDocument(Document& document)
{
    if (document.filePath().isEmpty() || !m_userInterface.confirmRevert(document))
        return false;
    const Status reverted = document.revertToSaved();
    if (!reverted) {
        m_userInterface.showError(
            &document, tr("The document “%1” could not be reverted.").arg(document.displayName()),
            reverted.error());
        return false;
    }
    if (Entry* entry = entryFor(document)) {
        entry->autosaveTimer.stop();
        removeRecoveryCopy(*entry);
    }
    return true;
}

bool DocumentController::settleUnsavedChanges(Document& document)
{
    if (!document.isModified())
        return true;
    switch (m_userInterface.askToSaveChanges(document)) {
    case SaveChangesAnswer::Cancel:
        return false;
    case SaveChangesAnswer::Save:
        return saveDocument(document);
    case SaveChangesAnswer::DontSave:
        return true;
    }
    return false;
}

bool DocumentController::closeDocument(Document& document)
{
    if (!settleUnsavedChanges(document))
        return false;
    removeDocument(document);
    return true;
}

bool DocumentController::closeAllDocuments()
{
    // Every question first: cancelling any of them keeps every document open.
    const std::vector<Document*> open = documents();
    for (Document* document : open) {
        if (!settleUnsavedChanges(*document))
            return false;
    }
    for (Document* document : open)
        removeDocument(*document);
    return true;
}

void DocumentController::autosave(Document& document)
{
    Entry* entry = entryFor(document);
    if (!entry)
        return;
    entry->autosaveTimer.stop();
    if (!document.isModified())
        return;
    if (!document.filePath().isEmpty()) {
        const Status saved = document.saveToFile(document.filePath(), document.fileType());
        if (saved) {
            entry->autosaveFailureShown = false;
            removeRecoveryCopy(*entry);
            return;
        }
        // The edits are kept in the recovery folder until the file can be written.
        if (!entry->autosaveFailureShown) {
            entry->autosaveFailureShown = true;
            m_userInterface.showError(&document,
                                      tr("The document “%1” could not be saved automatically.")
                                          .arg(document.displayName()),
                                      saved.error());
        }
    }
    const Status kept = writeRecoveryCopy(*entry);
    if (!kept && !entry->autosaveFailureShown) {
        entry->autosaveFailureShown = true;
        m_userInterface.showError(
            &document,
            tr("The changes to “%1” could not be kept for recovery.").arg(document.displayName()),
            kept.error());
    }
}

void DocumentController::writeRecoveryCopies()
{
    for (const auto& entry : m_entries) {
        if (entry->document->isModified())
            (void)writeRecoveryCopy(*entry);
    }
}

int DocumentController::restoreRecoveredDocuments()
{
    int restored = 0;
    for (const RecoveryFolder::Copy& copy : m_recovery->adoptAbandonedCopies()) {
        auto document = std::make_unique<Document>();
        const Status read =
            document->readRecoveredCopy(copy.copyPath, copy.filePath, copy.fileType);
        if (!read) {
            m_userInterface.showError(
                nullptr, tr("A document that Lomir kept when it last stopped cannot be restored."),
                read.error());
            m_recovery->remove(copy.key);
            continue;
        }
        Document* added = addDocument(std::move(document), copy.key);
        entryFor(*added)->hasRecoveryCopy = true;
        ++restored;
    }
    return restored;
}

Document* DocumentController::addDocument(std::unique_ptr<Document> document, QString recoveryKey)
{
    auto entry = std::make_unique<Entry>();
    entry->document = std::move(document);
    entry->recoveryKey = std::move(recoveryKey);
    entry->autosaveTimer.setSingleShot(true);
    Document* added = entry->document.get();
    if (added->filePath().isEmpty())
        added->setUntitledName(nextUntitledName());
    Entry* raw = entry.get();
    connect(added, &Document::changeDone, this, [this, raw] { scheduleAutosave(*raw); });
    connect(&entry->autosaveTimer, &QTimer::timeout, this, [this, added] { autosave(*added); });
    m_entries.push_back(std::move(entry));
    Q_EMIT documentAdded(added);
    return added;
}

void DocumentController::removeDocument(Document& document)
{
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [&](const auto& entry) {
        return entry->document.get() == &document;
    });
    if (found == m_entries.end())
        return;
    removeRecoveryCopy(**found);
    Q_EMIT documentClosed(&document);
    // Taken out of the list before it is destroyed, so that nothing finds it half gone.
    std::unique_ptr<Entry> entry = std::move(*found);
    m_entries.erase(found);
}

QString DocumentController::nextUntitledName() const
{
    for (int number = 1;; ++number) {
        const QString name = number == 1 ? tr("Untitled") : tr("Untitled %1").arg(number);
        const bool taken = std::any_of(m_entries.begin(), m_entries.end(), [&](const auto& e) {
            return e->document->filePath().isEmpty() && e->document->displayName() == name;
        });
        if (!taken)
            return name;
    }
}

void DocumentController::scheduleAutosave(Entry& entry)
{
    using namespace std::chrono;
    if (!entry.autosaveTimer.isActive())
        entry.latestAutosave = QDeadlineTimer(m_timing.latest);
    const milliseconds untilLatest{entry.latestAutosave.remainingTime()};
    entry.autosaveTimer.start(std::min(m_timing.quiet, std::max(untilLatest, 0ms)));
}

Status DocumentController::writeRecoveryCopy(Entry& entry)
{
    if (entry.recoveryKey.isEmpty())
        entry.recoveryKey = m_recovery->newKey();
    const Status written = m_recovery->write(entry.recoveryKey, *entry.document);
    if (written)
        entry.hasRecoveryCopy = true;
    return written;
}

void DocumentController::removeRecoveryCopy(Entry& entry)
{
    if (!entry.hasRecoveryCopy)
        return;
    m_recovery->remove(entry.recoveryKey);
    entry.hasRecoveryCopy = false;
}

QStringList DocumentController::recentFiles() const
{
    return QSettings().value(kRecentFilesKey).toStringList();
}

void DocumentController::clearRecentFiles()
{
    QSettings().remove(kRecentFilesKey);
    Q_EMIT recentFilesChanged();
}

void DocumentController::noteRecentFile(const QString& path)
{
    QStringList files = recentFiles();
    files.removeAll(path);
    files.prepend(path);
    while (files.size() > kMaximumRecentFiles)
        files.removeLast();
    QSettings().setValue(kRecentFilesKey, files);
    Q_EMIT recentFilesChanged();
}

void DocumentController::forgetRecentFile(const QString& path)
{
    QStringList files = recentFiles();
    if (files.removeAll(path) == 0)
        return;
    QSettings().setValue(kRecentFilesKey, files);
    Q_EMIT recentFilesChanged();
}

} // namespace lomir
