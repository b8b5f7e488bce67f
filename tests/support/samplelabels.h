#pragma once

// The sample labels tests print, measure and save: one definition each, so that every test
// means the same label by the same name.

#include "core/document/richtext/richtext.h"

#include <QString>

namespace lomir::testing {

// Arial at a size, with the PostScript name the label's archive gives it, so that a text
// set in it comes back equal from a document or the clipboard.
inline TextAttributes arial(double size, bool bold = false)
{
    TextAttributes attributes;
    attributes.font = FontSpec{QStringLiteral("Arial"),
                               bold ? QStringLiteral("Arial-BoldMT") : QStringLiteral("ArialMT"),
                               size, bold, false};
    return attributes;
}

// n units of the serial placeholder: "#" and a zero-width joiner each.
inline QString placeholderUnits(int n)
{
    return QStringLiteral("#\u200D").repeated(n);
}

// "No. " and a run of n placeholder units in Arial 12: the numbered label of the print tests.
inline RichText numberedLabel(int n)
{
    return RichText(QStringLiteral("No. ") + placeholderUnits(n), arial(12.0));
}

// "Plum jam" in bold blue Helvetica 14, centered, and a serial run in underlined Courier 9
// on yellow: every attribute a run table stores.
inline RichText styledPlumLabel()
{
    TextAttributes title;
    title.font =
        FontSpec{QStringLiteral("Helvetica"), QStringLiteral("Helvetica-Bold"), 14.0, true, false};
    title.foreground = Rgba{10, 120, 200, 255};
    ParagraphStyle centered;
    centered.alignment = TextAlignment::Center;
    title.paragraph = centered;
    TextAttributes serial;
    serial.font = FontSpec{QStringLiteral("Courier"), QStringLiteral("Courier"), 9.0, false, false};
    serial.background = Rgba{255, 255, 0, 255};
    serial.underline = LineStyle::Single;
    RichText text(QStringLiteral("Plum jam\n"), title);
    text.append(QStringLiteral("No. #\u200D#\u200D"), serial);
    return text;
}

// "Apricot" in bold red Helvetica 18 and an underlined italic Times line with a euro sign.
inline RichText styledApricotLabel()
{
    TextAttributes title;
    title.font =
        FontSpec{QStringLiteral("Helvetica"), QStringLiteral("Helvetica-Bold"), 18.0, true, false};
    title.foreground = Rgba{200, 0, 0, 255};
    TextAttributes body;
    body.font = FontSpec{QStringLiteral("Times New Roman"),
                         QStringLiteral("TimesNewRomanPS-ItalicMT"), 10.0, false, true};
    body.underline = LineStyle::Single;
    RichText text(QStringLiteral("Apricot\n"), title);
    text.append(QStringLiteral("best before 2027 €"), body);
    return text;
}

// "Fig" and a honey pot in centered bold red Helvetica 12, and a two-unit serial run in
// the default attributes.
inline RichText figLabel()
{
    TextAttributes bold;
    bold.font =
        FontSpec{QStringLiteral("Helvetica"), QStringLiteral("Helvetica-Bold"), 12.0, true, false};
    bold.foreground = Rgba{255, 0, 0, 255};
    ParagraphStyle centered;
    centered.alignment = TextAlignment::Center;
    bold.paragraph = centered;
    RichText text(QStringLiteral("Fig 🍯 "), bold);
    text.append(QStringLiteral("#\u200D#\u200D"), TextAttributes{});
    return text;
}

// The text in bold Helvetica 14.
inline RichText boldHelveticaLabel(const QString& text)
{
    TextAttributes bold;
    bold.font =
        FontSpec{QStringLiteral("Helvetica"), QStringLiteral("Helvetica-Bold"), 14.0, true, false};
    return RichText(text, bold);
}

} // namespace lomir::testing
