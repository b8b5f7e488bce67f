#include "gui/app/cascadingwindowcontroller.h"

#include "core/document/document.h"
#include "core/document/documentcontroller.h"
#include "gui/app/reviewwindows.h"
#include "gui/editor/mainviewcontroller.h"
#include "gui/printing/printcontroller.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QToolBar>

namespace lomir {

namespace {

// The window placed last; the next one cascades from it.
QPointer<CascadingWindowController>& lastPlacedWindow()
{
    static QPointer<CascadingWindowController> window;
    return window;
}

} // namespace

QPoint cascadedPosition(QPoint previous, QSize size, const QRect& available)
{
    QPoint next = previous + kCascadeOffset;
    if (next.x() + size.width() > available.x() + available.width())
        next.setX(available.x());
    if (next.y() + size.height() > available.y() + available.height())
        next.setY(available.y());
    return next;
}

CascadingWindowController::CascadingWindowController()
{
    setAttribute(Qt::WA_DeleteOnClose);
    resize(720, 540);
    m_printController = new PrintController(
        this, [this]() -> PrintEditor* { return m_editor; },
        [this] { return m_document ? m_document->displayName() : QString(); });
    // A print that succeeded has been counted by now; the count may call for the
    // review question.
    connect(m_printController, &PrintController::printOperationDidRun, this, [this](bool success) {
        if (success)
            performReviewRequestCheck();
    });
    createMenus();
}

void CascadingWindowController::performReviewRequestCheck()
{
    // One prompt for the whole application, so that no two windows ask at once.
    ReviewPrompt::application().performReviewRequestCheck();
}

CascadingWindowController::~CascadingWindowController()
{
    if (m_document)
        m_document->setRecordSource({});
}

void CascadingWindowController::createMenus()
{
    m_fileMenu = menuBar()->addMenu(tr("&File"));
    m_newDocumentAction = m_fileMenu->addAction(tr("&New"));
    m_newDocumentAction->setShortcut(QKeySequence::New);
    m_openDocumentAction = m_fileMenu->addAction(tr("&Open…"));
    m_openDocumentAction->setShortcut(QKeySequence::Open);
    m_openRecentMenu = m_fileMenu->addMenu(tr("Open &Recent"));
    m_fileMenu->addSeparator();
    m_closeAction = m_fileMenu->addAction(tr("&Close"));
    m_closeAction->setShortcut(QKeySequence::Close);
    m_saveAction = m_fileMenu->addAction(tr("&Save"));
    m_saveAction->setShortcut(QKeySequence::Save);
    m_saveAsAction = m_fileMenu->addAction(tr("Save &As…"));
    // Ctrl+Shift+S on every Linux desktop; Qt's standard key is empty on some of them.
    m_saveAsAction->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
    m_revertAction = m_fileMenu->addAction(tr("Re&vert to Saved"));
    m_fileMenu->addSeparator();
    m_pageSetupAction = m_fileMenu->addAction(tr("Page Set&up…"));
    m_printPreviewAction = m_fileMenu->addAction(tr("Print Previe&w"));
    m_exportPdfAction = m_fileMenu->addAction(tr("&Export as PDF…"));
    m_printAction = m_fileMenu->addAction(tr("&Print…"));
    m_printAction->setShortcut(QKeySequence::Print);
    m_printFullPageAction = m_fileMenu->addAction(tr("Print &Full Page…"));
    m_printFullPageAction->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_P));
    m_printCalibrationPageAction = m_fileMenu->addAction(tr("Print Ca&libration Page…"));
    m_fileMenu->addSeparator();
    m_quitAction = m_fileMenu->addAction(tr("&Quit"));
    m_quitAction->setShortcut(QKeySequence::Quit);
    m_quitAction->setMenuRole(QAction::QuitRole);

    m_helpMenu = menuBar()->addMenu(tr("&Help"));
    m_aboutAction = m_helpMenu->addAction(tr("&About Lomir"));
    m_aboutAction->setMenuRole(QAction::AboutRole);

    connect(m_closeAction, &QAction::triggered, this, &QWidget::close);
    const auto carryOut = [this](QAction* action, bool (DocumentController::*command)(Document&)) {
        connect(action, &QAction::triggered, this, [this, command] {
            if (m_document && m_controller)
                (m_controller->*command)(*m_document);
        });
    };
    carryOut(m_saveAction, &DocumentController::saveDocument);
    carryOut(m_saveAsAction, &DocumentController::saveDocumentAs);
    carryOut(m_revertAction, &DocumentController::revertDocument);

    connect(m_pageSetupAction, &QAction::triggered, m_printController,
            &PrintController::runPageSetup);
    connect(m_printPreviewAction, &QAction::triggered, m_printController,
            &PrintController::showPrintPreview);
    connect(m_exportPdfAction, &QAction::triggered, m_printController, &PrintController::exportPdf);
    connect(m_printAction, &QAction::triggered, m_printController, &PrintController::printDocument);
    connect(m_printFullPageAction, &QAction::triggered, m_printController,
            &PrintController::printFullPage);
    connect(m_printCalibrationPageAction, &QAction::triggered, m_printController,
            &PrintController::printCalibrationPage);
}

void CascadingWindowController::setDocument(Document* document, DocumentController* controller)
{
    m_document = document;
    m_controller = controller;
    connect(document, &Document::modifiedChanged, this, &QWidget::setWindowModified);
    connect(document, &Document::modifiedChanged, this, &CascadingWindowController::updateActions);
    connect(document, &Document::displayNameChanged, this, &CascadingWindowController::updateTitle);
    connect(document, &Document::recoveredChanged, this, &CascadingWindowController::updateTitle);
    connect(document, &Document::filePathChanged, this, &CascadingWindowController::updateActions);
    connect(document, &Document::reverted, this, &CascadingWindowController::installEditor);
    if (controller)
        connect(controller, &DocumentController::documentClosed, this,
                &CascadingWindowController::documentClosed);
    installEditor();
    updateTitle();
    setWindowModified(document->isModified());
    updateActions();
}

void CascadingWindowController::installEditor()
{
    LabelEditor* previous = m_editor;
    for (const QPointer<QMenu>& menu : std::as_const(m_editorMenus))
        delete menu.data();
    m_editorMenus.clear();
    if (previous)
        removeToolBar(previous->formatToolBar());

    m_editor = new LabelEditor(this);
    m_editor->setDocument(m_document);
    // The editor's menus go between File and Help.
    menuBar()->removeAction(m_helpMenu->menuAction());
    const QList<QAction*> before = menuBar()->actions();
    m_editor->addMenus(menuBar());
    for (QAction* action : menuBar()->actions()) {
        if (!before.contains(action) && action->menu())
            m_editorMenus.append(action->menu());
    }
    menuBar()->addMenu(m_helpMenu);
    addToolBar(m_editor->formatToolBar());
    setCentralWidget(m_editor); // deletes the previous editor
    m_document->setRecordSource([editor = m_editor] { return editor->currentRecord(); });
    if (m_hasAppeared) {
        m_editor->viewDidAppear();
        m_editor->labelTextWidget()->setFocus();
    }
}

void CascadingWindowController::updateTitle()
{
    if (!m_document)
        return;
    QString title = m_document->displayName() + QStringLiteral("[*]");
    if (m_document->isRecovered())
        title += u' ' + tr("(Recovered)");
    setWindowTitle(title);
}

void CascadingWindowController::updateActions()
{
    m_revertAction->setEnabled(m_document && !m_document->filePath().isEmpty() &&
                               m_document->isModified());
}

void CascadingWindowController::documentClosed(Document* document)
{
    if (document != m_document)
        return;
    m_documentClosed = true;
    m_document->setRecordSource({});
    m_document = nullptr;
    close();
}

void CascadingWindowController::placeCascaded()
{
    CascadingWindowController* previous = lastPlacedWindow();
    if (previous && previous != this && previous->isVisible()) {
        const QScreen* screen = previous->screen();
        move(cascadedPosition(previous->pos(), frameGeometry().size(),
                              screen ? screen->availableGeometry() : QRect()));
    }
    lastPlacedWindow() = this;
}

void CascadingWindowController::showEvent(QShowEvent* event)
{
    if (!m_hasAppeared && !event->spontaneous()) {
        m_hasAppeared = true;
        placeCascaded();
        if (m_editor) {
            m_editor->viewDidAppear();
            m_editor->labelTextWidget()->setFocus();
        }
    }
    QMainWindow::showEvent(event);
}

void CascadingWindowController::closeEvent(QCloseEvent* event)
{
    // Closing the window closes the document; the controller asks about unsaved
    // changes and may keep it open.
    if (m_document && m_controller && !m_documentClosed &&
        !m_controller->closeDocument(*m_document)) {
        event->ignore();
        return;
    }
    event->accept();
}

void CascadingWindowController::changeEvent(QEvent* event)
{
    // Leaving the window writes its edits, unless it is our own dialog that takes the
    // focus: the user may be about to answer "Don't Save".
    if (event->type() == QEvent::ActivationChange && !isActiveWindow() && m_document &&
        m_controller && !QApplication::activeModalWidget())
        m_controller->autosave(*m_document);
    QMainWindow::changeEvent(event);
}

} // namespace lomir
