#include "gui/editor/mainviewcontroller.h"

#include "core/app/fontpanelsizes.h"
#include "core/base/fatal.h"
#include "core/document/document.h"
#include "core/label/appearance.h"
#include "core/label/labellimits.h"
#include "core/label/labelsize.h"
#include "core/label/numberinput.h"
#include "core/label/serialplaceholder.h"
#include "core/label/zoom.h"
#include "core/layout/measurement.h"
#include "core/layout/serialnumber.h"
#include "gui/editor/centeredclipview.h"
#include "gui/editor/editoralerts.h"
#include "gui/editor/formatcontrols.h"
#include "gui/editor/labelcell.h"
#include "gui/editor/labeltextview.h"
#include "gui/editor/zoomslider.h"
#include "ui_mainviewcontroller.h"

#include <QAction>
#include <QApplication>
#include <QGraphicsScene>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QTextCursor>
#include <QTextDocument>
#include <QToolBar>
#include <algorithm>
#include <array>

namespace lomir {

namespace {

// The zoom steps of the View menu, in percent.
constexpr std::array kZoomSteps{25.0,  50.0,  75.0,  100.0, 125.0, 150.0, 200.0,
                                300.0, 400.0, 500.0, 600.0, 800.0, 1000.0};

// The size popup's item that heads the presets.
constexpr int kSizePresetHeadingIndex = 3;
// The size popup's separator between the sizes that follow the text and the presets.
constexpr int kSizeSeparatorIndex = 2;

// Popup items are told apart by their tags, and every popup of the editor tags its items
// with their positions, so that a document stores and restores the same item. Nothing
// selected has the tag -1.
qint64 selectedTag(const QComboBox* popup)
{
    return popup->currentIndex();
}

// Saving and printing read every popup; one without a selection is a programming error.
qint64 requiredTag(const QComboBox* popup)
{
    const qint64 tag = selectedTag(popup);
    if (tag < 0)
        fatalError("MainViewController: the popup " + popup->objectName().toStdString() +
                   " has no selected item");
    return tag;
}

qint64 fieldTag(const QLineEdit* field)
{
    return field->property("tag").toLongLong();
}

bool paletteIsDark(const QPalette& palette)
{
    return palette.color(QPalette::WindowText).lightness() >
           palette.color(QPalette::Window).lightness();
}

std::optional<QString> appearanceStyleSetting()
{
    const QSettings settings;
    const QString key = QString::fromLatin1(kAppearanceStyleKey);
    if (!settings.contains(key))
        return std::nullopt;
    return settings.value(key).toString();
}

QStringList fontSizesOffered()
{
    const QStringList stored =
        QSettings().value(QString::fromLatin1(kFontPanelSizeListKey)).toStringList();
    return stored.isEmpty() ? fontPanelSizeList() : stored;
}

} // namespace

MainViewController::MainViewController(QWidget* parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::MainViewController>()),
      m_alerts(std::make_unique<MessageBoxAlertPresenter>(this))
{
    m_ui->setupUi(this);
    m_cell = new LabelCell;
    m_ui->labelContainer->setDocumentView(m_cell);
    viewDidLoad();
}

MainViewController::~MainViewController() = default;

void MainViewController::viewDidLoad()
{
    setUpAppearance();
    LabelTextView* text = textView();
    text->setTextFont(labelFont());

    connect(text, &LabelTextView::textDidChange, this, &MainViewController::textDidChange);
    connect(text, &LabelTextView::typingAttributesDidChange, this,
            &MainViewController::textViewDidChangeTypingAttributes);
    for (QLineEdit* field : {m_ui->customWidthInput, m_ui->customHeightInput, m_ui->quantityField,
                             m_ui->serialStartFromField}) {
        connect(field, &QLineEdit::textEdited, this,
                [this, field] { numberInputDidChange(field); });
        connect(field, &QLineEdit::editingFinished, this,
                [this, field] { numberInputDidEndEditing(field); });
    }
    connect(m_ui->sizeDropdown, &QComboBox::activated, this,
            &MainViewController::sizePopUpSelectionDidChange);
    connect(m_ui->metricDropdown, &QComboBox::activated, this,
            &MainViewController::metricPopUpSelectionDidChange);
    connect(m_ui->zoomSlider, &ZoomSlider::doubleValueChanged, this,
            &MainViewController::zoomSliderDidChange);
    // Spaced or not is part of the design, saved with it: picking it is a change.
    connect(m_ui->outputSpacingDropdown, &QComboBox::activated, this,
            &MainViewController::reportEdit);
    connect(m_ui->addSerializationButton, &QPushButton::clicked, this,
            &MainViewController::addSerializationButtonClicked);

    m_format = new FormatControls(text, fontSizesOffered(), this);
    createActions();
    text->setContextMenu(m_editMenu);

    // Typing goes straight into the label.
    m_ui->labelContainer->scene()->setFocusItem(text);
    setFocusProxy(m_ui->labelContainer);
}

void MainViewController::setUpAppearance()
{
    QComboBox* sizes = m_ui->sizeDropdown;
    if (sizes->count() <= kSizePresetHeadingIndex)
        fatalError("MainViewController: the size popup has no preset heading");
    // The presets' heading keeps its title in the popup's own font and cannot be picked.
    const QString heading = sizes->itemText(kSizePresetHeadingIndex);
    const QVariant headingFont = sizes->itemData(kSizePresetHeadingIndex, Qt::FontRole);
    sizes->setItemText(kSizePresetHeadingIndex, heading);
    sizes->setItemData(kSizePresetHeadingIndex, headingFont, Qt::FontRole);
    sizes->setItemData(kSizePresetHeadingIndex, 0, Qt::UserRole - 1);
    sizes->removeItem(kSizeSeparatorIndex);
    sizes->insertSeparator(kSizeSeparatorIndex);

    m_cell->setShadowColor(
        labelShadowColor(isDarkAppearance(appearanceStyleSetting(), paletteIsDark(palette()))));
}

void MainViewController::createActions()
{
    m_undo =
        makeEditAction(tr("&Undo"), QKeySequence::Undo, &QLineEdit::undo, &LabelTextView::undo);
    m_redo =
        makeEditAction(tr("&Redo"), QKeySequence::Redo, &QLineEdit::redo, &LabelTextView::redo);
    m_cut = makeEditAction(tr("Cu&t"), QKeySequence::Cut, &QLineEdit::cut, &LabelTextView::cut);
    m_copy =
        makeEditAction(tr("&Copy"), QKeySequence::Copy, &QLineEdit::copy, &LabelTextView::copy);
    m_paste =
        makeEditAction(tr("&Paste"), QKeySequence::Paste, &QLineEdit::paste, &LabelTextView::paste);
    m_selectAll = makeEditAction(tr("Select &All"), QKeySequence::SelectAll, &QLineEdit::selectAll,
                                 &LabelTextView::selectAll);
    for (QAction* action : {m_undo, m_redo, m_cut, m_copy, m_paste, m_selectAll}) {
        // The label and the fields handle these keys themselves while they have the focus.
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(action);
    }

    m_zoomIn = new QAction(tr("Zoom &In"), this);
    m_zoomIn->setShortcut(QKeySequence::ZoomIn);
    connect(m_zoomIn, &QAction::triggered, this, [this] {
        const double current = m_ui->zoomSlider->doubleValue();
        const auto* next = std::find_if(kZoomSteps.begin(), kZoomSteps.end(),
                                        [&](double step) { return step > current; });
        if (next != kZoomSteps.end())
            zoomTo(*next);
    });
    m_zoomOut = new QAction(tr("Zoom &Out"), this);
    m_zoomOut->setShortcut(QKeySequence::ZoomOut);
    connect(m_zoomOut, &QAction::triggered, this, [this] {
        const double current = m_ui->zoomSlider->doubleValue();
        const auto previous = std::find_if(kZoomSteps.rbegin(), kZoomSteps.rend(),
                                           [&](double step) { return step < current; });
        if (previous != kZoomSteps.rend())
            zoomTo(*previous);
    });
    m_actualSize = new QAction(tr("&Actual Size"), this);
    m_actualSize->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_0));
    connect(m_actualSize, &QAction::triggered, this, [this] { zoomTo(100.0); });
    for (QAction* action : {m_zoomIn, m_zoomOut, m_actualSize})
        addAction(action);

    // Undo and Redo are offered only when the label, or the field with the focus, has
    // something to undo or redo.
    const QTextDocument* label = textView()->document();
    connect(label, &QTextDocument::undoAvailable, this, &MainViewController::updateUndoActions);
    connect(label, &QTextDocument::redoAvailable, this, &MainViewController::updateUndoActions);
    connect(qApp, &QApplication::focusChanged, this, &MainViewController::updateUndoActions);
    for (QLineEdit* field : findChildren<QLineEdit*>())
        connect(field, &QLineEdit::textChanged, this, &MainViewController::updateUndoActions);
    updateUndoActions();

    m_editMenu = new QMenu(tr("&Edit"), this);
    connect(m_editMenu, &QMenu::aboutToShow, this, &MainViewController::updateUndoActions);
    m_editMenu->addAction(m_undo);
    m_editMenu->addAction(m_redo);
    m_editMenu->addSeparator();
    m_editMenu->addAction(m_cut);
    m_editMenu->addAction(m_copy);
    m_editMenu->addAction(m_paste);
    m_editMenu->addSeparator();
    m_editMenu->addAction(m_selectAll);
}

void MainViewController::updateUndoActions()
{
    if (const QLineEdit* field = focusedField()) {
        m_undo->setEnabled(field->isUndoAvailable());
        m_redo->setEnabled(field->isRedoAvailable());
        return;
    }
    const QTextDocument* label = textView()->document();
    m_undo->setEnabled(label->isUndoAvailable());
    m_redo->setEnabled(label->isRedoAvailable());
}

template <typename FieldCommand, typename LabelCommand>
QAction* MainViewController::makeEditAction(const QString& text, QKeySequence::StandardKey key,
                                            FieldCommand fieldCommand, LabelCommand labelCommand)
{
    // The command goes to the number field that has the focus, or else to the label.
    auto* action = new QAction(text, this);
    action->setShortcut(key);
    connect(action, &QAction::triggered, this, [this, fieldCommand, labelCommand] {
        if (QLineEdit* field = focusedField())
            (field->*fieldCommand)();
        else
            (textView()->*labelCommand)();
    });
    return action;
}

void MainViewController::addMenus(QMenuBar* bar)
{
    bar->addMenu(m_editMenu);
    QMenu* view = bar->addMenu(tr("&View"));
    view->addAction(m_zoomIn);
    view->addAction(m_zoomOut);
    view->addAction(m_actualSize);
    bar->addMenu(m_format->createMenu(bar));
}

QToolBar* MainViewController::formatToolBar()
{
    return m_format->toolBar();
}

QWidget* MainViewController::labelTextWidget()
{
    return m_ui->labelContainer;
}

RichText MainViewController::labelText() const
{
    return textView()->richText();
}

QSizeF MainViewController::labelSize() const
{
    return m_cell->frame().size();
}

LabelTextView* MainViewController::textView() const
{
    return m_cell->textView();
}

void MainViewController::setAlertPresenter(std::unique_ptr<AlertPresenter> presenter)
{
    m_alerts = std::move(presenter);
}

PrintRequest MainViewController::printRequest() const
{
    PrintRequest request;
    const qint64 spacingTag = selectedTag(m_ui->outputSpacingDropdown);
    if (spacingTag >= 0)
        request.spacingTag = spacingTag;
    request.labelSize = labelSize();
    request.serialStartText = m_ui->serialStartFromField->text();
    request.quantityText = m_ui->quantityField->text();
    request.text = labelText();
    return request;
}

ResizedLabel MainViewController::resizeSerialPlaceholder(qint64 units)
{
    // The change is the editor's own, as when the quantity asks for another run length.
    m_textViewChangeIsSerial = true;
    replacePlaceholder(serialPlaceholder(units));
    ResizedLabel resized;
    resized.text = labelText();
    const qint64 sizeTag = selectedSizeTag();
    if (sizeTag >= 0)
        resized.sizeTag = sizeTag;
    resized.labelSize = labelSize();
    resized.magnification = m_ui->labelContainer->magnification();
    return resized;
}

void MainViewController::restoreText(const RichText& text)
{
    LabelTextView* view = textView();
    view->clearUndoHistory();
    view->replaceText(text);
    // The text is the one last accepted again: a refused edit goes back to it.
    m_previousTextViewContent = labelText();
}

void MainViewController::showCellSizeAlert()
{
    m_alerts->runModal(
        EditorAlert{tr("Cell Size Alert Message"), tr("Cell Size Alert Informative"), false});
}

void MainViewController::setDocument(Document* document)
{
    m_document = document;
}

void MainViewController::viewDidAppear()
{
    if (!m_isInitialLoad)
        return;
    // Without a document the editor shows a fresh label.
    loadRecord(m_document ? m_document->content() : Content());
    m_isInitialLoad = false;
    m_ui->labelContainer->setFocus(Qt::OtherFocusReason);
}

void MainViewController::loadRecord(const Content& record)
{
    LabelTextView* text = textView();
    text->replaceText(record.labelText.nsAttributedString());
    // Typing into an opened label goes on from its end.
    QTextCursor caret = text->textCursor();
    caret.movePosition(QTextCursor::End);
    text->setTextCursor(caret);
    m_ui->quantityField->setText(record.quantity);
    m_ui->serialStartFromField->setText(record.serialStartFrom.value_or(QStringLiteral("0")));
    m_ui->customWidthInput->setText(record.width);
    m_ui->customHeightInput->setText(record.height);

    m_ui->metricDropdown->setCurrentIndex(int(record.metric));
    const std::optional<Metric> metric = metricFromRawValue(record.metric);
    if (!metric)
        fatalError("MainViewController: the document's unit " + std::to_string(record.metric) +
                   " is neither millimetres (0) nor inches (1)");
    m_usedMetric = *metric;

    m_ui->outputSpacingDropdown->setCurrentIndex(int(record.outputSpacing));
    m_ui->zoomSlider->setDoubleValue(record.magnification);
    zoomSliderDidChange();
    m_ui->sizeDropdown->setCurrentIndex(int(record.dimensions));
    sizePopUpSelectionDidChange();
}

Content MainViewController::currentRecord() const
{
    Content record;
    record.labelText = AttributedString(labelText());
    record.quantity = m_ui->quantityField->text();
    record.serialStartFrom = m_ui->serialStartFromField->text();
    record.width = m_ui->customWidthInput->text();
    record.height = m_ui->customHeightInput->text();
    record.dimensions = requiredTag(m_ui->sizeDropdown);
    record.metric = requiredTag(m_ui->metricDropdown);
    record.magnification = m_ui->zoomSlider->doubleValue();
    record.outputSpacing = requiredTag(m_ui->outputSpacingDropdown);
    const QSizeF frame = labelSize();
    record.frameWidth = frame.width();
    record.frameHeight = frame.height();
    return record;
}

qint64 MainViewController::selectedSizeTag() const
{
    return selectedTag(m_ui->sizeDropdown);
}

void MainViewController::sizePopUpSelectionDidChange()
{
    const qint64 tag = selectedSizeTag();
    if (tag == m_previousSizeSelection)
        return;
    if (!m_isInitialLoad) {
        if (const std::optional<double> size = forcedFontSize(tag))
            textView()->setUniformFontSize(*size);
    }
    QSizeF size = measuredTextSize();
    if (isCustomSize(tag)) {
        // A document's custom size is the one its inputs hold; a size picked by the user
        // starts from the label as it is.
        if (m_isInitialLoad)
            size = QSizeF(customInputToPoints(m_ui->customWidthInput),
                          customInputToPoints(m_ui->customHeightInput));
        m_ui->customSizeInputContainer->show();
        m_ui->sizeLabel->hide();
    } else {
        m_ui->customSizeInputContainer->hide();
        m_ui->sizeLabel->show();
    }
    resizeLabel(size.width(), size.height());
    m_previousSizeSelection = tag;
}

void MainViewController::metricPopUpSelectionDidChange()
{
    const std::optional<Metric> metric = metricFromRawValue(selectedTag(m_ui->metricDropdown));
    if (!metric)
        fatalError("MainViewController: the unit popup's item is neither millimetres nor inches");
    m_usedMetric = *metric;
    const QSizeF size = labelSize();
    showSizeReadout(size.width(), size.height());
    if (!m_isInitialLoad)
        changeDone();
}

void MainViewController::zoomSliderDidChange()
{
    const double value = m_ui->zoomSlider->doubleValue();
    m_ui->labelContainer->setMagnification(magnificationForZoom(value));
    m_ui->zoomLabel->setText(zoomCaption(tr("Zoom"), value));
}

void MainViewController::zoomTo(double percent)
{
    m_ui->zoomSlider->setDoubleValue(percent);
    zoomSliderDidChange();
}

void MainViewController::addSerializationButtonClicked()
{
    // A label has at most one serial number.
    replacePlaceholder(QString());
    textView()->insertTextAtSelection(placeholderTextFromFields());
}

void MainViewController::textDidChange()
{
    if (isCustomSize(selectedSizeTag())) {
        if (!heightLimitAccepts())
            return;
    } else {
        const QSizeF size = measuredTextSize();
        resizeLabel(size.width(), size.height());
    }
    m_previousTextViewContent = labelText();
    m_textViewChangeIsSerial = false;
    // Every accepted edit of the text or its attributes is a change of the design, whether
    // or not it changed the label's size: typing, paste, drop, the format controls, the
    // font and color dialogs, the placeholder button.
    reportEdit();
}

void MainViewController::textViewDidChangeTypingAttributes()
{
    if (!isCustomSize(selectedSizeTag())) {
        const QSizeF size = measuredTextSize();
        resizeLabel(size.width(), size.height());
    }
    m_previousTextViewContent = labelText();
}

void MainViewController::numberInputDidChange(QLineEdit* field)
{
    const QString typed = field->text();
    const FilteredInput filtered =
        filterNumberInput(fieldTag(field), typed, field->cursorPosition());
    if (filtered.text == typed)
        return;
    field->setText(filtered.text);
    if (filtered.caretPosition)
        field->setCursorPosition(*filtered.caretPosition);
}

void MainViewController::numberInputDidEndEditing(QLineEdit* field)
{
    const qint64 tag = fieldTag(field);
    const QString finished = finishedNumberInput(tag, field->text());
    if (finished != field->text())
        field->setText(finished);
    if (tag == kDecimalInputTag) {
        resizeLabel(customInputToPoints(m_ui->customWidthInput),
                    customInputToPoints(m_ui->customHeightInput));
    } else if (tag == kWholeNumberInputTag) {
        // The serial run follows the new quantity or first number; the change that makes
        // is the editor's own.
        m_textViewChangeIsSerial = true;
        replacePlaceholder(placeholderTextFromFields());
    }
    if (!m_isInitialLoad)
        changeDone();
}

QSizeF MainViewController::measuredTextSize() const
{
    const RichText text = labelText();
    return QSizeF(widestLineWidth(text), textHeight(text, textView()->textFont()));
}

void MainViewController::resizeLabel(double width, double height)
{
    if (!m_isInitialLoad && isSameSizeToTwoDecimals(QSizeF(width, height), labelSize()))
        return;
    const QPointF middle = QRectF(m_ui->labelContainer->geometry()).center();
    const QRectF frame(middle.x() - width / 2.0, middle.y() - height / 2.0, width, height);
    if (isCustomSize(selectedSizeTag())) {
        m_cell->setFrame(frame);
        // A smaller label keeps as much of the text as fits, without asking.
        LabelTextView* text = textView();
        const RichText trimmed = trimmedToLabel(labelText(), text->textFont(), width, height);
        text->truncate(trimmed.length());
        m_previousTextViewContent = labelText();
        text->clearUndoHistory();
    }
    m_cell->setFrame(frame);
    showSizeReadout(width, height);
    if (!m_isInitialLoad)
        changeDone();
}

void MainViewController::showSizeReadout(double width, double height)
{
    const SizeReadout readout = sizeReadout(width, height, m_usedMetric);
    const QString unit = unitShorthand(m_usedMetric);
    m_ui->customSizeLabel->setText(unit);
    m_ui->sizeLabel->setText(sizeLabelText(readout, unit));
    // Visible custom inputs hold what the user typed; hidden ones follow the label, so
    // that a switch to a custom size starts from the size it has.
    if (m_ui->customSizeInputContainer->isHidden()) {
        m_ui->customWidthInput->setText(readout.width);
        m_ui->customHeightInput->setText(readout.height);
    }
}

double MainViewController::customInputToPoints(const QLineEdit* input) const
{
    const std::optional<double> points = lomir::customInputToPoints(input->text(), m_usedMetric);
    if (!points)
        fatalError("MainViewController: the custom size input " +
                   input->objectName().toStdString() + " holds no number: \"" +
                   input->text().toStdString() + "\"");
    return *points;
}

QString MainViewController::placeholderTextFromFields() const
{
    return placeholderText(m_ui->quantityField->text(), m_ui->serialStartFromField->text());
}

void MainViewController::replacePlaceholder(const QString& replacement)
{
    const std::optional<SerialRun> run = findSerialRun(labelText().string());
    if (!run)
        return;
    textView()->insertText(replacement, run->range.location,
                           run->range.location + run->range.length);
}

bool MainViewController::heightLimitAccepts()
{
    LabelTextView* text = textView();
    const QSizeF size = labelSize();
    if (textFitsLabel(labelText(), text->textFont(), size.width(), size.height())) {
        m_previousTextViewContent = labelText();
        m_textViewChangeIsSerial = false;
        return true;
    }
    m_alerts->beep();
    // The refused change, and everything before it, can no longer be undone.
    text->clearUndoHistory();
    text->replaceText(m_previousTextViewContent);
    if (m_textViewChangeIsSerial) {
        // A longer serial number does not fit: the serial number goes altogether.
        replacePlaceholder(QString());
        m_alerts->runModal(EditorAlert{tr("Serial Exceeded Space Alert Message"),
                                       tr("Serial Exceeded Space Alert Informative"), false});
    } else {
        QSettings settings;
        const QString suppressed = QString::fromLatin1(kSpaceLimitAlertSuppressedKey);
        if (!settings.value(suppressed, false).toBool()) {
            const bool suppress = m_alerts->runModal(EditorAlert{
                tr("Space Limit Alert Message"), tr("Space Limit Alert Informative"), true});
            if (suppress)
                settings.setValue(suppressed, true);
        }
    }
    m_textViewChangeIsSerial = false;
    return false;
}

void MainViewController::reportEdit()
{
    // An editor of no window (a test's) has no document to tell.
    if (!m_isInitialLoad && m_document)
        changeDone();
}

void MainViewController::changeDone()
{
    if (!m_document)
        fatalError("MainViewController: a change was made before the editor found its document");
    m_document->updateChangeCount();
}

QLineEdit* MainViewController::focusedField() const
{
    auto* field = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    return field && isAncestorOf(field) ? field : nullptr;
}

} // namespace lomir
