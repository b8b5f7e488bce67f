// Every edit of a label reaches its file: each way of changing the text, its attributes or
// the spacing marks the window edited, and the autosave writes the change to disk, whether
// or not the change resized the label.

#include "core/document/documentfile.h"
#include "core/document/documentformats.h"
#include "gui/app/appdelegate.h"
#include "gui/app/cascadingwindowcontroller.h"
#include "gui/editor/formatcontrols.h"
#include "gui/editor/labeltextview.h"
#include "gui/editor/mainviewcontroller.h"
#include "support/documentwindows.h"
#include "support/files.h"
#include "support/scripteduserinterface.h"

#include <QApplication>
#include <QClipboard>
#include <QColorDialog>
#include <QComboBox>
#include <QFontDialog>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <functional>

using namespace lomir;
using testing::ScriptedUserInterface;

namespace {

// Long enough for the autosave after the last change (a second and a half of quiet).
constexpr int kAutosaveWaitMs = 10000;

// A two-line label whose second line is the shorter, in the own type so that every
// attribute and setting is kept.
Content twoLineRecord()
{
    Content record;
    TextAttributes attributes;
    attributes.font =
        FontSpec{QStringLiteral("Arial"), QStringLiteral("ArialMT"), 12.0, false, false};
    record.labelText =
        AttributedString(RichText(QStringLiteral("Wildflower honey\nJar"), attributes));
    return record;
}

// The record in the file on disk now, or an empty one when it cannot be read.
Content recordOnDisk(const QString& path)
{
    const Result<Content> read = readLabelFile(path, QString(kLomirDocumentType));
    return read ? *read : Content();
}

RichText textOnDisk(const QString& path)
{
    return recordOnDisk(path).labelText.nsAttributedString();
}

// The attributes of the text on disk at a position.
TextAttributes attributesOnDiskAt(const QString& path, int position)
{
    const RichText text = textOnDisk(path);
    for (const AttributeRun& run : text.runs()) {
        if (position >= run.location && position < run.location + run.length)
            return run.attributes;
    }
    return {};
}

// Accepts the next modal dialog of the type once it is open, after letting the test set it
// up.
template <typename Dialog> void acceptNextDialog(std::function<void(Dialog&)> setUp)
{
    QTimer::singleShot(0, [setUp] {
        QTRY_VERIFY(qobject_cast<Dialog*>(QApplication::activeModalWidget()));
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        setUp(*dialog);
        dialog->accept();
    });
}

} // namespace

class EditsAreRecordedTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    std::unique_ptr<ScriptedUserInterface> m_userInterface;
    std::unique_ptr<AppDelegate> m_delegate;
    CascadingWindowController* m_window = nullptr;
    QString m_file;

    MainViewController* editor() const { return m_window->editor(); }
    LabelTextView* textView() const { return editor()->textView(); }
    QWidget* textWidget() const { return editor()->labelTextWidget(); }

    // Opens a fresh copy of the two-line label; the caret is at the end of its text.
    void openLabel()
    {
        static int count = 0;
        m_file = m_dir.filePath(QStringLiteral("label%1.lomir").arg(++count));
        QVERIFY(writeLabelFile(m_file, twoLineRecord(), QString(kLomirDocumentType)));
        m_userInterface = std::make_unique<ScriptedUserInterface>();
        m_delegate = std::make_unique<AppDelegate>(*m_userInterface);
        m_window = testing::launch(*m_delegate, {m_file});
        QVERIFY(m_window);
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window));
        QVERIFY(!m_window->isWindowModified());
    }

    // The window shows the edit, and the autosave writes it.
    void verifyRecorded(const std::function<bool()>& onDisk)
    {
        QVERIFY(m_window->isWindowModified());
        QTRY_VERIFY_WITH_TIMEOUT(onDisk(), kAutosaveWaitMs);
        QTRY_VERIFY(!m_window->isWindowModified());
    }

    void selectAll() { editor()->selectAllAction()->trigger(); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        testing::nameTestApplication(QStringLiteral("EditsAreRecordedTest"));
    }

    void init() { testing::resetApplicationState(); }
    void cleanup()
    {
        m_window = nullptr;
        testing::resetApplicationState();
        m_delegate.reset();
        m_userInterface.reset();
    }

    void typingOnAShortLine()
    {
        openLabel();
        const QSizeF sizeBefore = editor()->labelSize();
        QTest::keyClicks(textWidget(), QStringLiteral("XY"));
        // The second line is still shorter than the first: the label keeps its size.
        QCOMPARE(editor()->labelSize(), sizeBefore);
        verifyRecorded([this] { return textOnDisk(m_file).string().endsWith(u"JarXY"); });
    }

    void pasting()
    {
        openLabel();
        QApplication::clipboard()->setText(QStringLiteral("42"));
        editor()->pasteAction()->trigger();
        verifyRecorded([this] { return textOnDisk(m_file).string().endsWith(u"Jar42"); });
    }

    void deleting()
    {
        openLabel();
        QTest::keyClick(textWidget(), Qt::Key_Backspace);
        verifyRecorded([this] { return textOnDisk(m_file).string().endsWith(u"\nJa"); });
    }

    void styles_data()
    {
        QTest::addColumn<QString>("style");
        QTest::addColumn<bool>("byShortcut");
        QTest::newRow("bold, toolbar") << QStringLiteral("bold") << false;
        QTest::newRow("bold, Ctrl+B") << QStringLiteral("bold") << true;
        QTest::newRow("italic, toolbar") << QStringLiteral("italic") << false;
        QTest::newRow("italic, Ctrl+I") << QStringLiteral("italic") << true;
        QTest::newRow("underline, toolbar") << QStringLiteral("underline") << false;
        QTest::newRow("underline, Ctrl+U") << QStringLiteral("underline") << true;
        QTest::newRow("strikethrough, toolbar") << QStringLiteral("strikethrough") << false;
    }

    void styles()
    {
        QFETCH(QString, style);
        QFETCH(bool, byShortcut);
        openLabel();
        selectAll();
        FormatControls* format = editor()->formatControls();
        const std::map<QString, std::pair<QAction*, Qt::Key>> actions = {
            {QStringLiteral("bold"), {format->boldAction(), Qt::Key_B}},
            {QStringLiteral("italic"), {format->italicAction(), Qt::Key_I}},
            {QStringLiteral("underline"), {format->underlineAction(), Qt::Key_U}},
            {QStringLiteral("strikethrough"), {format->strikethroughAction(), Qt::Key_unknown}},
        };
        const auto& [action, key] = actions.at(style);
        if (byShortcut)
            QTest::keyClick(textWidget(), key, Qt::ControlModifier);
        else
            action->trigger();
        verifyRecorded([this, style] {
            const TextAttributes attributes = attributesOnDiskAt(m_file, 18);
            if (style == u"bold")
                return attributes.font && attributes.font->bold;
            if (style == u"italic")
                return attributes.font && attributes.font->italic;
            if (style == u"underline")
                return attributes.underline != LineStyle::None;
            return attributes.strikethrough != LineStyle::None;
        });
    }

    void alignment()
    {
        openLabel();
        editor()->formatControls()->alignmentAction(Qt::AlignHCenter)->trigger();
        verifyRecorded([this] {
            const TextAttributes attributes = attributesOnDiskAt(m_file, 18);
            return attributes.paragraph && attributes.paragraph->alignment == TextAlignment::Center;
        });
    }

    void textColorFromTheColorDialog()
    {
        openLabel();
        selectAll();
        acceptNextDialog<QColorDialog>(
            [](QColorDialog& dialog) { dialog.setCurrentColor(QColor(200, 30, 40)); });
        editor()->formatControls()->colorAction()->trigger();
        verifyRecorded([this] {
            const TextAttributes attributes = attributesOnDiskAt(m_file, 18);
            return attributes.foreground == Rgba{200, 30, 40, 255};
        });
    }

    void fontFromTheFontDialog()
    {
        openLabel();
        selectAll();
        acceptNextDialog<QFontDialog>([](QFontDialog& dialog) {
            QFont font = dialog.currentFont();
            font.setPointSizeF(14.0);
            dialog.setCurrentFont(font);
        });
        editor()->formatControls()->fontDialogAction()->trigger();
        verifyRecorded([this] {
            const TextAttributes attributes = attributesOnDiskAt(m_file, 18);
            return attributes.font && attributes.font->pointSize == 14.0;
        });
    }

    void serialPlaceholderButton()
    {
        openLabel();
        auto* button = editor()->findChild<QPushButton*>(QStringLiteral("addSerializationButton"));
        QVERIFY(button);
        button->click();
        verifyRecorded([this] { return textOnDisk(m_file).string().contains(u"#\u200D"); });
    }

    void spacingPopup()
    {
        openLabel();
        auto* spacing = editor()->findChild<QComboBox*>(QStringLiteral("outputSpacingDropdown"));
        QVERIFY(spacing);
        const qint64 before = recordOnDisk(m_file).outputSpacing;
        const int other = spacing->currentIndex() == 0 ? 1 : 0;
        spacing->setCurrentIndex(other);
        Q_EMIT spacing->activated(other);
        verifyRecorded([this, before] { return recordOnDisk(m_file).outputSpacing != before; });
    }

    void undoAndRedoAreOfferedOnlyWithSomethingToUndo()
    {
        openLabel();
        QAction* undo = editor()->undoAction();
        QAction* redo = editor()->redoAction();
        QVERIFY(!undo->isEnabled());
        QVERIFY(!redo->isEnabled());
        QTest::keyClicks(textWidget(), QStringLiteral("Z"));
        QVERIFY(undo->isEnabled());
        QVERIFY(!redo->isEnabled());
        undo->trigger();
        QVERIFY(editor()->labelText().string().endsWith(u"\nJar"));
        QVERIFY(!undo->isEnabled());
        QVERIFY(redo->isEnabled());
        redo->trigger();
        QVERIFY(editor()->labelText().string().endsWith(u"JarZ"));
        QVERIFY(!redo->isEnabled());
    }

    void zoomIsNotAChange()
    {
        openLabel();
        editor()->zoomInAction()->trigger();
        QVERIFY(!m_window->isWindowModified());
        QVERIFY(!m_window->document()->isModified());
    }
};

QTEST_MAIN(EditsAreRecordedTest)
#include "tst_editsarerecorded.moc"
