#pragma once

#include "core/base/errors.h"
#include "core/base/result.h"
#include "core/document/richtext/richtext.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

namespace lomir {

// The two reasons a label text in a document can be unreadable.
inline constexpr QLatin1StringView kNotBase64Description{"String is not a base64 encoded string"};
inline constexpr QLatin1StringView kNotAttributedStringDescription{
    "Data is not NSAttributedString"};

// The label's rich text as the document stores it: one string, standard base64 of a
// keyed archive of the text. Holds a shared reference to the text; never copies it.
class AttributedString
{
public:
    explicit AttributedString(std::shared_ptr<const RichText> text);
    explicit AttributedString(RichText text);

    const RichText& nsAttributedString() const { return *m_text; }

    // Base64 of the archive, standard alphabet, padded, no line breaks.
    QString encode() const;
    // Strict base64 of an archive of an attributed string. Errors name the key the
    // string was read from.
    static Result<AttributedString> decode(const QString& base64, const QString& key);
    static Result<AttributedString> decode(QByteArrayView base64, const QString& key);

private:
    std::shared_ptr<const RichText> m_text;
};

// The record of one label design: its text and every editor setting a saved document
// restores. Numbers the user typed stay as typed; the editor parses them.
class Content
{
public:
    AttributedString labelText{RichText()};
    QString quantity = QStringLiteral("10");
    std::optional<QString> serialStartFrom = QStringLiteral("0");
    QString width = QStringLiteral("2.0");
    QString height = QStringLiteral("12");
    qint64 dimensions = 0;
    qint64 metric = 0;
    double magnification = 500.0;
    qint64 outputSpacing = 1;
    std::optional<double> frameWidth;
    std::optional<double> frameHeight;

    // The coding keys, in the record's order.
    static const QStringList& codingKeys();

    // One compact JSON object, keys in the record's order, absent optionals left out.
    // Fails only for a number JSON cannot hold (not finite).
    Result<QByteArray> encode() const;
    // Reads any valid JSON spelling of the object, keys in any order, unknown keys
    // ignored. Starts from the defaults; the first missing or wrong value fails.
    static Result<Content> decode(const QByteArray& json);
};

} // namespace lomir
