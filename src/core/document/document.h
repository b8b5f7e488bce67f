#pragma once

#include "core/base/result.h"
#include "core/document/content.h"

#include <QObject>
#include <QString>
#include <functional>

namespace lomir {

// One label design as the application holds it while it is open: the record as last
// read, the file it belongs to and its type, and whether it has changes not yet on
// disk. The editor owns the live state; it hands the document a fresh record whenever
// one is saved or printed, so the stored record changes only when a file is read.
class Document : public QObject
{
    Q_OBJECT

public:
    explicit Document(QObject* parent = nullptr);

    // The record as last read: the defaults for a new document. Saving does not change
    // it; the editor reads it once, when its window first appears.
    const Content& content() const { return m_content; }

    // Millimetres and inches per point, fixed for the document's life.
    double pointToMillimetersConversionFactor() const;
    double pointToInchesConversionFactor() const;

    // The file the document is saved in (an absolute path), empty while it is untitled.
    QString filePath() const { return m_filePath; }
    // The type name the file is read and written as: "com.brenvik.lomir-doc",
    // "public.plain-text" or "public.rtf". New documents are of the own type.
    QString fileType() const { return m_fileType; }

    // The name windows and dialogs show: the file's name, or the name given to an
    // untitled document ("Untitled", "Untitled 2").
    QString displayName() const;
    void setUntitledName(const QString& name);

    // Whether there are changes that are not in the file.
    bool isModified() const { return m_modified; }
    // Whether the document was brought back from the recovery folder after the program
    // ended without saving it. Saving or reverting ends that.
    bool isRecovered() const { return m_recovered; }

    // A change done: marks the document edited. Every user change the editor makes
    // is reported here; changes of the zoom are not.
    void updateChangeCount();

    // The editor supplies the record that saving and printing use: a fresh Content
    // built from its controls.
    void setRecordSource(std::function<Content()> source);
    // The record source's result, or content() while there is none.
    Content currentRecord() const;

    // Reads the file as the type into the record: the own type replaces the whole
    // record, plain text and RTF only its text. On success the document belongs to
    // that file and is unmodified; on failure nothing changes. A plain-text file that
    // is not UTF-8, or RTF that cannot be read at all, stops the program.
    [[nodiscard]] Status readFromFile(const QString& path, const QString& typeName);
    // Writes the current record to the file as the type. Only once the file is
    // committed does the document belong to it, take its type and become unmodified;
    // on failure nothing changes and the file on disk is as it was.
    [[nodiscard]] Status saveToFile(const QString& path, const QString& typeName);
    // Writes the current record to a file without changing the document.
    [[nodiscard]] Status writeCopy(const QString& path, const QString& typeName) const;
    // Reads the document's file again and drops the changes; emits reverted() so
    // that the window can show the record read.
    [[nodiscard]] Status revertToSaved();
    // Takes the record from a copy of the own type that the recovery folder kept. The
    // document then belongs to the file it had (none for an untitled one), has that
    // type, and is modified and recovered.
    [[nodiscard]] Status readRecoveredCopy(const QString& copyPath, const QString& filePath,
                                           const QString& typeName);

Q_SIGNALS:
    void modifiedChanged(bool modified);
    void filePathChanged(const QString& path);
    void displayNameChanged(const QString& name);
    void recoveredChanged(bool recovered);
    // Emitted by every updateChangeCount().
    void changeDone();
    // The record was read again from the file; the editor's state is out of date.
    void reverted();

private:
    void takeRecord(const Content& record, const QString& typeName);
    void setFile(const QString& path, const QString& typeName);
    void setModified(bool modified);
    void setRecovered(bool recovered);

    Content m_content;
    QString m_filePath;
    QString m_fileType;
    QString m_untitledName;
    bool m_modified = false;
    bool m_recovered = false;
    std::function<Content()> m_recordSource;
};

} // namespace lomir
