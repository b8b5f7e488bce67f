#include "core/document/documentformats.h"

#include "core/base/documentlimits.h"
#include "core/base/result.h"
#include "core/document/rtf/rtf.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLocale>
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

// A label text no longer than the longest, or the sentence that says it is too long.
Status checkTextLength(qsizetype length)
{
    if (length <= kMaxLabelTextLength)
        return Done{};
    return Error{QString(kFileErrorDomain), kLabelTextTooLong,
                 DocumentFormats::tr("The label’s text has %1 characters, more than the %2 a label "
                                     "can hold.")
                     .arg(QLocale().toString(length), QLocale().toString(kMaxLabelTextLength))};
}

Result<QByteArray> bytesOfType(const RichText& text, const Content& record, const QString& typeName)
{
    if (typeName == kPlainTextType)
        return text.string().toUtf8();
    if (typeName == kRtfType)
        return writeRtf(text);
    return record.encode();
}

} // namespace

Result<QByteArray> dataOfType(const Content& record, const QString& typeName)
{
    if (typeName != kPlainTextType && typeName != kRtfType && typeName != kLomirDocumentType)
        return unsupportedType(typeName);
    const RichText& text = record.labelText.nsAttributedString();
    LOMIR_RETURN_IF_ERROR(checkTextLength(text.length()));
    Result<QByteArray> data = bytesOfType(text, record, typeName);
    // Lomir never writes a file it would refuse to open.
    if (data && data->size() > kMaxDocumentFileSize)
        return Error{QString(kFileErrorDomain), kFileTooLarge,
                     DocumentFormats::tr("The document would take more than %1, the largest file "
                                         "Lomir opens.")
                         .arg(largestFileText())};
    return data;
}

Status readFromData(const QByteArray& data, const QString& typeName, Content& record)
{
    if (typeName == kPlainTextType) {
        Result<QString> text = decodeUtf8(data);
        LOMIR_RETURN_IF_ERROR(text);
        if (const Status fits = checkTextLength(text->size()); !fits)
            return fits;
        record.labelText = AttributedString(RichText(std::move(text).value()));
        return Done{};
    }
    if (typeName == kRtfType) {
        Result<RichText> text = readRtf(data);
        if (!text)
            return Error{QString(kUnreadableTextDomain), kRtfUnreadable, text.error().message};
        if (const Status fits = checkTextLength(text->length()); !fits)
            return fits;
        record.labelText = AttributedString(std::move(text).value());
        return Done{};
    }
    if (typeName == kLomirDocumentType) {
        Result<Content> content = Content::decode(data);
        LOMIR_RETURN_IF_ERROR(content);
        if (const Status fits = checkTextLength(content->labelText.nsAttributedString().length());
            !fits)
            return fits;
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
