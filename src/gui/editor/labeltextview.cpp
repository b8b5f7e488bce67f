#include "gui/editor/labeltextview.h"

#include "core/base/units.h"
#include "core/document/content.h"
#include "core/document/richtext/richtextdocument.h"
#include "core/layout/labeltextlayout.h"
#include "core/layout/layoutresolution.h"
#include "core/layout/measurement.h"

#include <QAbstractTextDocumentLayout>
#include <QClipboard>
#include <QGraphicsSceneContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QPaintDevice>
#include <QStyleOptionGraphicsItem>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QTextLayout>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <utility>

namespace lomir {

class LabelTextView::EditScope
{
public:
    explicit EditScope(LabelTextView& view) : m_view(view)
    {
        if (m_view.m_editDepth++ == 0)
            m_view.m_caretBeforeEdit = m_view.textCursor().position();
    }
    ~EditScope()
    {
        if (--m_view.m_editDepth == 0)
            m_view.finishEdit();
    }
    EditScope(const EditScope&) = delete;
    EditScope& operator=(const EditScope&) = delete;

private:
    LabelTextView& m_view;
};

class LabelTextView::StorageEdit
{
public:
    explicit StorageEdit(LabelTextView& view) : m_view(view) { ++m_view.m_storageEditDepth; }
    ~StorageEdit() { --m_view.m_storageEditDepth; }
    StorageEdit(const StorageEdit&) = delete;
    StorageEdit& operator=(const StorageEdit&) = delete;

private:
    LabelTextView& m_view;
};

namespace {

int textLength(const QTextDocument& document)
{
    return document.characterCount() - 1;
}

bool hasHorizontalBlockLengths(const QTextDocument& document)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const QTextBlockFormat format = block.blockFormat();
        if (format.hasProperty(QTextFormat::BlockLeftMargin) ||
            format.hasProperty(QTextFormat::BlockRightMargin) ||
            format.hasProperty(QTextFormat::TextIndent))
            return true;
    }
    return false;
}

TextAttributes attributesWithFont(const FontSpec& font)
{
    TextAttributes attributes;
    attributes.font = font;
    return attributes;
}

} // namespace

LabelTextView::LabelTextView(QGraphicsItem* parent)
    : QGraphicsTextItem(parent), m_textFont(defaultFont())
{
    auto* labelDocument = new QTextDocument(this);
    setDocument(labelDocument);
    applyLayoutDevice(makeLayoutDevice(layoutDpi(defaultFont().pointSize)));
    setTextInteractionFlags(Qt::TextEditorInteraction);
    // The label is a white card in every appearance; text without a colour is black on
    // it, as printing draws it.
    setDefaultTextColor(Qt::black);
    connect(labelDocument, &QTextDocument::contentsChange, this,
            [this](int, int, int) { documentContentsChanged(); });
    const QTextCursor cursor = textCursor();
    m_lastPosition = cursor.position();
    m_lastAnchor = cursor.anchor();
    m_lastCharFormat = cursor.charFormat();
}

LabelTextView::~LabelTextView()
{
    // The document outlives this item's members: it must not hold on to the device.
    document()->documentLayout()->setPaintDevice(nullptr);
}

RichText LabelTextView::richText() const
{
    return richTextFromDocument(*document());
}

bool LabelTextView::isEmpty() const
{
    return document()->isEmpty();
}

void LabelTextView::replaceText(const RichText& text)
{
    // While an edit is under way or being reported, the caret goes back to where the
    // edit found it.
    const int caret =
        m_editDepth > 0 || m_reportingEdit ? m_caretBeforeEdit : textCursor().position();
    {
        StorageEdit storage(*this);
        setRichText(*document(), text);
        convertBlockLengthsToLayoutUnits(*document(), m_unitsPerPoint);
        if (text.isEmpty()) {
            QTextCursor cursor(document());
            cursor.setBlockCharFormat(toCharFormat(attributesWithFont(m_textFont)));
        }
        document()->clearUndoRedoStacks();
    }
    updateLayoutResolution();
    QTextCursor cursor(document());
    cursor.setPosition(std::clamp(caret, 0, textLength(*document())));
    setTextCursor(cursor);
}

void LabelTextView::truncate(int length)
{
    QTextCursor cursor(document());
    cursor.movePosition(QTextCursor::End);
    if (cursor.position() <= length)
        return;
    StorageEdit storage(*this);
    cursor.setPosition(length, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
}

void LabelTextView::setUniformFontSize(double pointSize)
{
    {
        StorageEdit storage(*this);
        ::lomir::setUniformFontSize(*document(), pointSize);
        // Runs without a font of their own stay in the label's default font
        // (defaultFont()), as they are measured and printed; new typing follows the
        // text view's font.
        QFont unsized = document()->defaultFont();
        unsized.setPointSizeF(defaultFont().pointSize);
        document()->setDefaultFont(unsized);
    }
    m_textFont.pointSize = pointSize;
    updateLayoutResolution();
    QTextCursor cursor = textCursor();
    QTextCharFormat size;
    size.setFontPointSize(pointSize);
    cursor.mergeCharFormat(size);
    setTextCursor(cursor);
}

void LabelTextView::clearUndoHistory()
{
    document()->clearUndoRedoStacks();
}

void LabelTextView::setTextFont(const FontSpec& font)
{
    m_textFont = font;
    const QTextCharFormat format = toCharFormat(attributesWithFont(font));
    {
        StorageEdit storage(*this);
        QTextCursor all(document());
        all.select(QTextCursor::Document);
        all.mergeCharFormat(format);
        all.mergeBlockCharFormat(format);
    }
    updateLayoutResolution();
    QTextCursor cursor = textCursor();
    cursor.mergeCharFormat(format);
    setTextCursor(cursor);
}

void LabelTextView::insertText(const QString& text, int from, int to)
{
    EditScope edit(*this);
    // The inserted text takes the format of the first replaced character, as typing over
    // a selection does.
    QTextCursor probe(document());
    probe.setPosition(from < to ? from + 1 : from);
    const QTextCharFormat format = probe.charFormat();
    QTextCursor cursor(document());
    cursor.setPosition(from);
    cursor.setPosition(to, QTextCursor::KeepAnchor);
    cursor.insertText(text, format);
    setTextCursor(cursor);
}

void LabelTextView::insertTextAtSelection(const QString& text)
{
    EditScope edit(*this);
    QTextCursor cursor = textCursor();
    cursor.insertText(text);
    setTextCursor(cursor);
}

void LabelTextView::setWrapWidth(double width)
{
    m_wrapWidth = width;
    setTextWidth(std::max(0.0, width) * m_unitsPerPoint);
}

void LabelTextView::setPixelsPerPoint(double pixelsPerPoint)
{
    m_pixelsPerPoint = pixelsPerPoint;
    updateCursorWidth();
}

QRectF LabelTextView::caretRect() const
{
    const QTextCursor cursor = textCursor();
    const QTextBlock block = cursor.block();
    const QRectF blockRect = document()->documentLayout()->blockBoundingRect(block);
    const QTextLayout* layout = block.layout();
    if (!layout || layout->lineCount() == 0)
        return QRectF(blockRect.topLeft(), QSizeF(1.0, blockRect.height()));
    const int position = cursor.positionInBlock();
    const QTextLine line = layout->lineForTextPosition(position);
    const QTextLine shown = line.isValid() ? line : layout->lineAt(layout->lineCount() - 1);
    const double x = shown.cursorToX(position);
    return QRectF(blockRect.left() + x, blockRect.top() + shown.y(), 1.0, shown.height());
}

void LabelTextView::undo()
{
    EditScope edit(*this);
    QTextCursor cursor = textCursor();
    document()->undo(&cursor);
    setTextCursor(cursor);
}

void LabelTextView::redo()
{
    EditScope edit(*this);
    QTextCursor cursor = textCursor();
    document()->redo(&cursor);
    setTextCursor(cursor);
}

void LabelTextView::cut()
{
    if (!hasSelection())
        return;
    EditScope edit(*this);
    copy();
    QTextCursor cursor = textCursor();
    cursor.removeSelectedText();
    setTextCursor(cursor);
}

void LabelTextView::copy() const
{
    const QTextCursor cursor = textCursor();
    if (!cursor.hasSelection())
        return;
    const int start = cursor.selectionStart();
    const RichText selected = richText().mid(start, cursor.selectionEnd() - start);
    QGuiApplication::clipboard()->setMimeData(mimeDataForText(selected).release());
}

void LabelTextView::paste()
{
    const QMimeData* mimeData = QGuiApplication::clipboard()->mimeData();
    if (!mimeData)
        return;
    const RichText pasted = textFromMimeData(*mimeData, typingAttributes());
    if (pasted.isEmpty())
        return;
    EditScope edit(*this);
    insertRichText(pasted);
}

void LabelTextView::selectAll()
{
    EditScope edit(*this);
    QTextCursor cursor = textCursor();
    cursor.select(QTextCursor::Document);
    setTextCursor(cursor);
}

bool LabelTextView::hasSelection() const
{
    return textCursor().hasSelection();
}

void LabelTextView::mergeCharFormat(const QTextCharFormat& format)
{
    EditScope edit(*this);
    QTextCursor cursor = textCursor();
    cursor.mergeCharFormat(format);
    setTextCursor(cursor);
}

void LabelTextView::setAlignment(Qt::Alignment alignment)
{
    EditScope edit(*this);
    QTextCursor cursor = textCursor();
    QTextBlockFormat format;
    format.setAlignment(alignment);
    cursor.mergeBlockFormat(format);
    setTextCursor(cursor);
}

QTextCharFormat LabelTextView::currentCharFormat() const
{
    return textCursor().charFormat();
}

Qt::Alignment LabelTextView::currentAlignment() const
{
    return textCursor().blockFormat().alignment();
}

QString LabelTextView::richTextMimeType()
{
    return QStringLiteral("application/x-lomir-label-text");
}

std::unique_ptr<QMimeData> LabelTextView::mimeDataForText(const RichText& text)
{
    auto mimeData = std::make_unique<QMimeData>();
    mimeData->setData(richTextMimeType(), AttributedString(text).encode().toLatin1());
    QTextDocument document;
    setRichText(document, text);
    mimeData->setHtml(document.toHtml());
    mimeData->setText(text.string());
    return mimeData;
}

RichText LabelTextView::textFromMimeData(const QMimeData& mimeData, const TextAttributes& typing)
{
    if (mimeData.hasFormat(richTextMimeType())) {
        const Result<AttributedString> decoded = AttributedString::decode(
            QString::fromLatin1(mimeData.data(richTextMimeType())), richTextMimeType());
        if (decoded)
            return decoded->nsAttributedString();
    }
    if (mimeData.hasHtml()) {
        QTextDocument document;
        document.setHtml(mimeData.html());
        return richTextFromDocument(document);
    }
    if (mimeData.hasText()) {
        QString text = mimeData.text();
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
        return RichText(text, typing);
    }
    return RichText();
}

void LabelTextView::paint(QPainter* painter, const QStyleOptionGraphicsItem* option,
                          QWidget* widget)
{
    // The label is drawn as it prints: without the dashed outline Qt puts around a
    // focused text item.
    QStyleOptionGraphicsItem plain(*option);
    plain.state &= ~(QStyle::State_Selected | QStyle::State_HasFocus);
    QGraphicsTextItem::paint(painter, &plain, widget);
}

bool LabelTextView::sceneEvent(QEvent* event)
{
    EditScope edit(*this);
    if (event->type() == QEvent::KeyPress) {
        // The clipboard keys carry the label's own rich text, so that fonts keep their
        // PostScript names between labels.
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->matches(QKeySequence::Copy)) {
            copy();
            return true;
        }
        if (key->matches(QKeySequence::Cut)) {
            cut();
            return true;
        }
        if (key->matches(QKeySequence::Paste)) {
            paste();
            return true;
        }
    }
    return QGraphicsTextItem::sceneEvent(event);
}

void LabelTextView::contextMenuEvent(QGraphicsSceneContextMenuEvent* event)
{
    if (!m_contextMenu) {
        QGraphicsTextItem::contextMenuEvent(event);
        return;
    }
    m_contextMenu->exec(event->screenPos());
    event->accept();
}

void LabelTextView::documentContentsChanged()
{
    if (m_storageEditDepth > 0)
        return;
    m_changedDuringEdit = true;
    // Edits normally run inside an edit scope; anything else is reported once the event
    // loop is back.
    if (m_editDepth == 0 && !m_finishQueued) {
        m_finishQueued = true;
        QTimer::singleShot(0, this, [this] {
            m_finishQueued = false;
            if (m_editDepth == 0)
                finishEdit();
        });
    }
}

void LabelTextView::finishEdit()
{
    if (m_changedDuringEdit) {
        m_changedDuringEdit = false;
        updateLayoutResolution();
        const bool wasReporting = std::exchange(m_reportingEdit, true);
        const int caretBeforeEdit = m_caretBeforeEdit;
        Q_EMIT textDidChange();
        m_reportingEdit = wasReporting;
        m_caretBeforeEdit = caretBeforeEdit;
    }
    const QTextCursor cursor = textCursor();
    if (cursor.position() != m_lastPosition || cursor.anchor() != m_lastAnchor) {
        m_lastPosition = cursor.position();
        m_lastAnchor = cursor.anchor();
        Q_EMIT selectionDidChange();
    }
    const QTextCharFormat format = textCursor().charFormat();
    if (format != m_lastCharFormat) {
        m_lastCharFormat = format;
        Q_EMIT typingAttributesDidChange();
    }
}

void LabelTextView::updateLayoutResolution()
{
    const RichText text = richText();
    const int dpi = layoutDpi(std::max(largestPointSize(text), defaultFont().pointSize));
    if (dpi == m_layoutDevice->logicalDpiY())
        return;
    // Indents are held in the device's units: a text that has them is laid out anew
    // (which, rarely, costs its undo history).
    const bool relayOut = hasHorizontalBlockLengths(*document());
    applyLayoutDevice(makeLayoutDevice(dpi));
    if (relayOut)
        replaceText(text);
}

void LabelTextView::applyLayoutDevice(std::unique_ptr<QPaintDevice> device)
{
    StorageEdit storage(*this);
    // The old device stays alive until the layout has let it go.
    std::unique_ptr<QPaintDevice> previous = std::move(m_layoutDevice);
    m_layoutDevice = std::move(device);
    prepareLabelDocument(*document(), m_layoutDevice.get());
    m_unitsPerPoint = m_layoutDevice->logicalDpiY() / kPointsPerInch;
    setScale(1.0 / m_unitsPerPoint);
    setWrapWidth(m_wrapWidth);
    updateCursorWidth();
}

void LabelTextView::updateCursorWidth()
{
    // One device pixel, in layout units.
    const double width = m_unitsPerPoint / std::max(m_pixelsPerPoint, 1e-6);
    document()->documentLayout()->setProperty("cursorWidth", std::max(1, int(std::lround(width))));
    update();
}

void LabelTextView::insertRichText(const RichText& text)
{
    QTextDocument pieces;
    setRichText(pieces, text);
    convertBlockLengthsToLayoutUnits(pieces, m_unitsPerPoint);
    QTextCursor cursor = textCursor();
    cursor.insertFragment(QTextDocumentFragment(&pieces));
    setTextCursor(cursor);
}

TextAttributes LabelTextView::typingAttributes() const
{
    const QTextCursor cursor = textCursor();
    return fromFormats(cursor.charFormat(), cursor.blockFormat());
}

} // namespace lomir
