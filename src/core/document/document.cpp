#include "core/document/document.h"

#include "core/base/errors.h"
#include "core/base/fatal.h"
#include "core/base/result.h"
#include "core/base/units.h"
#include "core/document/documentfile.h"
#include "core/document/documentformats.h"

#include <QFileInfo>

namespace lomir {

namespace {

// Opening a plain-text file that is not UTF-8, or RTF that cannot be read at all,
// stops the program instead of opening a document whose text is not the file's.
void stopOnUnreadableText(const Error& error)
{
    if (error.domain == kUnreadableTextDomain)
        fatalError("Lomir stopped opening a file whose text it cannot read (" +
                   error.message.toStdString() +
                   "): a document of this type holds only text it "
                   "could read, never a guess at it");
}

} // namespace

Document::Document(QObject* parent) : QObject(parent), m_fileType(kLomirDocumentType) {}

double Document::pointToMillimetersConversionFactor() const
{
    return kPointToMillimetersConversionFactor;
}

double Document::pointToInchesConversionFactor() const
{
    return kPointToInchesConversionFactor;
}

QString Document::displayName() const
{
    return m_filePath.isEmpty() ? m_untitledName : QFileInfo(m_filePath).fileName();
}

void Document::setUntitledName(const QString& name)
{
    if (name == m_untitledName)
        return;
    const QString before = displayName();
    m_untitledName = name;
    if (displayName() != before)
        Q_EMIT displayNameChanged(displayName());
}

void Document::updateChangeCount()
{
    setModified(true);
    Q_EMIT changeDone();
}

void Document::setRecordSource(std::function<Content()> source)
{
    m_recordSource = std::move(source);
}

Content Document::currentRecord() const
{
    return m_recordSource ? m_recordSource() : m_content;
}

Status Document::readFromFile(const QString& path, const QString& typeName)
{
    const Result<Content> record = readLabelFile(path, typeName);
    if (!record) {
        stopOnUnreadableText(record.error());
        return record.error();
    }
    takeRecord(*record, typeName);
    setFile(path, typeName);
    setModified(false);
    return Done{};
}

Status Document::saveToFile(const QString& path, const QString& typeName)
{
    const Status written = writeLabelFile(path, currentRecord(), typeName);
    if (!written)
        return written;
    setFile(path, typeName);
    setModified(false);
    setRecovered(false);
    return Done{};
}

Status Document::writeCopy(const QString& path, const QString& typeName) const
{
    return writeLabelFile(path, currentRecord(), typeName);
}

Status Document::revertToSaved()
{
    const Result<Content> record = readLabelFile(m_filePath, m_fileType);
    if (!record) {
        stopOnUnreadableText(record.error());
        return record.error();
    }
    takeRecord(*record, m_fileType);
    setModified(false);
    setRecovered(false);
    Q_EMIT reverted();
    return Done{};
}

Status Document::readRecoveredCopy(const QString& copyPath, const QString& filePath,
                                   const QString& typeName)
{
    const Result<Content> record = readLabelFile(copyPath, QString(kLomirDocumentType));
    LOMIR_RETURN_IF_ERROR(record);
    m_content = *record;
    setFile(filePath, typeName);
    setModified(true);
    setRecovered(true);
    return Done{};
}

// The own type replaces the whole record; plain text and RTF carry only the text, so
// every other setting keeps its value.
void Document::takeRecord(const Content& record, const QString& typeName)
{
    if (typeName == kLomirDocumentType)
        m_content = record;
    else
        m_content.labelText = record.labelText;
}

void Document::setFile(const QString& path, const QString& typeName)
{
    const QString absolutePath = path.isEmpty() ? QString() : QFileInfo(path).absoluteFilePath();
    const QString nameBefore = displayName();
    m_fileType = typeName;
    if (absolutePath == m_filePath)
        return;
    m_filePath = absolutePath;
    Q_EMIT filePathChanged(m_filePath);
    if (displayName() != nameBefore)
        Q_EMIT displayNameChanged(displayName());
}

void Document::setModified(bool modified)
{
    if (modified == m_modified)
        return;
    m_modified = modified;
    Q_EMIT modifiedChanged(modified);
}

void Document::setRecovered(bool recovered)
{
    if (recovered == m_recovered)
        return;
    m_recovered = recovered;
    Q_EMIT recoveredChanged(recovered);
}

} // namespace lomir
