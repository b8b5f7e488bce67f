#include "core/label/serialplaceholder.h"

#include "core/label/numberinput.h"
#include "core/layout/measurement.h"
#include "core/layout/serialnumber.h"

namespace lomir {

qint64 placeholderDigitCount(const QString& quantityText, const QString& serialStartText)
{
    const qint64 quantity = quantityFromText(quantityText);
    if (serialStartText.isEmpty())
        return numberOfDigits(quantity);
    return serialDigitCount(quantity, serialStartFromText(serialStartText));
}

QString placeholderText(const QString& quantityText, const QString& serialStartText)
{
    return serialPlaceholder(placeholderDigitCount(quantityText, serialStartText));
}

} // namespace lomir
