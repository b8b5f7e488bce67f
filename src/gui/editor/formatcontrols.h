#pragma once

#include <QCoreApplication>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QToolBar>

class QAction;
class QActionGroup;
class QComboBox;
class QMenu;
class QWidget;

namespace lomir {

class FontFamilyBox;
class LabelTextView;

// The Format menu and toolbar of the label editor: font family and size, bold, italic,
// underline, strikethrough, text colour, alignment and the font dialog. They act on the
// selection, or on what new typing takes when nothing is selected, and show the format at
// the caret.
class FormatControls final : public QObject
{
    Q_OBJECT

public:
    // sizes are the point sizes the size box offers.
    FormatControls(LabelTextView* textView, const QStringList& sizes, QWidget* parent);
    ~FormatControls() override;

    QToolBar* toolBar() const { return m_toolBar; }
    // Builds the Format menu.
    QMenu* createMenu(QWidget* parent) const;

    QAction* boldAction() const { return m_bold; }
    QAction* italicAction() const { return m_italic; }
    QAction* underlineAction() const { return m_underline; }
    QAction* strikethroughAction() const { return m_strikethrough; }
    QAction* colorAction() const { return m_color; }
    QAction* fontDialogAction() const { return m_fontDialog; }
    QAction* alignmentAction(Qt::Alignment alignment) const;
    QComboBox* familyBox() const;
    QComboBox* sizeBox() const { return m_sizeBox; }

    // Shows the format at the caret.
    void showCurrentFormat();

private:
    void setUpFontBoxes(const QStringList& sizes);
    void makeStyleActions();
    void makeAlignmentActions();
    void fillToolBar();
    void applyFamily(const QString& family);
    void applySize(const QString& text);
    void chooseColor();
    void chooseFont();

    LabelTextView* m_textView;
    QWidget* m_parent;
    // The window the toolbar is added to takes it over; it still goes with the editor.
    QPointer<QToolBar> m_toolBar;
    FontFamilyBox* m_familyBox;
    QComboBox* m_sizeBox;
    QAction* m_bold;
    QAction* m_italic;
    QAction* m_underline;
    QAction* m_strikethrough;
    QAction* m_color;
    QAction* m_fontDialog;
    QActionGroup* m_alignment;
    QAction* m_alignLeft;
    QAction* m_alignCenter;
    QAction* m_alignRight;
    QAction* m_justify;
};

} // namespace lomir
