#include "app/standinlabeleditor.h"

#include "app/cascadingwindowcontroller.h"
#include "base/fatal.h"
#include "document/document.h"
#include "document/richtextdocument.h"

#include <QMenu>
#include <QMenuBar>
#include <QTextEdit>
#include <QToolBar>
#include <QVBoxLayout>

namespace lomir {

namespace {

Document& documentOf(const QWidget& editor)
{
    const auto* window = qobject_cast<const CascadingWindowController*>(editor.window());
    if (!window || !window->document())
        fatalError("Unexpectedly found nil while unwrapping an Optional value");
    return *window->document();
}

} // namespace

StandInLabelEditor::StandInLabelEditor(QWidget* parent)
    : QWidget(parent), m_textEdit(new QTextEdit(this)), m_formatToolBar(new QToolBar(this))
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_textEdit);
    m_textEdit->setAcceptRichText(true);
    m_formatToolBar->setObjectName(QStringLiteral("formatToolBar"));
    m_formatToolBar->setWindowTitle(tr("Format"));
    // Nothing to format with here yet: the tool bar stays out of sight.
    m_formatToolBar->hide();
}

void StandInLabelEditor::viewDidAppear()
{
    if (!m_isInitialLoad)
        return;
    m_isInitialLoad = false;
    Document& document = documentOf(*this);
    setRichText(*m_textEdit->document(), document.content().labelText.nsAttributedString());
    m_textEdit->document()->clearUndoRedoStacks();
    connect(m_textEdit, &QTextEdit::textChanged, &document, &Document::updateChangeCount);
}

Content StandInLabelEditor::currentRecord() const
{
    Content record = documentOf(*this).content();
    record.labelText = AttributedString(richTextFromDocument(*m_textEdit->document()));
    return record;
}

void StandInLabelEditor::addMenus(QMenuBar* bar)
{
    QMenu* edit = bar->addMenu(tr("&Edit"));
    QAction* undo = edit->addAction(tr("&Undo"), QKeySequence::Undo, m_textEdit, &QTextEdit::undo);
    QAction* redo = edit->addAction(tr("&Redo"), QKeySequence::Redo, m_textEdit, &QTextEdit::redo);
    undo->setEnabled(false);
    redo->setEnabled(false);
    connect(m_textEdit, &QTextEdit::undoAvailable, undo, &QAction::setEnabled);
    connect(m_textEdit, &QTextEdit::redoAvailable, redo, &QAction::setEnabled);
    edit->addSeparator();
    edit->addAction(tr("Cu&t"), QKeySequence::Cut, m_textEdit, &QTextEdit::cut);
    edit->addAction(tr("&Copy"), QKeySequence::Copy, m_textEdit, &QTextEdit::copy);
    edit->addAction(tr("&Paste"), QKeySequence::Paste, m_textEdit, &QTextEdit::paste);
    edit->addSeparator();
    edit->addAction(tr("Select &All"), QKeySequence::SelectAll, m_textEdit, &QTextEdit::selectAll);
}

QToolBar* StandInLabelEditor::formatToolBar()
{
    return m_formatToolBar;
}

QWidget* StandInLabelEditor::labelTextWidget()
{
    return m_textEdit;
}

} // namespace lomir
