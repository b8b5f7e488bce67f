#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>

namespace lomir {

// The editor's number fields are told apart by tag: the custom width and height take
// decimal numbers, the quantity and the first serial number whole numbers.
inline constexpr qint64 kDecimalInputTag = 1;
inline constexpr qint64 kWholeNumberInputTag = 2;

// A number field after the input filter ran over one keystroke.
struct FilteredInput
{
    QString text;
    // Where the caret goes, or nothing to leave it where setting the text puts it.
    std::optional<int> caretPosition;

    bool operator==(const FilteredInput&) const = default;
};

// Filters a number field's text after each keystroke, so that it only ever holds what
// its tag allows: digits and at most one "." (the last one typed) in a decimal field,
// digits without a lone "0" in a whole-number field; other fields are left alone. When
// something was refused, the caret goes back one place from caretBefore (where the
// keystroke left it), so it stays where the refused character was typed.
FilteredInput filterNumberInput(qint64 tag, const QString& text, int caretBefore);

// A number field's text when editing ends: an empty field becomes "1" and a lone "."
// "0.0", and a decimal field with a fraction is written with two decimals ("2.5" becomes
// "2.50", "3" stays "3"), so that the field always holds a readable number.
QString finishedNumberInput(qint64 tag, const QString& text);

// A decimal number as the custom size fields hold it: digits with "." as the decimal
// separator in every locale. Nothing when the text is not a finite number.
std::optional<double> parseDecimalInput(const QString& text);

// A whole number as the quantity and serial fields hold it: an optional "+" or "-" and
// decimal digits only, within 64 bits. Nothing otherwise.
std::optional<qint64> parseWholeNumber(const QString& text);

// The quantity field's value; an empty or unreadable field counts as one label.
qint64 quantityFromText(const QString& text);

// The first serial number field's value; an unreadable field counts as 0.
qint64 serialStartFromText(const QString& text);

} // namespace lomir
