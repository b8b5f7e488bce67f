#pragma once

#include <QString>
#include <QtGlobal>

namespace lomir {

// How many placeholder units the editor puts in the text for the quantity and first
// serial number fields: the digits of the quantity when the first number is empty, else
// the digits of first number plus quantity (one more than the last number printed, so 9
// labels from 1 reserve two digits, as printing does). A sum past 64 bits stops the
// program.
qint64 placeholderDigitCount(const QString& quantityText, const QString& serialStartText);

// The placeholder text the editor inserts for the fields: one unit per digit.
QString placeholderText(const QString& quantityText, const QString& serialStartText);

} // namespace lomir
