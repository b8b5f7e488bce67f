#include "core/label/numberinput.h"

#include <QLocale>
#include <QStringList>
#include <cmath>

namespace lomir {

namespace {

constexpr QChar kDecimalPoint = u'.';

bool isAsciiDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

// Digits and points only; of several points only the last one typed stays, the pieces
// before it joined ("1.2.3" becomes "12.3").
QString filterDecimal(const QString& text)
{
    QString kept;
    for (QChar character : text) {
        if (isAsciiDigit(character) || character == kDecimalPoint)
            kept += character;
    }
    if (kept.count(kDecimalPoint) < 2)
        return kept;
    QStringList pieces = kept.split(kDecimalPoint);
    const QString last = pieces.takeLast();
    return pieces.join(QString()) + kDecimalPoint + last;
}

// Digits only, and a lone zero is refused: no field counts from zero copies, and a
// leading zero typed first would only have to be deleted again.
QString filterWhole(const QString& text)
{
    QString kept;
    for (QChar character : text) {
        if (isAsciiDigit(character))
            kept += character;
    }
    if (kept == QStringLiteral("0"))
        return QString();
    return kept;
}

} // namespace

FilteredInput filterNumberInput(qint64 tag, const QString& text, int caretBefore)
{
    FilteredInput result{text, std::nullopt};
    if (tag == kDecimalInputTag)
        result.text = filterDecimal(text);
    else if (tag == kWholeNumberInputTag)
        result.text = filterWhole(text);
    // The refused character was just before the caret. Deleting the "1" of "10" leaves a
    // lone zero that is refused with the caret at 0; it stays there.
    if (result.text != text && result.text.size() >= caretBefore)
        result.caretPosition = std::max(0, caretBefore - 1);
    return result;
}

QString finishedNumberInput(qint64 tag, const QString& text)
{
    QString finished = text;
    if (finished.isEmpty())
        finished = QStringLiteral("1");
    else if (finished == QStringLiteral("."))
        finished = QStringLiteral("0.0");
    if (tag == kDecimalInputTag && finished.contains(kDecimalPoint)) {
        // Text that does not read as a number is left as it is; converting it to points
        // refuses it.
        if (const std::optional<double> value = parseDecimalInput(finished))
            finished = QString::asprintf("%.2f", *value);
    }
    return finished;
}

std::optional<double> parseDecimalInput(const QString& text)
{
    QLocale c = QLocale::c();
    c.setNumberOptions(QLocale::RejectGroupSeparator);
    bool ok = false;
    const double value = c.toDouble(text, &ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<qint64> parseWholeNumber(const QString& text)
{
    qsizetype digitsFrom = 0;
    if (text.startsWith(u'+') || text.startsWith(u'-'))
        digitsFrom = 1;
    if (digitsFrom == text.size())
        return std::nullopt;
    for (qsizetype i = digitsFrom; i < text.size(); ++i) {
        if (!isAsciiDigit(text.at(i)))
            return std::nullopt;
    }
    // The characters are checked above; toLongLong only tells whether the value fits.
    bool fits = false;
    const qint64 value = QStringView(text).sliced(text.startsWith(u'+') ? 1 : 0).toLongLong(&fits);
    if (!fits)
        return std::nullopt;
    return value;
}

qint64 quantityFromText(const QString& text)
{
    return parseWholeNumber(text).value_or(1);
}

qint64 serialStartFromText(const QString& text)
{
    return parseWholeNumber(text).value_or(0);
}

} // namespace lomir
