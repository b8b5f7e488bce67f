#pragma once

#include "core/document/document.h"
#include "core/document/documentcontroller.h"

#include <QMainWindow>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QStringView>

class QMenu;

namespace lomir {

class MainViewController;
class PrintController;

// The widget that edits the label: the window's central widget.
using LabelEditor = MainViewController;

// How far each new document window sits right of and below the one made before it.
inline constexpr QPoint kCascadeOffset{22, 22};

// Where a new window of the size goes, given where the previous window is: offset by
// kCascadeOffset, and back to the available area's left or top edge when it would
// reach past the right or bottom edge.
QPoint cascadedPosition(QPoint previous, QSize size, const QRect& available);

// The window of one document: its File and Help menus, the label editor as central
// widget, the edited mark in the title, the document's print commands. Each new window is placed
// offset from the window made before it, so that windows cascade instead of covering each other.
// Windows are made from the scene kDocumentWindowScene (see instantiateScene()); no
// other constructor is offered.
class CascadingWindowController : public QMainWindow
{
    Q_OBJECT

public:
    ~CascadingWindowController() override;

    // The window's document; null until setDocument().
    Document* document() const { return m_document; }
    // Shows the document, whose File commands the controller carries out. Called once,
    // before the window is first shown.
    void setDocument(Document* document, DocumentController* controller);

    LabelEditor* editor() const { return m_editor; }

    // The commands of the File and Help menus that the application handles rather
    // than the document: always enabled.
    QAction* newDocumentAction() const { return m_newDocumentAction; }
    QAction* openDocumentAction() const { return m_openDocumentAction; }
    QMenu* openRecentMenu() const { return m_openRecentMenu; }
    QAction* quitAction() const { return m_quitAction; }
    QAction* aboutAction() const { return m_aboutAction; }

    // The document's own commands.
    QAction* closeAction() const { return m_closeAction; }
    QAction* saveAction() const { return m_saveAction; }
    QAction* saveAsAction() const { return m_saveAsAction; }
    QAction* revertAction() const { return m_revertAction; }

    // The review check, run after each successful print of the document.
    void performReviewRequestCheck();

    // The document's print commands and its page layout.
    PrintController* printController() const { return m_printController; }
    QAction* pageSetupAction() const { return m_pageSetupAction; }
    QAction* printPreviewAction() const { return m_printPreviewAction; }
    QAction* exportPdfAction() const { return m_exportPdfAction; }
    QAction* printAction() const { return m_printAction; }
    QAction* printFullPageAction() const { return m_printFullPageAction; }
    QAction* printCalibrationPageAction() const { return m_printCalibrationPageAction; }

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    friend QObject* instantiateScene(QStringView identifier);
    CascadingWindowController();

    void createMenus();
    // Makes a fresh editor, which loads the document's record when it first appears.
    void installEditor();
    void updateTitle();
    void updateActions();
    void documentClosed(Document* document);
    void placeCascaded();

    QPointer<Document> m_document;
    QPointer<DocumentController> m_controller;
    LabelEditor* m_editor = nullptr;
    QList<QPointer<QMenu>> m_editorMenus;
    QMenu* m_fileMenu = nullptr;
    QMenu* m_helpMenu = nullptr;
    QMenu* m_openRecentMenu = nullptr;
    QAction* m_newDocumentAction = nullptr;
    QAction* m_openDocumentAction = nullptr;
    QAction* m_closeAction = nullptr;
    QAction* m_saveAction = nullptr;
    QAction* m_saveAsAction = nullptr;
    QAction* m_revertAction = nullptr;
    QAction* m_pageSetupAction = nullptr;
    QAction* m_printPreviewAction = nullptr;
    QAction* m_exportPdfAction = nullptr;
    QAction* m_printAction = nullptr;
    QAction* m_printFullPageAction = nullptr;
    QAction* m_printCalibrationPageAction = nullptr;
    PrintController* m_printController = nullptr;
    QAction* m_quitAction = nullptr;
    QAction* m_aboutAction = nullptr;
    bool m_hasAppeared = false;
    bool m_documentClosed = false;
};

} // namespace lomir
