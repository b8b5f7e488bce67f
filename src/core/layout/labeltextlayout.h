#pragma once

#include "core/document/richtext/richtext.h"

#include <QRectF>
#include <QSizeF>
#include <QTextDocument>
#include <memory>
#include <optional>

class QPaintDevice;
class QPainter;

namespace lomir {

// A paint device that is never painted on: it only tells Qt's text engine the resolution
// to resolve fonts and lay text out at.
std::unique_ptr<QPaintDevice> makeLayoutDevice(int dpi);

// Sets a document up to lay label text out on the layout device as printing does: no
// document margin, design metrics, unhinted fonts (Helvetica 12 for runs without a font),
// wrapping at word boundaries or anywhere, and the default tab stops. The editor and
// LabelTextLayout share it, so that both break lines at the same places.
void prepareLabelDocument(QTextDocument& document, QPaintDevice* layoutDevice);

// Block formats carry their lengths (indents, paragraph spacing, line heights) in points;
// this converts them to the units the document's layout takes them in.
void convertBlockLengthsToLayoutUnits(QTextDocument& document, double unitsPerPoint);

// The label's rich text laid out at an exact-point resolution, wrapped at a width in
// points (or not wrapped at all). Fonts are resolved at 100 layout units per point
// (7200 dpi) and unhinted, so glyph advances and line breaks follow the fonts' outlines
// in exact points, as the text measurement functions measure them, instead of whole
// pixels of a screen or printer. Type over 100 points is laid out at a lower resolution,
// since the font engine's metrics overflow for huge faces. The document's coordinates
// are layout units; drawing scales the painter by the inverse.
class LabelTextLayout
{
public:
    LabelTextLayout(const RichText& text, std::optional<double> wrapWidth);
    ~LabelTextLayout();

    LabelTextLayout(const LabelTextLayout&) = delete;
    LabelTextLayout& operator=(const LabelTextLayout&) = delete;

    const QTextDocument& document() const { return m_document; }
    // Layout units (the document's coordinates) per point.
    double unitsPerPoint() const { return m_unitsPerPoint; }

    // The laid-out size in points.
    QSizeF size() const;

    // Draws the text from the rectangle's top-left corner, clipped to the rectangle, the
    // way a text view draws an attributed string into a rectangle. Text without a colour
    // of its own is black. The rectangle is in the painter's coordinates, in points.
    void draw(QPainter& painter, const QRectF& rect) const;

private:
    // Only tells the text engine the resolution; declared first so it outlives the
    // document that refers to it.
    std::unique_ptr<QPaintDevice> m_device;
    double m_unitsPerPoint;
    QTextDocument m_document;
};

// The straightforward way to draw one label: lay the text out at the rectangle's width
// and draw it into the rectangle.
void drawLabelText(QPainter& painter, const RichText& text, const QRectF& rect);

} // namespace lomir
