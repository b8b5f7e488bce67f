#pragma once

#include "core/document/richtext/richtext.h"

#include <QGraphicsTextItem>
#include <QTextCharFormat>
#include <memory>

class QMenu;
class QMimeData;
class QPaintDevice;

namespace lomir {

// The label's rich text, editable in place. Its document is laid out on the layout
// device that printing and the text measurement use (see LabelTextLayout), so lines break
// in the editor where they break on paper and where the limits measure them; the item
// scales the layout units back to points, and the view scales points for the screen.
//
// Two kinds of change are told apart, as the label's rules need. Edits go through the
// item's QTextDocument and its undo stack: typing, pasting, undo and redo, formatting
// and the editor's own insertText(); they are undoable and reported by textDidChange()
// once the edit is complete. Storage changes (loading, restoring a refused edit, trimming, forcing
// one font size) replace the document's content directly and report nothing.
class LabelTextView final : public QGraphicsTextItem
{
    Q_OBJECT

public:
    explicit LabelTextView(QGraphicsItem* parent = nullptr);
    ~LabelTextView() override;

    LabelTextView(const LabelTextView&) = delete;
    LabelTextView& operator=(const LabelTextView&) = delete;

    // The whole text as the label stores it.
    RichText richText() const;
    bool isEmpty() const;

    // Replaces the whole text in storage and clears the undo history. The caret goes back
    // to where it was before the current edit began (or stays), within the new text.
    void replaceText(const RichText& text);
    // Keeps the first length UTF-16 units of the text and deletes the rest, in storage and
    // in one edit (a text trimmed to a smaller label); nothing when the text is no longer.
    void truncate(int length);
    // Every run and the text view's font take the point size, in storage.
    void setUniformFontSize(double pointSize);
    void clearUndoHistory();

    // The text view's own font: what an empty label is typed in, and the font whose line
    // height is the least a label's text is given.
    const FontSpec& textFont() const { return m_textFont; }
    // Sets the font of the whole text and of new typing, in storage.
    void setTextFont(const FontSpec& font);

    // Replaces the UTF-16 range [from, to) with plain text as typing would, in the format
    // of the range's first character (or the one before): undoable and reported.
    void insertText(const QString& text, int from, int to);
    // Replaces the selection with plain text in the format new typing takes.
    void insertTextAtSelection(const QString& text);

    // The text wraps at this width in points.
    void setWrapWidth(double width);
    // Device pixels per point on screen, so the caret stays one pixel wide at every zoom.
    void setPixelsPerPoint(double pixelsPerPoint);
    // Layout units per point of the current layout device.
    double unitsPerPoint() const { return m_unitsPerPoint; }

    // The caret's rectangle in the item's coordinates.
    QRectF caretRect() const;

    // Editing commands of the Edit and Format menus, applied like the user's own edits.
    void undo();
    void redo();
    void cut();
    void copy() const;
    void paste();
    void selectAll();
    bool hasSelection() const;
    // Merges the format into the selection, or into the format new typing takes when
    // nothing is selected.
    void mergeCharFormat(const QTextCharFormat& format);
    void setAlignment(Qt::Alignment alignment);
    // The format new typing takes, which the format controls show.
    QTextCharFormat currentCharFormat() const;
    Qt::Alignment currentAlignment() const;

    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

    // The menu shown on a right click; the view does not own it.
    void setContextMenu(QMenu* menu) { m_contextMenu = menu; }

    // The clipboard format that carries a label's rich text between editors: base64 of
    // the same archive a document stores.
    static QString richTextMimeType();
    // Clipboard contents for a piece of label text, and the label text of clipboard
    // contents (rich text from another label or from HTML, else plain text).
    static std::unique_ptr<QMimeData> mimeDataForText(const RichText& text);
    static RichText textFromMimeData(const QMimeData& mimeData, const TextAttributes& typing);

Q_SIGNALS:
    // An undoable edit of the text has completed.
    void textDidChange();
    // The format new typing takes has changed (the caret moved into other text, or a
    // format was chosen with nothing selected).
    void typingAttributesDidChange();
    // The caret or the selection moved.
    void selectionDidChange();

protected:
    bool sceneEvent(QEvent* event) override;
    void contextMenuEvent(QGraphicsSceneContextMenuEvent* event) override;

private:
    // Marks an undoable edit of the text; the outermost one reports the change.
    class EditScope;
    // Marks a change of storage, which is not reported.
    class StorageEdit;

    void documentContentsChanged();
    void finishEdit();
    // Lays the text out at the resolution its largest type needs, as measuring does.
    void updateLayoutResolution();
    void applyLayoutDevice(std::unique_ptr<QPaintDevice> device);
    void updateCursorWidth();
    void insertRichText(const RichText& text);
    TextAttributes typingAttributes() const;

    std::unique_ptr<QPaintDevice> m_layoutDevice;
    double m_unitsPerPoint = 1.0;
    double m_wrapWidth = 0.0;
    double m_pixelsPerPoint = 1.0;
    FontSpec m_textFont;
    QMenu* m_contextMenu = nullptr;

    int m_editDepth = 0;
    int m_storageEditDepth = 0;
    bool m_changedDuringEdit = false;
    bool m_finishQueued = false;
    // textDidChange() is being emitted.
    bool m_reportingEdit = false;
    int m_caretBeforeEdit = 0;
    int m_lastPosition = 0;
    int m_lastAnchor = 0;
    QTextCharFormat m_lastCharFormat;
};

} // namespace lomir
