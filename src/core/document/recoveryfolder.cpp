#include "core/document/recoveryfolder.h"

#include "core/base/errors.h"
#include "core/document/document.h"
#include "core/document/documentfile.h"
#include "core/document/documentformats.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QUuid>

namespace lomir {

namespace {

struct RecoveryTexts
{
    Q_DECLARE_TR_FUNCTIONS(RecoveryFolder)
};

const QString kCopySuffix = QStringLiteral(".lomir");
const QString kPlaceSuffix = QStringLiteral(".json");
const QString kLockSuffix = QStringLiteral(".lock");
const QLatin1StringView kFilePathKey{"filePath"};
const QLatin1StringView kFileTypeKey{"fileType"};

// A lock that counts as abandoned only when the program that took it is gone, however
// long it has been held: a program may run for days with unsaved documents.
std::unique_ptr<QLockFile> sessionLock(const QString& path)
{
    auto lock = std::make_unique<QLockFile>(path);
    lock->setStaleLockTime(0);
    return lock;
}

// The folder that cannot be made or locked, as the sentence that says so.
Error folderUnavailable(const QString& sentence, const QString& folder)
{
    return Error{QString(kFileErrorDomain), kFolderUnavailable, sentence.arg(folder)};
}

} // namespace

RecoveryFolder::RecoveryFolder(QString root) : m_root(std::move(root)) {}

RecoveryFolder::~RecoveryFolder()
{
    if (!m_lock)
        return;
    // An empty session is removed; one that still holds copies is left for the next
    // program to adopt once the lock is gone.
    QDir().rmdir(sessionPath());
    m_lock->unlock();
}

QString RecoveryFolder::newKey()
{
    return QString::number(++m_lastKey);
}

QString RecoveryFolder::sessionPath() const
{
    return m_root + u'/' + m_session;
}

QString RecoveryFolder::copyPath(const QString& key) const
{
    return sessionPath() + u'/' + key + kCopySuffix;
}

Status RecoveryFolder::openSession()
{
    if (m_lock)
        return Done{};
    if (!QDir().mkpath(m_root))
        return folderUnavailable(RecoveryTexts::tr("Cannot make the folder “%1”."), m_root);
    const QString session = QUuid::createUuid().toString(QUuid::WithoutBraces);
    std::unique_ptr<QLockFile> lock = sessionLock(m_root + u'/' + session + kLockSuffix);
    if (!lock->tryLock(0))
        return folderUnavailable(RecoveryTexts::tr("Cannot lock the folder “%1”."), m_root);
    if (!QDir(m_root).mkdir(session))
        return folderUnavailable(RecoveryTexts::tr("Cannot make the folder “%1”."),
                                 m_root + u'/' + session);
    m_session = session;
    m_lock = std::move(lock);
    return Done{};
}

Status RecoveryFolder::write(const QString& key, const Document& document)
{
    if (const Status opened = openSession(); !opened)
        return opened;
    // The copy first: a place without a copy is never read, a copy without a place
    // comes back as an untitled document.
    if (const Status copied = document.writeCopy(copyPath(key), QString(kLomirDocumentType));
        !copied)
        return copied;
    QJsonObject place;
    place.insert(kFilePathKey, document.filePath());
    place.insert(kFileTypeKey, document.fileType());
    return writeRegularFile(sessionPath() + u'/' + key + kPlaceSuffix,
                            QJsonDocument(place).toJson(QJsonDocument::Compact));
}

void RecoveryFolder::remove(const QString& key)
{
    if (!m_lock)
        return;
    QFile::remove(copyPath(key));
    QFile::remove(sessionPath() + u'/' + key + kPlaceSuffix);
}

std::vector<RecoveryFolder::Copy> RecoveryFolder::adoptAbandonedCopies()
{
    std::vector<Copy> adopted;
    const QDir root(m_root);
    const QStringList sessions =
        root.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Time | QDir::Reversed);
    for (const QString& session : sessions) {
        if (session == m_session)
            continue;
        std::unique_ptr<QLockFile> lock = sessionLock(root.filePath(session + kLockSuffix));
        if (!lock->tryLock(0))
            continue; // a running program owns it
        QDir abandoned(root.filePath(session));
        const QStringList copies =
            abandoned.entryList({u'*' + kCopySuffix}, QDir::Files, QDir::Time | QDir::Reversed);
        if (!copies.isEmpty() && !openSession())
            break;
        bool movedEverything = true;
        for (const QString& copyName : copies) {
            const QString oldKey = copyName.chopped(kCopySuffix.size());
            Copy copy;
            copy.key = newKey();
            copy.copyPath = copyPath(copy.key);
            if (!QFile::rename(abandoned.filePath(copyName), copy.copyPath)) {
                movedEverything = false;
                continue;
            }
            QFile placeFile(abandoned.filePath(oldKey + kPlaceSuffix));
            if (placeFile.open(QIODevice::ReadOnly)) {
                const QJsonObject place = QJsonDocument::fromJson(placeFile.readAll()).object();
                copy.filePath = place.value(kFilePathKey).toString();
                copy.fileType = place.value(kFileTypeKey).toString();
                placeFile.close();
                QFile::rename(placeFile.fileName(), sessionPath() + u'/' + copy.key + kPlaceSuffix);
            }
            if (copy.fileType.isEmpty() || copy.filePath.isEmpty()) {
                copy.filePath.clear();
                copy.fileType = QString(kLomirDocumentType);
            }
            adopted.push_back(std::move(copy));
        }
        // What is left is a place without a copy or a write cut short.
        if (movedEverything)
            abandoned.removeRecursively();
    }
    return adopted;
}

} // namespace lomir
