#pragma once

// Document windows with their label editor for widget tests: opened from a record or a
// file, shown and active, the editor's warnings recorded instead of shown; and the ways a
// user works the editor's controls.

#include "core/document/content.h"
#include "core/document/document.h"
#include "core/label/labelsize.h"
#include "gui/app/cascadingwindowcontroller.h"
#include "gui/app/scene.h"
#include "gui/editor/centeredclipview.h"
#include "gui/editor/editoralerts.h"
#include "gui/editor/mainviewcontroller.h"
#include "gui/editor/zoomslider.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QList>
#include <QPointer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <memory>
#include <optional>
#include <vector>

namespace lomir::testing {

inline const QString kOwnType = QStringLiteral("com.brenvik.lomir-doc");

// Records the editor's warnings instead of showing them.
class RecordingAlerts final : public AlertPresenter
{
public:
    int beeps = 0;
    QList<EditorAlert> shown;
    // Whether the user ticks "do not show again" in alerts that offer it.
    bool ticksSuppression = false;

    void beep() override { ++beeps; }
    bool runModal(const EditorAlert& alert) override
    {
        shown.append(alert);
        return ticksSuppression && alert.showsSuppressionButton;
    }
};

inline void writeRecord(const QString& path, const Content& record)
{
    const Result<QByteArray> json = record.encode();
    if (!json)
        qFatal("cannot encode the record");
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(*json) != json->size())
        qFatal("cannot write the record");
}

// One open document window with its editor, its alerts recorded.
struct EditorWindow
{
    CascadingWindowController* window = nullptr;
    Document* document = nullptr;
    MainViewController* editor = nullptr;
    RecordingAlerts* alerts = nullptr;

    template <typename T> T* control(const char* name) const
    {
        T* found = editor->findChild<T*>(QString::fromLatin1(name));
        if (!found)
            qFatal("no control %s", name);
        return found;
    }
    QComboBox* sizeDropdown() const { return control<QComboBox>("sizeDropdown"); }
    QComboBox* metricDropdown() const { return control<QComboBox>("metricDropdown"); }
    QComboBox* outputSpacingDropdown() const { return control<QComboBox>("outputSpacingDropdown"); }
    QLineEdit* quantityField() const { return control<QLineEdit>("quantityField"); }
    QLineEdit* serialStartFromField() const { return control<QLineEdit>("serialStartFromField"); }
    QLineEdit* customWidthInput() const { return control<QLineEdit>("customWidthInput"); }
    QLineEdit* customHeightInput() const { return control<QLineEdit>("customHeightInput"); }
    QWidget* customSizeInputContainer() const
    {
        return control<QWidget>("customSizeInputContainer");
    }
    QLabel* customSizeLabel() const { return control<QLabel>("customSizeLabel"); }
    QLabel* sizeLabel() const { return control<QLabel>("sizeLabel"); }
    QLabel* zoomLabel() const { return control<QLabel>("zoomLabel"); }
    ZoomSlider* zoomSlider() const { return control<ZoomSlider>("zoomSlider"); }
    QPushButton* addSerializationButton() const
    {
        return control<QPushButton>("addSerializationButton");
    }
    CenteredClipView* labelContainer() const { return control<CenteredClipView>("labelContainer"); }
    LabelTextView* textView() const { return editor->textView(); }
    QString text() const { return editor->labelText().string(); }
};

// The windows a test opens, closed again by closeAll().
class EditorWindows
{
public:
    bool isValid() const { return m_files.isValid(); }
    // A path in a folder of the test's own.
    QString filePath(const QString& name) const { return m_files.filePath(name); }

    // A window for a document read from the record (or a new document), shown and
    // active, its keyboard focus where the window puts it.
    EditorWindow open(const std::optional<Content>& record = std::nullopt)
    {
        if (!record)
            return show(newWindow());
        const QString path = filePath(QStringLiteral("record%1.lomir").arg(m_windows.size()));
        writeRecord(path, *record);
        return openFile(path, kOwnType);
    }

    EditorWindow openFile(const QString& path, const QString& typeName)
    {
        EditorWindow opened = newWindow();
        const Status read = opened.document->readFromFile(path, typeName);
        if (!read)
            qFatal("cannot read %s: %s", qPrintable(path), qPrintable(read.error().message));
        return show(opened);
    }

    void closeAll()
    {
        for (const QPointer<CascadingWindowController>& window : m_windows)
            delete window.data();
        m_windows.clear();
    }

private:
    static EditorWindow newWindow()
    {
        EditorWindow made;
        made.window = instantiateController<CascadingWindowController>(kDocumentWindowScene);
        made.document = new Document(made.window);
        return made;
    }

    EditorWindow show(EditorWindow opened)
    {
        opened.window->setDocument(opened.document, nullptr);
        opened.editor = opened.window->editor();
        auto alerts = std::make_unique<RecordingAlerts>();
        opened.alerts = alerts.get();
        opened.editor->setAlertPresenter(std::move(alerts));
        opened.window->show();
        opened.window->activateWindow();
        if (!QTest::qWaitForWindowActive(opened.window))
            qFatal("the window did not become active");
        m_windows.emplace_back(opened.window);
        return opened;
    }

    QTemporaryDir m_files;
    std::vector<QPointer<CascadingWindowController>> m_windows;
};

// Picks the item the way a user does, through the open popup, so that picking the item
// already selected is reported too.
inline void chooseItem(QComboBox* popup, int index)
{
    popup->showPopup();
    QAbstractItemView* list = popup->view();
    QTRY_VERIFY(list->isVisible());
    list->setCurrentIndex(popup->model()->index(index, 0));
    QTest::keyClick(list, Qt::Key_Return);
    QTRY_VERIFY(!list->isVisible());
}

inline void typeIntoField(QLineEdit* field, const QString& text)
{
    field->setFocus(Qt::OtherFocusReason);
    QTest::keyClicks(field, text);
}

inline void replaceField(QLineEdit* field, const QString& text)
{
    field->setFocus(Qt::OtherFocusReason);
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
    QTest::keyClick(field, Qt::Key_Return);
}

inline void typeIntoLabel(const EditorWindow& opened, const QString& text)
{
    QWidget* label = opened.editor->labelTextWidget();
    label->setFocus(Qt::OtherFocusReason);
    QTest::keyClicks(label, text);
}

inline void pressInLabel(const EditorWindow& opened, Qt::Key key,
                         Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QWidget* label = opened.editor->labelTextWidget();
    label->setFocus(Qt::OtherFocusReason);
    QTest::keyClick(label, key, modifiers);
}

// A record of a label of a custom size, given in points, in millimetres written out in
// full (a document keeps what it was given; only typing rounds it).
inline Content customSizeRecord(double widthPoints, double heightPoints)
{
    Content record;
    record.dimensions = 1;
    record.metric = 0;
    record.width = QString::number(widthPoints * kPointToMillimetersConversionFactor, 'g', 17);
    record.height = QString::number(heightPoints * kPointToMillimetersConversionFactor, 'g', 17);
    return record;
}

} // namespace lomir::testing
