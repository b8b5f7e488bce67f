#include "document/documentformats.h"

#include "document/rtf.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStringDecoder>

namespace lomir {

namespace {

struct DocumentFormats
{
    Q_DECLARE_TR_FUNCTIONS(DocumentFormats)
};

Error unsupportedType(const QString& typeName)
{
    return Error{QString(kOSStatusErrorDomain), kUnsupportedTypeError,
                 DocumentFormats::tr("Lomir cannot read or write documents of the type “%1”.")
                     .arg(typeName)};
}

Result<QString> decodeUtf8(const QByteArray& data)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(data);
    if (decoder.hasError())
        return Error{QString(kUnreadableTextDomain), kPlainTextNotUtf8,
                     DocumentFormats::tr("The file is not UTF-8 text.")};
    return text;
}

} // namespace

Result<QByteArray> dataOfType(const Content& record, const QString& typeName)
{
    const RichText& text = record.labelText.nsAttributedString();
    if (typeName == kPlainTextType)
        return text.string().toUtf8();
    if (typeName == kRtfType)
        return writeRtf(text);
    if (typeName == kLomirDocumentType)
        return record.encode();
    return unsupportedType(typeName);
}

Status readFromData(const QByteArray& data, const QString& typeName, Content& record)
{
    if (typeName == kPlainTextType) {
        Result<QString> text = decodeUtf8(data);
        if (!text)
            return text.error();
        record.labelText = AttributedString(RichText(std::move(text).value()));
        return Done{};
    }
    if (typeName == kRtfType) {
        Result<RichText> text = readRtf(data);
        if (!text)
            return Error{QString(kUnreadableTextDomain), kRtfUnreadable, text.error().message};
        record.labelText = AttributedString(std::move(text).value());
        return Done{};
    }
    if (typeName == kLomirDocumentType) {
        Result<Content> content = Content::decode(data);
        if (!content)
            return content.error();
        record = std::move(content).value();
        return Done{};
    }
    return unsupportedType(typeName);
}

QString typeForFileName(const QString& fileName)
{
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    if (suffix == u"lomir")
        return QString(kLomirDocumentType);
    if (suffix == u"txt" || suffix == u"text")
        return QString(kPlainTextType);
    if (suffix == u"rtf")
        return QString(kRtfType);
    return {};
}

} // namespace lomir
