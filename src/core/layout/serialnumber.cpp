#include "core/layout/serialnumber.h"

#include "core/base/fatal.h"
#include "core/layout/measurement.h"

#include <QStringView>
#include <QTextBoundaryFinder>
#include <algorithm>

namespace lomir {

namespace {

QStringView placeholderUnit()
{
    return QStringView(kSerialPlaceholderUnit, kSerialPlaceholderUnitLength);
}

} // namespace

std::optional<SerialRun> findSerialRun(const QString& text)
{
    // Walk user-perceived characters: the joiner clings to its "#", so a unit is one
    // character and is never split, and a "#" that carries more marks is not a unit.
    QTextBoundaryFinder graphemes(QTextBoundaryFinder::Grapheme, text);
    qsizetype runStart = -1;
    qsizetype runEnd = -1;
    qint64 units = 0;
    qsizetype start = 0;
    for (qsizetype end = graphemes.toNextBoundary(); end >= 0;
         start = end, end = graphemes.toNextBoundary()) {
        const bool isUnit = QStringView(text).sliced(start, end - start) == placeholderUnit();
        if (runStart < 0) {
            if (!isUnit)
                continue;
            runStart = start;
        } else if (!isUnit) {
            break;
        }
        runEnd = end;
        ++units;
    }
    if (runStart < 0)
        return std::nullopt;
    return SerialRun{TextRange{int(runStart), int(runEnd - runStart)}, units};
}

std::optional<TextRange> locateSerialRun(const QString& text, qint64 expectedUnits)
{
    const std::optional<SerialRun> run = findSerialRun(text);
    if (!run || run->units != expectedUnits)
        return std::nullopt;
    return run->range;
}

QString serialPlaceholder(qint64 units)
{
    QString placeholder;
    placeholder.reserve(qsizetype(std::max<qint64>(units, 0)) * kSerialPlaceholderUnitLength);
    for (qint64 unit = 0; unit < units; ++unit)
        placeholder += placeholderUnit();
    return placeholder;
}

qint64 serialDigitCount(qint64 quantity, qint64 serialStartFrom)
{
    // The sum is one more than the last number printed; counting its digits is what the
    // editor does when it sizes the placeholder, so both agree.
    return numberOfDigits(checkedAdd(quantity, serialStartFrom));
}

QString serialText(qint64 copyIndex, qint64 serialStartFrom, qint64 serialDigitCount)
{
    // printf's "%0Nd": zero padding after the sign up to N characters in all, the sign
    // counted among them; a number that needs more characters keeps them all.
    const qint64 number = checkedAdd(serialStartFrom, copyIndex);
    const bool negative = number < 0;
    const quint64 magnitude = negative ? 0 - quint64(number) : quint64(number);
    const QString digits = QString::number(magnitude);
    const qint64 padding = serialDigitCount - (negative ? 1 : 0) - digits.size();
    QString result;
    if (negative)
        result += QLatin1Char('-');
    if (padding > 0)
        result += QString(qsizetype(padding), QLatin1Char('0'));
    result += digits;
    return result;
}

RichText numberedText(const RichText& text, TextRange serialRange, const QString& serial)
{
    const int location = serialRange.location;
    const int length = serialRange.length;
    if (location < 0 || length < 0 || location > text.length() - length)
        fatalError("The serial placeholder range lies outside the label text");

    RichText numbered = text;
    numbered.replace(location, length, serial);

    // Each unit is two UTF-16 units but becomes one digit, so every formatting run of the
    // placeholder lands at half its offset and half its length: a bold unit gives a bold
    // digit. Digits past the placeholder's end keep the attributes the replacement gave.
    const int serialEnd = location + int(serial.size());
    text.forEachRun(location, length, [&](const TextAttributes& attributes, int from, int count) {
        const int target = location + (from - location) / 2;
        const int targetEnd = std::min(target + count / 2, serialEnd);
        if (targetEnd > target)
            numbered.setAttributes(target, targetEnd - target, attributes);
    });
    return numbered;
}

} // namespace lomir
