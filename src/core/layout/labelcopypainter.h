#pragma once

#include "core/document/richtext/richtext.h"
#include "core/layout/serialnumber.h"

#include <QRectF>
#include <QSizeF>
#include <QtGlobal>
#include <memory>
#include <optional>
#include <span>

class QPainter;

namespace lomir {

class LabelTextLayout;

// How the copies of a label are numbered: the placeholder run in the text, the number
// of the first copy and the digits every number gets.
struct SerialNumbering
{
    TextRange range;
    qint64 serialStartFrom = 0;
    qint64 serialDigitCount = 1;
    bool operator==(const SerialNumbering&) const = default;
};

// One copy to draw: the rectangle its text goes into and its index in printing order.
struct LabelCopy
{
    QRectF rect;
    qint64 index = 0;
    bool operator==(const LabelCopy&) const = default;
};

// Draws numbered copies of one label quickly, with the same result as numbering, laying
// out and drawing each copy on its own.
//
// Printing draws one text tens of thousands of times with only the serial digits
// changing. So the text is laid out once and kept as runs of positioned glyphs; each
// copy reuses them and swaps in the glyphs of its own digits, and the copies of a page
// are drawn together, one glyph run per font and colour of the label.
//
// Swapping glyphs is exact only when a digit's value does not move any glyph. Digits of
// most fonts are equally wide, but kerning can still pull some pairs together (in Arial,
// "11"), and a font may have proportional digits that change line widths and wrapping.
// The constructor finds out by laying the label out with probe numbers that put every
// digit in every place and every pair of digits side by side, and groups the digits that
// never move anything. A copy is then drawn from the layout of its number with each digit
// replaced by its group's first digit, laid out once and kept (for Arial: one layout for
// each pattern of ones). Text with underlines, strikethroughs or backgrounds, which glyph
// runs do not draw, and numbers that are not the planned digits (negative ones) are laid
// out and drawn copy by copy.
class LabelCopyPainter
{
public:
    // textSize is the rectangle every copy's text is wrapped at and clipped to, in points.
    LabelCopyPainter(const RichText& text, std::optional<SerialNumbering> numbering,
                     const QSizeF& textSize);
    ~LabelCopyPainter();

    LabelCopyPainter(const LabelCopyPainter&) = delete;
    LabelCopyPainter& operator=(const LabelCopyPainter&) = delete;

    // Draws each copy into its rectangle. The rectangles have the size given at
    // construction and do not overlap.
    void drawCopies(QPainter& painter, std::span<const LabelCopy> copies) const;

    // The text one copy shows: the label with its placeholder run replaced by the copy's
    // serial number, or the label as it is when it is not numbered.
    RichText copyText(qint64 copyIndex) const;

    // True when copies are drawn from shared layouts (the fast way).
    bool drawsFromSharedLayout() const { return m_glyphs != nullptr; }
    // How many groups of interchangeable digits the font has (10 when every digit needs
    // its own layout; 0 when the label is not numbered or not drawn from shared layouts).
    int digitGroupCount() const;
    // True when the copies' text reaches outside their rectangle and has to be clipped.
    bool clipsCopies() const;

private:
    struct SharedGlyphs;
    struct PositionedLabel;
    struct PlacedCopy;

    // Lays the numbered label out with probe numbers; false when copies cannot be drawn
    // from shared layouts.
    bool probeNumberedLabel(SharedGlyphs& glyphs) const;
    void drawStraightforward(QPainter& painter, const LabelCopy& copy) const;
    void drawFromGlyphs(QPainter& painter, std::span<const LabelCopy> copies) const;
    // The copies that can be drawn from shared glyphs, each with its positioned label and
    // its serial digits appended to digits; the others are drawn straightforwardly here.
    std::vector<PlacedCopy> placeCopies(QPainter& painter, std::span<const LabelCopy> copies,
                                        std::vector<quint8>& digits) const;
    // The digit values of the copy's serial number, or false when the number is not made
    // of exactly the planned number of digits (a negative number, say).
    bool serialDigits(qint64 copyIndex, quint8* digits) const;
    // The positioned glyphs for a number whose digits are in their groups' first digits.
    std::shared_ptr<const PositionedLabel> positionedLabel(const quint8* groupDigits) const;

    RichText m_text;
    std::optional<SerialNumbering> m_numbering;
    QSizeF m_textSize;
    std::unique_ptr<SharedGlyphs> m_glyphs;
    // The laid-out label for unnumbered copies that cannot be drawn from glyph runs.
    std::unique_ptr<LabelTextLayout> m_unnumberedLayout;
};

} // namespace lomir
