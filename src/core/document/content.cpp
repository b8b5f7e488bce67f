#include "core/document/content.h"

#include "core/base/result.h"
#include "core/document/keyedarchive/keyedarchive.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

namespace lomir {

namespace {

using Json = nlohmann::json;

Error decodingError(int code, const QString& message)
{
    return Error{QString(kCocoaErrorDomain), code, message};
}

Error corruptValue(const QString& key, const QString& description)
{
    return decodingError(
        kDecodingCorrupt,
        QStringLiteral("The document’s “%1” value cannot be read: %2.").arg(key, description));
}

// Standard base64 only: the 64 letters, and "=" padding to a multiple of four.
// Anything else, line breaks and blanks included, makes the text unreadable.
bool isStrictBase64(QByteArrayView text)
{
    if (text.size() % 4 != 0)
        return false;
    qsizetype padding = 0;
    for (const char c : text) {
        const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                            (c >= '0' && c <= '9') || c == '+' || c == '/';
        if (c == '=') {
            ++padding;
        } else if (!letter || padding > 0) {
            return false;
        }
    }
    return padding <= 2;
}

// ---- writing ------------------------------------------------------------------------

// Writes JSON as the platform's encoder does by default: compact, members in the
// order given, "/" escaped, other characters as UTF-8, numbers in their shortest form.
class JsonWriter
{
public:
    void key(QLatin1StringView name)
    {
        m_out.append(m_first ? '{' : ',');
        m_first = false;
        string(QString(name));
        m_out.append(':');
    }

    void string(const QString& value)
    {
        m_out.append('"');
        for (const char c : value.toUtf8()) {
            switch (c) {
            case '"':
                m_out.append("\\\"");
                break;
            case '\\':
                m_out.append("\\\\");
                break;
            case '/':
                m_out.append("\\/");
                break;
            case '\b':
                m_out.append("\\b");
                break;
            case '\f':
                m_out.append("\\f");
                break;
            case '\n':
                m_out.append("\\n");
                break;
            case '\r':
                m_out.append("\\r");
                break;
            case '\t':
                m_out.append("\\t");
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20)
                    m_out.append(QByteArrayLiteral("\\u00") +
                                 QByteArray::number(static_cast<unsigned char>(c), 16)
                                     .rightJustified(2, '0'));
                else
                    m_out.append(c);
            }
        }
        m_out.append('"');
    }

    void integer(qint64 value) { m_out.append(QByteArray::number(value)); }

    void real(double value)
    {
        char buffer[32];
        const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
        m_out.append(buffer, result.ptr - buffer);
    }

    QByteArray finish()
    {
        m_out.append(m_first ? "{}" : "}");
        return m_out;
    }

private:
    QByteArray m_out;
    bool m_first = true;
};

// ---- reading ------------------------------------------------------------------------

QString describe(const Json& value)
{
    switch (value.type()) {
    case Json::value_t::null:
        return QStringLiteral("null");
    case Json::value_t::boolean:
        return QStringLiteral("a true-or-false value");
    case Json::value_t::string:
        return QStringLiteral("text");
    case Json::value_t::array:
        return QStringLiteral("a list");
    case Json::value_t::object:
        return QStringLiteral("an object");
    default:
        return QStringLiteral("a number");
    }
}

// Reads the members of one JSON object in the record's terms.
class RecordReader
{
public:
    explicit RecordReader(const Json& object) : m_object(object) {}

    // The value of a key that must be there and not null.
    Result<const Json*> required(QLatin1StringView key, const QString& wanted) const
    {
        const auto it = m_object.find(std::string(key.data(), std::size_t(key.size())));
        if (it == m_object.end())
            return decodingError(
                kDecodingValueNotFound,
                QStringLiteral("The document has no “%1” value; it may be damaged or "
                               "come from another program.")
                    .arg(key));
        if (it->is_null())
            return decodingError(
                kDecodingValueNotFound,
                QStringLiteral("The document’s “%1” value is null, but it should be %2.")
                    .arg(key, wanted));
        return &*it;
    }

    // The value of a key that may be missing or null.
    const Json* optional(QLatin1StringView key) const
    {
        const auto it = m_object.find(std::string(key.data(), std::size_t(key.size())));
        return it == m_object.end() || it->is_null() ? nullptr : &*it;
    }

    static Error mismatch(QLatin1StringView key, const QString& wanted, const Json& found)
    {
        return decodingError(kDecodingCorrupt,
                             QStringLiteral("The document’s “%1” value should be %2, but it is %3.")
                                 .arg(key, wanted, describe(found)));
    }

    static Result<QString> toString(QLatin1StringView key, const Json& value)
    {
        if (!value.is_string())
            return mismatch(key, QStringLiteral("text"), value);
        return QString::fromStdString(value.get<std::string>());
    }

    static Result<qint64> toInteger(QLatin1StringView key, const Json& value)
    {
        if (value.is_number_integer() && !value.is_number_unsigned())
            return value.get<qint64>();
        if (value.is_number_unsigned()) {
            const auto number = value.get<std::uint64_t>();
            if (number <= std::uint64_t(std::numeric_limits<qint64>::max()))
                return qint64(number);
        } else if (value.is_number_float()) {
            // A whole number written as 1.0 or 1e2 is still a whole number.
            const double number = value.get<double>();
            if (std::trunc(number) == number && number >= -9223372036854775808.0 &&
                number < 9223372036854775808.0)
                return qint64(number);
        } else {
            return mismatch(key, QStringLiteral("a whole number"), value);
        }
        return corruptValue(QString(key), QStringLiteral("the number %1 does not fit in a "
                                                         "64-bit whole number")
                                              .arg(QString::fromStdString(value.dump())));
    }

    static Result<double> toReal(QLatin1StringView key, const Json& value)
    {
        if (!value.is_number())
            return mismatch(key, QStringLiteral("a number"), value);
        return value.get<double>();
    }

    Result<QString> requiredString(QLatin1StringView key) const
    {
        const auto value = required(key, QStringLiteral("text"));
        LOMIR_RETURN_IF_ERROR(value);
        return toString(key, **value);
    }

    Result<qint64> requiredInteger(QLatin1StringView key) const
    {
        const auto value = required(key, QStringLiteral("a whole number"));
        LOMIR_RETURN_IF_ERROR(value);
        return toInteger(key, **value);
    }

    Result<double> requiredReal(QLatin1StringView key) const
    {
        const auto value = required(key, QStringLiteral("a number"));
        LOMIR_RETURN_IF_ERROR(value);
        return toReal(key, **value);
    }

private:
    const Json& m_object;
};

constexpr QLatin1StringView kLabelTextKey{"labelText"};
constexpr QLatin1StringView kQuantityKey{"quantity"};
constexpr QLatin1StringView kSerialStartFromKey{"serialStartFrom"};
constexpr QLatin1StringView kWidthKey{"width"};
constexpr QLatin1StringView kHeightKey{"height"};
constexpr QLatin1StringView kDimensionsKey{"dimensions"};
constexpr QLatin1StringView kMetricKey{"metric"};
constexpr QLatin1StringView kMagnificationKey{"magnification"};
constexpr QLatin1StringView kOutputSpacingKey{"outputSpacing"};
constexpr QLatin1StringView kFrameWidthKey{"frameWidth"};
constexpr QLatin1StringView kFrameHeightKey{"frameHeight"};

} // namespace

AttributedString::AttributedString(std::shared_ptr<const RichText> text) : m_text(std::move(text))
{
    Q_ASSERT(m_text);
}

AttributedString::AttributedString(RichText text)
    : m_text(std::make_shared<const RichText>(std::move(text)))
{
}

QString AttributedString::encode() const
{
    return QString::fromLatin1(archiveRichText(*m_text).toBase64());
}

Result<AttributedString> AttributedString::decode(const QString& base64, const QString& key)
{
    // A character outside Latin-1 becomes "?", which is not base64 either.
    return decode(QByteArrayView(base64.toLatin1()), key);
}

Result<AttributedString> AttributedString::decode(QByteArrayView base64, const QString& key)
{
    if (!isStrictBase64(base64))
        return corruptValue(key, QString(kNotBase64Description));
    const QByteArray archive =
        QByteArray::fromBase64(QByteArray::fromRawData(base64.data(), base64.size()));
    Result<RichText> text = unarchiveRichText(archive);
    if (!text) {
        if (text.error().code == kArchiveRootNotAttributedString)
            return corruptValue(key, QString(kNotAttributedStringDescription));
        return text.error();
    }
    return AttributedString(std::move(text).value());
}

const QStringList& Content::codingKeys()
{
    static const QStringList keys{
        QString(kLabelTextKey),  QString(kQuantityKey),      QString(kSerialStartFromKey),
        QString(kWidthKey),      QString(kHeightKey),        QString(kDimensionsKey),
        QString(kMetricKey),     QString(kMagnificationKey), QString(kOutputSpacingKey),
        QString(kFrameWidthKey), QString(kFrameHeightKey)};
    return keys;
}

Result<QByteArray> Content::encode() const
{
    // JSON has no spelling for these; the platform's encoder refuses them too.
    for (const auto& [key, value] :
         {std::pair{kMagnificationKey, std::optional(magnification)},
          std::pair{kFrameWidthKey, frameWidth}, std::pair{kFrameHeightKey, frameHeight}}) {
        if (value && !std::isfinite(*value))
            return Error{QString(kCocoaErrorDomain), kDecodingCorrupt,
                         QStringLiteral("The “%1” value %2 cannot be saved: JSON has no "
                                        "way to write a number that is not finite.")
                             .arg(key)
                             .arg(*value)};
    }

    JsonWriter writer;
    writer.key(kLabelTextKey);
    writer.string(labelText.encode());
    writer.key(kQuantityKey);
    writer.string(quantity);
    if (serialStartFrom) {
        writer.key(kSerialStartFromKey);
        writer.string(*serialStartFrom);
    }
    writer.key(kWidthKey);
    writer.string(width);
    writer.key(kHeightKey);
    writer.string(height);
    writer.key(kDimensionsKey);
    writer.integer(dimensions);
    writer.key(kMetricKey);
    writer.integer(metric);
    writer.key(kMagnificationKey);
    writer.real(magnification);
    writer.key(kOutputSpacingKey);
    writer.integer(outputSpacing);
    if (frameWidth) {
        writer.key(kFrameWidthKey);
        writer.real(*frameWidth);
    }
    if (frameHeight) {
        writer.key(kFrameHeightKey);
        writer.real(*frameHeight);
    }
    return writer.finish();
}

Result<Content> Content::decode(const QByteArray& json)
{
    // Only the record's own members are kept; what is nested in a member (no member of
    // the record holds anything) and the items of a list are read but not stored, so
    // that no document takes much more memory than its text.
    bool rootIsList = false;
    const auto keep = [&rootIsList](int depth, Json::parse_event_t event, const Json& parsed) {
        if (depth == 0) {
            rootIsList = rootIsList || event == Json::parse_event_t::array_start;
            return true;
        }
        if (depth > 1 || rootIsList)
            return false;
        return event != Json::parse_event_t::key ||
               codingKeys().contains(QString::fromStdString(parsed.get<std::string>()));
    };
    const Json document = Json::parse(json.begin(), json.end(), keep, false);
    if (document.is_discarded())
        return decodingError(kDecodingCorrupt,
                             QStringLiteral("The document is not valid JSON; it may be damaged "
                                            "or not a Lomir document."));
    if (!document.is_object())
        return decodingError(kDecodingCorrupt,
                             QStringLiteral("The document should hold one JSON object, but it "
                                            "holds %1.")
                                 .arg(describe(document)));

    const RecordReader reader(document);
    Content content;

    // By far the largest value: decoded where the parser left it, not copied first.
    const Result<const Json*> labelText = reader.required(kLabelTextKey, QStringLiteral("text"));
    LOMIR_RETURN_IF_ERROR(labelText);
    if (!(*labelText)->is_string())
        return RecordReader::mismatch(kLabelTextKey, QStringLiteral("text"), **labelText);
    const std::string& base64 = (*labelText)->get_ref<const std::string&>();
    Result<AttributedString> text = AttributedString::decode(
        QByteArrayView(base64.data(), qsizetype(base64.size())), QString(kLabelTextKey));
    LOMIR_RETURN_IF_ERROR(text);
    content.labelText = std::move(text).value();

    const Result<QString> quantity = reader.requiredString(kQuantityKey);
    LOMIR_RETURN_IF_ERROR(quantity);
    content.quantity = *quantity;

    content.serialStartFrom.reset();
    if (const Json* serial = reader.optional(kSerialStartFromKey)) {
        const Result<QString> value = RecordReader::toString(kSerialStartFromKey, *serial);
        LOMIR_RETURN_IF_ERROR(value);
        content.serialStartFrom = *value;
    }

    for (const auto& [key, field] :
         {std::pair{kWidthKey, &content.width}, std::pair{kHeightKey, &content.height}}) {
        const Result<QString> value = reader.requiredString(key);
        LOMIR_RETURN_IF_ERROR(value);
        *field = *value;
    }
    for (const auto& [key, field] :
         {std::pair{kDimensionsKey, &content.dimensions}, std::pair{kMetricKey, &content.metric}}) {
        const Result<qint64> value = reader.requiredInteger(key);
        LOMIR_RETURN_IF_ERROR(value);
        *field = *value;
    }

    const Result<double> magnification = reader.requiredReal(kMagnificationKey);
    LOMIR_RETURN_IF_ERROR(magnification);
    content.magnification = *magnification;

    const Result<qint64> outputSpacing = reader.requiredInteger(kOutputSpacingKey);
    LOMIR_RETURN_IF_ERROR(outputSpacing);
    content.outputSpacing = *outputSpacing;

    for (const auto& [key, field] : {std::pair{kFrameWidthKey, &content.frameWidth},
                                     std::pair{kFrameHeightKey, &content.frameHeight}}) {
        if (const Json* frame = reader.optional(key)) {
            const Result<double> value = RecordReader::toReal(key, *frame);
            LOMIR_RETURN_IF_ERROR(value);
            *field = *value;
        }
    }
    return content;
}

} // namespace lomir
