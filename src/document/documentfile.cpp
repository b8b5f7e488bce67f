#include "document/documentfile.h"

#include "document/documentformats.h"

#include <QFile>
#include <QSaveFile>

namespace lomir {

Result<Content> readLabelFile(const QString& path, const QString& typeName)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Error{QStringLiteral("LomirFileErrorDomain"), int(file.error()),
                     QStringLiteral("Cannot open “%1”: %2.").arg(path, file.errorString())};
    Content record;
    const Status read = readFromData(file.readAll(), typeName, record);
    if (!read)
        return Error{read.error().domain, read.error().code,
                     QStringLiteral("Cannot read “%1”: %2").arg(path, read.error().message)};
    return record;
}

Status writeLabelFile(const QString& path, const Content& record, const QString& typeName)
{
    const Result<QByteArray> data = dataOfType(record, typeName);
    if (!data)
        return Error{data.error().domain, data.error().code,
                     QStringLiteral("Cannot write “%1”: %2").arg(path, data.error().message)};
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(*data) != data->size() || !file.commit())
        return Error{QStringLiteral("LomirFileErrorDomain"), int(file.error()),
                     QStringLiteral("Cannot write “%1”: %2.").arg(path, file.errorString())};
    return Done{};
}

} // namespace lomir
