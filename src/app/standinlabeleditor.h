#pragma once

#include "document/content.h"

#include <QWidget>

class QMenuBar;
class QTextEdit;
class QToolBar;

namespace lomir {

// STAND-IN for MainViewController, the label editor, until it joins the build: a plain
// rich-text box for the label's text with an Edit menu. It offers the editor's surface
// to the window (first appearance, the record for saving, menus, tool bar, focus) so
// that the window takes the real editor without other changes. Settings other than
// the text are kept as the document read them.
class StandInLabelEditor : public QWidget
{
    Q_OBJECT

public:
    explicit StandInLabelEditor(QWidget* parent = nullptr);

    // Loads the document's record into the controls, once.
    void viewDidAppear();
    // The record built from the controls, for saving and printing.
    Content currentRecord() const;
    // Adds the Edit menu.
    void addMenus(QMenuBar* bar);
    QToolBar* formatToolBar();
    // The widget that takes the keyboard focus when the window opens.
    QWidget* labelTextWidget();

private:
    QTextEdit* m_textEdit = nullptr;
    QToolBar* m_formatToolBar = nullptr;
    bool m_isInitialLoad = true;
};

} // namespace lomir
