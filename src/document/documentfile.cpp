#include "document/documentfile.h"

#include "base/errors.h"
#include "document/documentformats.h"

#include <QCoreApplication>
#include <QFile>
#include <QSaveFile>

namespace lomir {

namespace {

struct DocumentFile
{
    Q_DECLARE_TR_FUNCTIONS(DocumentFile)
};

Error fileError(const QFileDevice& file, const QString& sentence)
{
    return Error{QString(kFileErrorDomain), int(file.error()),
                 sentence.arg(file.fileName(), file.errorString())};
}

} // namespace

Result<Content> readLabelFile(const QString& path, const QString& typeName)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fileError(file, DocumentFile::tr("Cannot open “%1”: %2."));
    const QByteArray data = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return fileError(file, DocumentFile::tr("Cannot read “%1”: %2."));
    Content record;
    const Status read = readFromData(data, typeName, record);
    if (!read)
        return Error{read.error().domain, read.error().code,
                     DocumentFile::tr("Cannot read “%1”: %2").arg(path, read.error().message)};
    return record;
}

Status writeLabelFile(const QString& path, const Content& record, const QString& typeName)
{
    const Result<QByteArray> data = dataOfType(record, typeName);
    if (!data)
        return Error{data.error().domain, data.error().code,
                     DocumentFile::tr("Cannot write “%1”: %2").arg(path, data.error().message)};
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fileError(file, DocumentFile::tr("Cannot write “%1”: %2."));
    if (file.write(*data) != data->size() || !file.commit())
        return fileError(file, DocumentFile::tr("Cannot write “%1”: %2."));
    return Done{};
}

} // namespace lomir
