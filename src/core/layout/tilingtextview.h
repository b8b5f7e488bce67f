#pragma once

#include "core/document/richtext/richtext.h"
#include "core/layout/labelcopypainter.h"
#include "core/layout/serialnumber.h"

#include <QRectF>
#include <QVariantMap>
#include <QtGlobal>
#include <memory>
#include <optional>
#include <vector>

class QPainter;

namespace lomir {

// The printable view of a print: a frame one printable width wide and as many printable
// heights tall as there are pages, its y axis pointing down. It is never shown;
// paintPage() and paintPages() (layout/printjob.h) have it draw one page at a time onto
// whatever painter prints (a printer, a PDF writer, a preview), and it draws that page's
// copies of the label in their cells, each copy numbered.
//
// Every property is empty until it is set (makeTilingTextView() in layout/printplan.h
// sets them all). Drawing a page with a property it needs still empty is a programming
// error that stops the program.
class TilingTextView
{
public:
    // A view with all properties empty, to be set afterwards. The view lays out and
    // draws its text itself, so the frame is all it is made from; there is no default
    // constructor, because a view without a frame has no pages to paint.
    explicit TilingTextView(const QRectF& frame);
    // A view restored from its archive keys. Integer keys always give a value (a missing
    // or non-numeric one gives 0, fractions are truncated); "text" is kept only if it
    // holds a RichText, "serialStringRange" only if it holds a TextRange, and the lengths
    // only if they hold numbers; otherwise they stay empty. The frame is not among the
    // keys and stays empty.
    explicit TilingTextView(const QVariantMap& archive);
    ~TilingTextView();

    TilingTextView(const TilingTextView&) = delete;
    TilingTextView& operator=(const TilingTextView&) = delete;

    const QRectF& frame() const { return m_frame; }
    void setFrame(const QRectF& frame) { m_frame = frame; }
    // The view's y axis points down: page p lies at p x pageHeight.
    bool isFlipped() const { return true; }

    const std::optional<RichText>& text() const { return m_text; }
    void setText(std::optional<RichText> text) { m_text = std::move(text); }
    std::optional<qint64> quantity() const { return m_quantity; }
    void setQuantity(std::optional<qint64> value) { m_quantity = value; }
    std::optional<qint64> serialStartFrom() const { return m_serialStartFrom; }
    void setSerialStartFrom(std::optional<qint64> value) { m_serialStartFrom = value; }
    std::optional<qint64> serialDigitCount() const { return m_serialDigitCount; }
    void setSerialDigitCount(std::optional<qint64> value) { m_serialDigitCount = value; }
    std::optional<double> cellWidth() const { return m_cellWidth; }
    void setCellWidth(std::optional<double> value) { m_cellWidth = value; }
    std::optional<double> cellHeight() const { return m_cellHeight; }
    void setCellHeight(std::optional<double> value) { m_cellHeight = value; }
    std::optional<double> pageWidth() const { return m_pageWidth; }
    void setPageWidth(std::optional<double> value) { m_pageWidth = value; }
    std::optional<double> pageHeight() const { return m_pageHeight; }
    void setPageHeight(std::optional<double> value) { m_pageHeight = value; }
    std::optional<qint64> numberOfColumns() const { return m_numberOfColumns; }
    void setNumberOfColumns(std::optional<qint64> value) { m_numberOfColumns = value; }
    std::optional<qint64> numberOfRows() const { return m_numberOfRows; }
    void setNumberOfRows(std::optional<qint64> value) { m_numberOfRows = value; }
    std::optional<qint64> numberOfRowsOnAPage() const { return m_numberOfRowsOnAPage; }
    void setNumberOfRowsOnAPage(std::optional<qint64> value) { m_numberOfRowsOnAPage = value; }
    std::optional<qint64> numberOfPages() const { return m_numberOfPages; }
    void setNumberOfPages(std::optional<qint64> value) { m_numberOfPages = value; }
    std::optional<TextRange> serialStringRange() const { return m_serialStringRange; }
    void setSerialStringRange(std::optional<TextRange> value) { m_serialStringRange = value; }
    std::optional<double> spacing() const { return m_spacing; }
    void setSpacing(std::optional<double> value) { m_spacing = value; }

    // The copies drawRect draws for the page that rect starts on, in drawing order: page
    // index p = top of rect / pageHeight (truncated), copies from p x rows per page x
    // columns on, row by row, each row from the left, ending at the row guard or after
    // the last copy. Cells are placed relative to the top of rect.
    std::vector<LabelCopy> copiesOnPage(const QRectF& rect) const;

    // Called by the page loop (paintPage) for every page printed, previewed or exported:
    // draws the copies of the page that rect starts on; rect is in the view's coordinates
    // (the painter maps the view's coordinates to the page).
    void drawRect(QPainter& painter, const QRectF& rect) const;

private:
    const LabelCopyPainter& copyPainter() const;

    QRectF m_frame;
    std::optional<RichText> m_text;
    std::optional<qint64> m_quantity;
    std::optional<qint64> m_serialStartFrom;
    std::optional<qint64> m_serialDigitCount;
    std::optional<double> m_cellWidth;
    std::optional<double> m_cellHeight;
    std::optional<double> m_pageWidth;
    std::optional<double> m_pageHeight;
    std::optional<qint64> m_numberOfColumns;
    std::optional<qint64> m_numberOfRows;
    std::optional<qint64> m_numberOfRowsOnAPage;
    std::optional<qint64> m_numberOfPages;
    std::optional<TextRange> m_serialStringRange;
    std::optional<double> m_spacing;

    // The laid-out label, kept from page to page while the values it was made from
    // stay the same.
    struct CopyPainterKey
    {
        RichText text;
        std::optional<SerialNumbering> numbering;
        QSizeF textSize;
        bool operator==(const CopyPainterKey&) const = default;
    };
    mutable std::optional<CopyPainterKey> m_copyPainterKey;
    mutable std::unique_ptr<LabelCopyPainter> m_copyPainter;
};

} // namespace lomir
