#include "core/printing/exportname.h"

#include <array>

namespace lomir {

QString pdfFileName(const QString& documentName)
{
    static const std::array<QString, 3> kLabelExtensions = {
        QStringLiteral(".lomir"), QStringLiteral(".txt"), QStringLiteral(".rtf")};
    QString base = documentName;
    for (const QString& extension : kLabelExtensions) {
        if (base.size() > extension.size() && base.endsWith(extension, Qt::CaseInsensitive)) {
            base.chop(extension.size());
            break;
        }
    }
    return base + QStringLiteral(".pdf");
}

} // namespace lomir
