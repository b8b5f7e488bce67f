#pragma once

#include "core/base/units.h"
#include "core/document/content.h"
#include "core/document/richtext/richtext.h"
#include "core/printing/printroutine.h"

#include <QKeySequence>
#include <QPointer>
#include <QSizeF>
#include <QWidget>
#include <memory>

class QAction;
class QComboBox;
class QLineEdit;
class QMenu;
class QMenuBar;
class QToolBar;

namespace lomir {

namespace Ui {
class MainViewController;
}

class AlertPresenter;
class Document;
class FormatControls;
class LabelCell;
class LabelTextView;

// The label editor, the content of every document window. It shows one label at its
// real size times the zoom, with the controls for its size, unit, quantity, first serial
// number, zoom and print spacing. It loads the document's record into the controls once,
// when the window first appears; from then on the controls are the design, and saving
// and printing read them back through currentRecord(). It keeps the label as large as
// the chosen or measured size, keeps the serial placeholder as long as the numbers need,
// refuses text that does not fit a label of a custom size, and reports every change of
// the design (not of the zoom) to the document. Printing reads it, and resizes its serial
// placeholder for a full page, through the PrintEditor interface.
class MainViewController final : public QWidget, public PrintEditor
{
    Q_OBJECT

public:
    explicit MainViewController(QWidget* parent = nullptr);
    ~MainViewController() override;

    // The window hands the editor its document before showing it.
    void setDocument(Document* document);
    // Called by the window (CascadingWindowController::showEvent) when it is first shown:
    // the editor loads its document's record into the controls, once.
    void viewDidAppear();

    // The record built from the controls, for saving and printing.
    Content currentRecord() const;

    // Adds the Edit, View and Format menus.
    void addMenus(QMenuBar* bar);
    // The Format toolbar, for the window to add.
    QToolBar* formatToolBar();
    // The widget that takes the keyboard focus when the window opens: typing goes
    // straight into the label.
    QWidget* labelTextWidget();

    // The document the window handed over; none in an editor of no window.
    Document* document() const { return m_document; }
    // The label's text and its size in points (the text view's frame).
    RichText labelText() const;
    QSizeF labelSize() const;
    LabelTextView* textView() const;
    LabelCell* labelCell() const { return m_cell; }
    FormatControls* formatControls() const { return m_format; }
    bool isInitialLoad() const { return m_isInitialLoad; }

    // Replaces how warnings and beeps reach the user (tests record them).
    void setAlertPresenter(std::unique_ptr<AlertPresenter> presenter);

    // What printing reads from the editor and asks of it.
    PrintRequest printRequest() const override;
    ResizedLabel resizeSerialPlaceholder(qint64 units) override;
    void restoreText(const RichText& text) override;
    void showCellSizeAlert() override;

    // The Edit and View menus' commands.
    QAction* undoAction() const { return m_undo; }
    QAction* redoAction() const { return m_redo; }
    QAction* cutAction() const { return m_cut; }
    QAction* copyAction() const { return m_copy; }
    QAction* pasteAction() const { return m_paste; }
    QAction* selectAllAction() const { return m_selectAll; }
    QAction* zoomInAction() const { return m_zoomIn; }
    QAction* zoomOutAction() const { return m_zoomOut; }
    QAction* actualSizeAction() const { return m_actualSize; }

private:
    // Handlers of the controls.
    void sizePopUpSelectionDidChange();
    void metricPopUpSelectionDidChange();
    void zoomSliderDidChange();
    void addSerializationButtonClicked();
    void textDidChange();
    void textViewDidChangeTypingAttributes();
    void numberInputDidChange(QLineEdit* field);
    void numberInputDidEndEditing(QLineEdit* field);

    // Called once by the constructor, after the .ui file built the controls: wires them.
    void viewDidLoad();
    void setUpAppearance();
    void createActions();
    void updateUndoActions();
    template <typename FieldCommand, typename LabelCommand>
    QAction* makeEditAction(const QString& text, QKeySequence::StandardKey key,
                            FieldCommand fieldCommand, LabelCommand labelCommand);
    void loadRecord(const Content& record);
    // Gives the label a size in points, trimming text that no longer fits a custom size.
    void resizeLabel(double width, double height);
    void showSizeReadout(double width, double height);
    double customInputToPoints(const QLineEdit* input) const;
    // The label's measured size when it follows its text.
    QSizeF measuredTextSize() const;
    QString placeholderTextFromFields() const;
    void replacePlaceholder(const QString& replacement);
    // Accepts a text change that fits a label of a custom size, or undoes it and warns.
    bool heightLimitAccepts();
    // The one place the editor tells its document that the design changed (the document
    // marks itself edited and schedules the autosave). A change of the label's size, unit
    // or fields needs the document; an edit of the text in an editor of no window has no
    // one to tell, and changes made while loading the record are not changes.
    void changeDone();
    void reportEdit();
    void zoomTo(double percent);
    QLineEdit* focusedField() const;
    qint64 selectedSizeTag() const;

    std::unique_ptr<Ui::MainViewController> m_ui;
    LabelCell* m_cell = nullptr;
    FormatControls* m_format = nullptr;
    std::unique_ptr<AlertPresenter> m_alerts;

    QPointer<Document> m_document;
    bool m_isInitialLoad = true;
    bool m_textViewChangeIsSerial = false;
    RichText m_previousTextViewContent;
    qint64 m_previousSizeSelection = -1;
    Metric m_usedMetric = Metric::millimetres;

    QAction* m_undo = nullptr;
    QAction* m_redo = nullptr;
    QAction* m_cut = nullptr;
    QAction* m_copy = nullptr;
    QAction* m_paste = nullptr;
    QAction* m_selectAll = nullptr;
    QAction* m_zoomIn = nullptr;
    QAction* m_zoomOut = nullptr;
    QAction* m_actualSize = nullptr;
    QMenu* m_editMenu = nullptr;
};

} // namespace lomir
