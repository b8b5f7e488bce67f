#pragma once

#include "core/document/richtext/richtext.h"

#include <QFont>
#include <QTextBlockFormat>
#include <QTextCharFormat>

class QTextDocument;

namespace lomir {

// The Qt font for a face at its exact point size.
QFont toQFont(const FontSpec& font);
// The font of a run that names none: Helvetica 12, the font such runs have in the
// files Lomir reads. Measuring, printing and editing all use it.
FontSpec defaultFont();

// Character and block formats for drawing and editing with Qt's text engine. The
// formats also carry the values Qt has no field for (PostScript name, double
// underline, absent colours), so that converting back loses nothing.
QTextCharFormat toCharFormat(const TextAttributes& attributes);
QTextBlockFormat toBlockFormat(const std::optional<ParagraphStyle>& paragraph);
TextAttributes fromFormats(const QTextCharFormat& format, const QTextBlockFormat& block);

// Replaces the document's content with the rich text. Line feeds become paragraph
// breaks; each paragraph takes the paragraph style of its first character.
void setRichText(QTextDocument& document, const RichText& text);
// The document's content as rich text; paragraph breaks become line feeds.
RichText richTextFromDocument(const QTextDocument& document);

} // namespace lomir
