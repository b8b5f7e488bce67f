#include "core/app/translations.h"
#include "core/document/content.h"
#include "core/document/document.h"
#include "core/document/richtext/richtextdocument.h"
#include "core/label/appearance.h"
#include "core/label/labellimits.h"
#include "core/layout/labeltextlayout.h"
#include "core/layout/measurement.h"
#include "core/layout/serialnumber.h"
#include "gui/app/cascadingwindowcontroller.h"
#include "gui/app/scene.h"
#include "gui/editor/centeredclipview.h"
#include "gui/editor/editoralerts.h"
#include "gui/editor/formatcontrols.h"
#include "gui/editor/labelcell.h"
#include "gui/editor/labeltextview.h"
#include "gui/editor/mainviewcontroller.h"
#include "gui/editor/zoomslider.h"
#include "support/editorwindows.h"
#include "support/fatalstop.h"
#include "support/samplelabels.h"

#include <QAbstractItemView>
#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QGraphicsScene>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <QTimer>
#include <QToolBar>
#include <cmath>
#include <memory>

using namespace lomir;
using namespace lomir::testing;

namespace {

const QString kPlainTextType = QStringLiteral("public.plain-text");
const QString kRtfType = QStringLiteral("public.rtf");

QString placeholderUnits(int units)
{
    return serialPlaceholder(units);
}

class TestMainViewController : public QObject
{
    Q_OBJECT

private:
    EditorWindows m_editors;

    EditorWindow openWindow(const std::optional<Content>& record = std::nullopt)
    {
        return m_editors.open(record);
    }

    EditorWindow openFile(const QString& path, const QString& typeName)
    {
        return m_editors.openFile(path, typeName);
    }

    static int placeholderRunUnits(const QString& text)
    {
        const std::optional<SerialRun> run = findSerialRun(text);
        return run ? int(run->units) : 0;
    }

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QVERIFY(m_editors.isValid());
        QVERIFY(installTranslations(*qApp));
    }

    void init()
    {
        QSettings settings;
        settings.remove(QString::fromLatin1(kAppearanceStyleKey));
        settings.remove(QString::fromLatin1(kSpaceLimitAlertSuppressedKey));
    }

    void cleanup() { m_editors.closeAll(); }

    // --- Opening a window ---

    void aNewWindowHasTheFocusInTheLabel()
    {
        const EditorWindow opened = openWindow();
        QCOMPARE(QApplication::focusWidget(), opened.editor->labelTextWidget());
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("Jam"));
        QCOMPARE(opened.text(), QStringLiteral("Jam"));
    }

    void aNewDocumentShowsTheRecordDefaults()
    {
        const EditorWindow opened = openWindow();
        QCOMPARE(opened.quantityField()->text(), QStringLiteral("10"));
        QCOMPARE(opened.serialStartFromField()->text(), QStringLiteral("0"));
        QCOMPARE(opened.sizeDropdown()->currentIndex(), 0);
        QCOMPARE(opened.metricDropdown()->currentIndex(), 0);
        QCOMPARE(opened.outputSpacingDropdown()->currentIndex(), 1);
        QCOMPARE(opened.zoomSlider()->doubleValue(), 500.0);
        QCOMPARE(opened.zoomLabel()->text(), QStringLiteral("Zoom (500%)"));
        QVERIFY(opened.customSizeInputContainer()->isHidden());
        // An empty label that follows its text is one line of Arial 4 high.
        const QSizeF size = opened.editor->labelSize();
        QCOMPARE(size.width(), widestLineWidth(RichText()));
        QCOMPARE(size.height(), textHeight(RichText(), labelFont()));
        QVERIFY(!opened.document->isModified());
    }

    void typingInAnOpenedLabelGoesOnFromItsEnd()
    {
        Content record;
        record.labelText = AttributedString(RichText(QStringLiteral("Plum"), arial(6.0)));
        const EditorWindow opened = openWindow(record);
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral(" jam"));
        QCOMPARE(opened.editor->labelText(), RichText(QStringLiteral("Plum jam"), arial(6.0)));
    }

    void typingInAnEmptyLabelUsesArial4()
    {
        const EditorWindow opened = openWindow();
        typeIntoLabel(opened, QStringLiteral("a"));
        QCOMPARE(opened.editor->labelText().attributesAt(0).font, labelFont());
        QVERIFY(opened.document->isModified());
    }

    // --- Label sizes and units ---

    void sizeReadoutRoundsUp_data()
    {
        QTest::addColumn<QString>("inches");
        QTest::addColumn<QString>("millimeterReadout");
        QTest::addColumn<QString>("inchReadout");
        // 1 inch is 72 points, half an inch 36, and 1.3888888888888889 inches 100
        // points.
        QTest::newRow("72 pt") << QStringLiteral("1") << QStringLiteral("25.40")
                               << QStringLiteral("1.00");
        QTest::newRow("36 pt") << QStringLiteral("0.5") << QStringLiteral("12.70")
                               << QStringLiteral("0.50");
        QTest::newRow("100 pt") << QStringLiteral("1.3888888888888889") << QStringLiteral("35.28")
                                << QStringLiteral("1.39");
    }

    void sizeReadoutRoundsUp()
    {
        QFETCH(QString, inches);
        QFETCH(QString, millimeterReadout);
        QFETCH(QString, inchReadout);
        Content record;
        record.dimensions = 1;
        record.metric = 1;
        record.width = inches;
        record.height = inches;
        const EditorWindow opened = openWindow(record);
        QCOMPARE(opened.sizeLabel()->text(), QStringLiteral("%1 x %1 in").arg(inchReadout));
        QCOMPARE(opened.customSizeLabel()->text(), QStringLiteral("in"));
        chooseItem(opened.metricDropdown(), 0);
        QCOMPARE(opened.sizeLabel()->text(), QStringLiteral("%1 x %1 mm").arg(millimeterReadout));
        QCOMPARE(opened.customSizeLabel()->text(), QStringLiteral("mm"));
    }

    void aCustomWidthOf100MillimetersReadsOutAsAHairMore()
    {
        Content record;
        record.dimensions = 1;
        record.width = QStringLiteral("100");
        record.height = QStringLiteral("10");
        const EditorWindow opened = openWindow(record);
        QCOMPARE(opened.editor->labelSize().width(), 283.46456692913387);
        QVERIFY(opened.sizeLabel()->text().startsWith(QStringLiteral("100.01 x ")));
    }

    void switchingTheUnitKeepsTheSizeAndTheVisibleInputs()
    {
        const EditorWindow opened = openWindow(customSizeRecord(100.0, 50.0));
        const QSizeF before = opened.editor->labelSize();
        const QString width = opened.customWidthInput()->text();
        const QString height = opened.customHeightInput()->text();
        QSignalSpy changes(opened.document, &Document::changeDone);
        chooseItem(opened.metricDropdown(), 1);
        QCOMPARE(opened.editor->labelSize(), before);
        QCOMPARE(opened.customWidthInput()->text(), width);
        QCOMPARE(opened.customHeightInput()->text(), height);
        QCOMPARE(opened.customSizeLabel()->text(), QStringLiteral("in"));
        QCOMPARE(changes.count(), 1);
    }

    void choosingTheSameSizeAgainDoesNothing()
    {
        const EditorWindow opened = openWindow();
        typeIntoLabel(opened, QStringLiteral("Plum"));
        chooseItem(opened.sizeDropdown(), 6);
        QCOMPARE(opened.editor->labelText().attributesAt(0).font->pointSize, 4.0);
        // The text is made larger by hand; picking the same preset does not force 4
        // pt again, nor mark a change.
        opened.textView()->selectAll();
        QTextCharFormat larger;
        larger.setFontPointSize(12.0);
        opened.textView()->mergeCharFormat(larger);
        const QSizeF size = opened.editor->labelSize();
        QSignalSpy changes(opened.document, &Document::changeDone);
        chooseItem(opened.sizeDropdown(), 6);
        QCOMPARE(opened.editor->labelText().attributesAt(0).font->pointSize, 12.0);
        QCOMPARE(opened.editor->labelSize(), size);
        QCOMPARE(changes.count(), 0);
    }

    void presetsForceTheirFontSizes_data()
    {
        QTest::addColumn<int>("item");
        QTest::addColumn<double>("pointSize");
        QTest::newRow("tag 4") << 4 << 9.0;
        QTest::newRow("tag 5") << 5 << 7.0;
        QTest::newRow("tag 6") << 6 << 4.0;
        QTest::newRow("tag 7") << 7 << 8.0;
    }

    void presetsForceTheirFontSizes()
    {
        QFETCH(int, item);
        QFETCH(double, pointSize);
        Content record;
        RichText text(QStringLiteral("Big "), arial(20.0, true));
        text.append(QStringLiteral("small"), arial(3.0));
        record.labelText = AttributedString(text);
        const EditorWindow opened = openWindow(record);
        chooseItem(opened.sizeDropdown(), item);
        const RichText sized = opened.editor->labelText();
        QCOMPARE(sized.runs().size(), size_t(2));
        QCOMPARE(sized.attributesAt(0).font->pointSize, pointSize);
        QVERIFY(sized.attributesAt(0).font->bold);
        QCOMPARE(sized.attributesAt(4).font->pointSize, pointSize);
        QCOMPARE(opened.editor->labelSize(),
                 QSizeF(widestLineWidth(sized), textHeight(sized, opened.textView()->textFont())));
    }

    // --- Number fields ---

    void aLetterInTheQuantityIsRefusedAndTheCaretStays()
    {
        const EditorWindow opened = openWindow();
        QLineEdit* quantity = opened.quantityField();
        replaceField(quantity, QStringLiteral("125"));
        quantity->setFocus(Qt::OtherFocusReason);
        quantity->setCursorPosition(1);
        QTest::keyClicks(quantity, QStringLiteral("x"));
        QCOMPARE(quantity->text(), QStringLiteral("125"));
        QCOMPARE(quantity->cursorPosition(), 1);
    }

    void aLoneZeroIsRefusedAndAnEmptyQuantityEndsAsOne()
    {
        const EditorWindow opened = openWindow();
        QLineEdit* quantity = opened.quantityField();
        quantity->setFocus(Qt::OtherFocusReason);
        quantity->selectAll();
        QTest::keyClick(quantity, Qt::Key_Delete);
        QTest::keyClicks(quantity, QStringLiteral("0"));
        QCOMPARE(quantity->text(), QString());
        QSignalSpy changes(opened.document, &Document::changeDone);
        QTest::keyClick(quantity, Qt::Key_Return);
        QCOMPARE(quantity->text(), QStringLiteral("1"));
        QCOMPARE(changes.count(), 1);
    }

    void aCustomInputKeepsTheLastDecimalPoint()
    {
        const EditorWindow opened = openWindow(customSizeRecord(100.0, 50.0));
        QLineEdit* width = opened.customWidthInput();
        width->setFocus(Qt::OtherFocusReason);
        width->selectAll();
        QTest::keyClick(width, Qt::Key_Delete);
        QTest::keyClicks(width, QStringLiteral("1.2.5"));
        QCOMPARE(width->text(), QStringLiteral("12.5"));
        QTest::keyClick(width, Qt::Key_Return);
        QCOMPARE(width->text(), QStringLiteral("12.50"));
        QCOMPARE(opened.editor->labelSize().width(), 12.5 / kPointToMillimetersConversionFactor);
    }

    void theSerialRunHasTheDigitsTheNumbersNeed_data()
    {
        QTest::addColumn<QString>("quantity");
        QTest::addColumn<QString>("start");
        QTest::addColumn<int>("units");
        QTest::newRow("9 from 1") << QStringLiteral("9") << QStringLiteral("1") << 2;
        QTest::newRow("8 from 1") << QStringLiteral("8") << QStringLiteral("1") << 1;
        QTest::newRow("100, no start") << QStringLiteral("100") << QString() << 3;
    }

    void theSerialRunHasTheDigitsTheNumbersNeed()
    {
        QFETCH(QString, quantity);
        QFETCH(QString, start);
        QFETCH(int, units);
        // A document keeps the first number as typed, an empty one too.
        Content record;
        record.quantity = quantity;
        record.serialStartFrom = start;
        const EditorWindow opened = openWindow(record);
        typeIntoLabel(opened, QStringLiteral("No. "));
        QTest::mouseClick(opened.addSerializationButton(), Qt::LeftButton);
        QCOMPARE(opened.text(), QStringLiteral("No. ") + placeholderUnits(units));
    }

    void typedNumbersDecideTheSerialDigits()
    {
        const EditorWindow opened = openWindow();
        replaceField(opened.quantityField(), QStringLiteral("9"));
        replaceField(opened.serialStartFromField(), QStringLiteral("1"));
        typeIntoLabel(opened, QStringLiteral("No. "));
        QTest::mouseClick(opened.addSerializationButton(), Qt::LeftButton);
        QCOMPARE(opened.text(), QStringLiteral("No. ") + placeholderUnits(2));
        replaceField(opened.quantityField(), QStringLiteral("8"));
        QCOMPARE(opened.text(), QStringLiteral("No. ") + placeholderUnits(1));
    }

    void aNewQuantityResizesTheRunInPlace()
    {
        Content record;
        record.quantity = QStringLiteral("5");
        record.serialStartFrom = QString();
        const EditorWindow opened = openWindow(record);
        typeIntoLabel(opened, QStringLiteral("A"));
        QTest::mouseClick(opened.addSerializationButton(), Qt::LeftButton);
        typeIntoLabel(opened, QStringLiteral("Z"));
        QCOMPARE(opened.text(), QStringLiteral("A") + placeholderUnits(1) + QStringLiteral("Z"));
        replaceField(opened.quantityField(), QStringLiteral("500"));
        QCOMPARE(opened.text(), QStringLiteral("A") + placeholderUnits(3) + QStringLiteral("Z"));
        // The replacement is an edit: it can be undone.
        opened.textView()->undo();
        QCOMPARE(opened.text(), QStringLiteral("A") + placeholderUnits(1) + QStringLiteral("Z"));
    }

    void aTextWithoutARunIsLeftAlone()
    {
        const EditorWindow opened = openWindow();
        typeIntoLabel(opened, QStringLiteral("No serial"));
        replaceField(opened.quantityField(), QStringLiteral("500"));
        QCOMPARE(opened.text(), QStringLiteral("No serial"));
    }

    void addingASerialReplacesTheEarlierRun()
    {
        const EditorWindow opened = openWindow();
        typeIntoLabel(opened, QStringLiteral("A"));
        QTest::mouseClick(opened.addSerializationButton(), Qt::LeftButton);
        typeIntoLabel(opened, QStringLiteral(" B"));
        // Removing the earlier run leaves the caret where the run was, and the new run
        // goes there: a label keeps one serial number.
        QTest::mouseClick(opened.addSerializationButton(), Qt::LeftButton);
        QCOMPARE(opened.text(), QStringLiteral("A") + placeholderUnits(2) + QStringLiteral(" B"));
        QCOMPARE(opened.text().count(QLatin1Char('#')), 2);
    }

    // --- Zoom ---

    void aZoomOf149AndAHalfShowsAt150Percent()
    {
        Content record;
        record.magnification = 149.5;
        const EditorWindow opened = openWindow(record);
        QCOMPARE(opened.labelContainer()->magnification(), 1.5);
        QCOMPARE(opened.zoomLabel()->text(), QStringLiteral("Zoom (150%)"));
        QCOMPARE(opened.editor->currentRecord().magnification, 149.5);
    }

    void atActualSizeAPointIsAPointOfTheScreen()
    {
        const EditorWindow opened = openWindow();
        typeIntoLabel(opened, QStringLiteral("Quince jelly"));
        QSignalSpy changes(opened.document, &Document::changeDone);
        opened.editor->actualSizeAction()->trigger();
        QCOMPARE(opened.zoomSlider()->doubleValue(), 100.0);
        QCOMPARE(opened.zoomLabel()->text(), QStringLiteral("Zoom (100%)"));
        CenteredClipView* view = opened.labelContainer();
        const QRectF onScreen =
            view->viewportTransform().mapRect(opened.editor->labelCell()->frame());
        const double pixelsPerPoint = view->logicalDpiX() / 72.0;
        QVERIFY(std::abs(onScreen.width() - opened.editor->labelSize().width() * pixelsPerPoint) <=
                1.0);
        opened.editor->zoomInAction()->trigger();
        QCOMPARE(opened.zoomSlider()->doubleValue(), 125.0);
        opened.editor->zoomOutAction()->trigger();
        opened.editor->zoomOutAction()->trigger();
        QCOMPARE(opened.zoomSlider()->doubleValue(), 75.0);
        QCOMPARE(changes.count(), 0);
    }

    void movingTheZoomSliderZooms()
    {
        const EditorWindow opened = openWindow();
        ZoomSlider* slider = opened.zoomSlider();
        slider->setFocus(Qt::OtherFocusReason);
        const double before = slider->doubleValue();
        QTest::keyClick(slider, Qt::Key_PageDown);
        QCOMPARE(slider->doubleValue(), before - slider->pageStep());
        QCOMPARE(opened.labelContainer()->magnification(), slider->doubleValue() / 100.0);
    }

    // --- The label's size and place ---

    void aResizeToTheSameSizeDoesNothing()
    {
        // Moving the caret between runs of different fonts changes what new typing
        // takes; the label is measured again and keeps its size, and no change is
        // reported.
        Content record;
        RichText text(QStringLiteral("ab"), arial(6.0));
        text.append(QStringLiteral("cd"), arial(6.0, true));
        record.labelText = AttributedString(text);
        const EditorWindow opened = openWindow(record);
        const QSizeF size = opened.editor->labelSize();
        QSignalSpy changes(opened.document, &Document::changeDone);
        pressInLabel(opened, Qt::Key_Home, Qt::ControlModifier);
        pressInLabel(opened, Qt::Key_Right);
        pressInLabel(opened, Qt::Key_End);
        QCOMPARE(opened.editor->labelSize(), size);
        QCOMPARE(changes.count(), 0);
    }

    void theLabelIsCenteredInItsContainer()
    {
        const EditorWindow opened = openWindow(customSizeRecord(100.0, 50.0));
        opened.editor->actualSizeAction()->trigger();
        CenteredClipView* view = opened.labelContainer();
        const QRectF onScreen =
            view->viewportTransform().mapRect(opened.editor->labelCell()->frame());
        const QPointF middle = QRectF(view->viewport()->rect()).center();
        QVERIFY2(std::abs(onScreen.center().x() - middle.x()) <= 1.0,
                 qPrintable(QStringLiteral("%1 vs %2").arg(onScreen.center().x()).arg(middle.x())));
        QVERIFY(std::abs(onScreen.center().y() - middle.y()) <= 1.0);
    }

    void theLabelDoesNotResizeWithItsContainer()
    {
        const EditorWindow opened = openWindow(customSizeRecord(100.0, 50.0));
        const QSizeF size = opened.editor->labelSize();
        opened.window->resize(opened.window->size() + QSize(200, 150));
        QTRY_COMPARE(opened.labelContainer()->width() > 0, true);
        QCoreApplication::processEvents();
        QCOMPARE(opened.editor->labelSize(), size);
    }

    // --- Following the caret ---

    void theCaretIsScrolledIntoView()
    {
        Content record = customSizeRecord(400.0, 20.0);
        record.magnification = 1000.0;
        const EditorWindow opened = openWindow(record);
        typeIntoLabel(opened, QString(90, QLatin1Char('W')));
        const LabelTextView* textView = opened.textView();
        const QRectF caret = textView->mapRectToScene(textView->caretRect());
        QVERIFY(opened.labelContainer()->visibleRect().contains(caret.center()));
        pressInLabel(opened, Qt::Key_Home);
        const QRectF start = textView->mapRectToScene(textView->caretRect());
        QVERIFY(opened.labelContainer()->visibleRect().contains(start.center()));
    }

    // --- Limits and alerts ---

    void aLabelOneLineHighRefusesASecondLine()
    {
        const double oneLine = minimumTextHeight(labelFont());
        const EditorWindow opened = openWindow(customSizeRecord(100.0, oneLine + 1e-9));
        typeIntoLabel(opened, QStringLiteral("One line"));
        QCOMPARE(opened.text(), QStringLiteral("One line"));
        QCOMPARE(opened.alerts->beeps, 0);
        pressInLabel(opened, Qt::Key_Return);
        QCOMPARE(opened.text(), QStringLiteral("One line"));
        QCOMPARE(opened.alerts->beeps, 1);
        QCOMPARE(opened.alerts->shown.size(), qsizetype(1));
        const EditorAlert& alert = opened.alerts->shown.first();
        QVERIFY(alert.showsSuppressionButton);
        QCOMPARE(alert.message, QCoreApplication::translate("lomir::MainViewController",
                                                            "Space Limit Alert Message"));
        QVERIFY(alert.message != QStringLiteral("Space Limit Alert Message"));
        QVERIFY(!alert.informativeText.isEmpty());
        // The refused change and everything before it can no longer be undone.
        QVERIFY(!opened.textView()->document()->isUndoAvailable());
        // Typing goes on after the refusal.
        typeIntoLabel(opened, QStringLiteral("!"));
        QCOMPARE(opened.text(), QStringLiteral("One line!"));
    }

    void afterTheSuppressionBoxWasTickedRefusalsOnlyBeep()
    {
        const double oneLine = minimumTextHeight(labelFont());
        const EditorWindow opened = openWindow(customSizeRecord(100.0, oneLine + 1e-9));
        opened.alerts->ticksSuppression = true;
        typeIntoLabel(opened, QStringLiteral("Full"));
        pressInLabel(opened, Qt::Key_Return);
        QCOMPARE(opened.alerts->shown.size(), qsizetype(1));
        QVERIFY(QSettings().value(QString::fromLatin1(kSpaceLimitAlertSuppressedKey)).toBool());
        pressInLabel(opened, Qt::Key_Return);
        QCOMPARE(opened.alerts->beeps, 2);
        QCOMPARE(opened.alerts->shown.size(), qsizetype(1));
        QCOMPARE(opened.text(), QStringLiteral("Full"));
    }

    void aSerialNumberThatNoLongerFitsIsRemoved()
    {
        QSettings().setValue(QString::fromLatin1(kSpaceLimitAlertSuppressedKey), true);
        // A label exactly as wide as "No. " and two digits in Arial 12, one line
        // high.
        const RichText twoDigits(QStringLiteral("No. ") + placeholderUnits(2), arial(12.0));
        Content record = customSizeRecord(widestLineWidth(twoDigits) + 0.5,
                                          minimumTextHeight(arial(12.0).font.value()) + 0.5);
        record.labelText = AttributedString(twoDigits);
        record.quantity = QStringLiteral("20");
        record.serialStartFrom = QStringLiteral("");
        const EditorWindow opened = openWindow(record);
        QCOMPARE(opened.text(), twoDigits.string());
        replaceField(opened.quantityField(), QStringLiteral("200"));
        QCOMPARE(opened.text(), QStringLiteral("No. "));
        QCOMPARE(opened.alerts->beeps, 1);
        QCOMPARE(opened.alerts->shown.size(), qsizetype(1));
        const EditorAlert& alert = opened.alerts->shown.first();
        QVERIFY(!alert.showsSuppressionButton);
        QCOMPARE(alert.message, QCoreApplication::translate("lomir::MainViewController",
                                                            "Serial Exceeded Space Alert Message"));
        QVERIFY(alert.message != QStringLiteral("Serial Exceeded Space Alert Message"));
    }

    void makingACustomLabelSmallerTrimsTheText()
    {
        const EditorWindow opened = openWindow(customSizeRecord(60.0, 40.0));
        typeIntoLabel(opened, QStringLiteral("Elderflower cordial, bottled in June"));
        const QString typed = opened.text();
        QCOMPARE(typed, QStringLiteral("Elderflower cordial, bottled in June"));
        const double oneLine = minimumTextHeight(labelFont());
        replaceField(opened.customHeightInput(),
                     QString::number(oneLine * 1.01 * kPointToMillimetersConversionFactor, 'f', 2));
        const QString trimmed = opened.text();
        QVERIFY(trimmed.size() < typed.size());
        QVERIFY(!trimmed.isEmpty());
        QVERIFY(typed.startsWith(trimmed));
        const QSizeF size = opened.editor->labelSize();
        QVERIFY(
            textFitsLabel(opened.editor->labelText(), labelFont(), size.width(), size.height()));
        // One more character would not have fitted.
        const RichText oneMore(typed.left(trimmed.size() + 1), arial(4.0));
        QVERIFY(!textFitsLabel(oneMore, labelFont(), size.width(), size.height()));
        QCOMPARE(opened.alerts->beeps, 0);
        QCOMPARE(opened.alerts->shown.size(), qsizetype(0));
        QVERIFY(!opened.textView()->document()->isUndoAvailable());
    }

    void anEmptyLabelIsNeverTrimmedFurther()
    {
        const EditorWindow opened = openWindow(customSizeRecord(60.0, 40.0));
        replaceField(opened.customHeightInput(), QStringLiteral("0.1"));
        QCOMPARE(opened.text(), QString());
        QCOMPARE(opened.editor->labelSize().height(), 0.1 / kPointToMillimetersConversionFactor);
        QCOMPARE(opened.alerts->beeps, 0);
    }

    void aLabelThatFollowsItsTextNeverRefuses()
    {
        const EditorWindow opened = openWindow();
        typeIntoLabel(opened, QStringLiteral("Line"));
        for (int line = 0; line < 30; ++line)
            pressInLabel(opened, Qt::Key_Return);
        typeIntoLabel(opened, QStringLiteral("Last"));
        QCOMPARE(opened.text().count(QLatin1Char('\n')), 30);
        QCOMPARE(opened.alerts->beeps, 0);
        const RichText text = opened.editor->labelText();
        QCOMPARE(opened.editor->labelSize().height(), textHeight(text, labelFont()));
    }

    void theMessageBoxHasOneOkButtonAndASuppressionBox()
    {
        QWidget parent;
        MessageBoxAlertPresenter presenter(&parent);
        QString buttonText;
        bool sawCheckBox = false;
        QTimer::singleShot(0, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box);
            QCOMPARE(box->icon(), QMessageBox::Warning);
            QCOMPARE(box->buttons().size(), qsizetype(1));
            buttonText = box->buttons().first()->text();
            QVERIFY(box->checkBox());
            sawCheckBox = true;
            box->checkBox()->setChecked(true);
            box->buttons().first()->click();
        });
        const bool suppressed = presenter.runModal(
            EditorAlert{QStringLiteral("Message"), QStringLiteral("Informative"), true});
        QVERIFY(sawCheckBox);
        QVERIFY(suppressed);
        QCOMPARE(buttonText, QStringLiteral("OK"));

        QTimer::singleShot(0, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box);
            QVERIFY(!box->checkBox());
            box->buttons().first()->click();
        });
        QVERIFY(!presenter.runModal(
            EditorAlert{QStringLiteral("Message"), QStringLiteral("Informative"), false}));
    }

    // --- Appearance ---

    void theShadowFollowsTheAppearanceSetting()
    {
        QSettings().setValue(QString::fromLatin1(kAppearanceStyleKey), QStringLiteral("Dark"));
        {
            const EditorWindow dark = openWindow();
            QCOMPARE(dark.editor->labelCell()->shadowColor().rgb(), QColor(Qt::black).rgb());
            QCOMPARE(dark.editor->labelCell()->shadowColor().alpha(), 128);
        }
        cleanup();
        QSettings().remove(QString::fromLatin1(kAppearanceStyleKey));
        const EditorWindow light = openWindow();
        QCOMPARE(light.editor->labelCell()->shadowColor().rgb(), labelShadowColor(false).rgb());
        QVERIFY(labelShadowColor(false).rgb() != QColor(Qt::black).rgb());
    }

    // One label shown in the light and the dark appearance at 100% and 500%. The card is
    // white and centred in both, with a gray shadow in the light appearance and a black
    // one in the dark. With LOMIR_SCREENSHOT_DIR set, the windows are saved there.
    void screenshotsOfOneLabel_data()
    {
        QTest::addColumn<bool>("dark");
        QTest::addColumn<double>("zoom");
        QTest::newRow("light 100%") << false << 100.0;
        QTest::newRow("light 500%") << false << 500.0;
        QTest::newRow("dark 100%") << true << 100.0;
        QTest::newRow("dark 500%") << true << 500.0;
    }

    void screenshotsOfOneLabel()
    {
        QFETCH(bool, dark);
        QFETCH(double, zoom);
        const QPalette light = QApplication::palette();
        if (dark) {
            QSettings().setValue(QString::fromLatin1(kAppearanceStyleKey), QStringLiteral("Dark"));
            QPalette night;
            night.setColor(QPalette::Window, QColor(45, 45, 48));
            night.setColor(QPalette::WindowText, QColor(230, 230, 230));
            night.setColor(QPalette::Base, QColor(30, 30, 32));
            night.setColor(QPalette::Text, QColor(230, 230, 230));
            night.setColor(QPalette::Button, QColor(60, 60, 64));
            night.setColor(QPalette::ButtonText, QColor(230, 230, 230));
            QApplication::setPalette(night);
        }
        Content record;
        RichText text(QStringLiteral("Greengage Jam\n"), arial(9.0, true));
        text.append(QStringLiteral("Batch 7, jar no. ") + placeholderUnits(3), arial(5.0));
        record.labelText = AttributedString(text);
        record.quantity = QStringLiteral("250");
        record.serialStartFrom = QStringLiteral("1");
        record.magnification = zoom;
        const EditorWindow opened = openWindow(record);
        opened.window->resize(900, 600);
        QTRY_COMPARE(opened.window->size(), QSize(900, 600));
        QCoreApplication::processEvents();

        CenteredClipView* view = opened.labelContainer();
        const QImage shown = view->viewport()->grab().toImage();
        const double scale = view->pixelsPerPoint();
        const QRectF card = view->viewportTransform().mapRect(opened.editor->labelCell()->frame());
        QVERIFY(std::abs(card.width() - opened.editor->labelSize().width() * scale) <= 1.0);
        QVERIFY(std::abs(card.center().x() - shown.width() / 2.0) <= 1.0);
        QVERIFY(std::abs(card.center().y() - shown.height() / 2.0) <= 1.0);
        // Inside the card's right edge it is white; below the card the shadow is darker
        // than the background, and black in the dark appearance.
        const QPoint inside(int(card.right()) - 2, int(card.top()) + 2);
        QCOMPARE(shown.pixelColor(inside), QColor(Qt::white));
        const QColor background = view->palette().color(QPalette::Window);
        const QColor shadow = shown.pixelColor(int(card.center().x()), int(card.bottom()) + 1);
        QVERIFY(shadow.lightness() < background.lightness());
        if (dark)
            QVERIFY(shadow.red() <= background.red() / 2 + 1);
        else
            QVERIFY(shadow.red() > 100);

        const QByteArray folder = qgetenv("LOMIR_SCREENSHOT_DIR");
        if (!folder.isEmpty()) {
            const QString name = QStringLiteral("editor-%1-%2.png")
                                     .arg(dark ? QStringLiteral("dark") : QStringLiteral("light"))
                                     .arg(int(zoom));
            QVERIFY(
                opened.window->grab().save(QDir(QString::fromLocal8Bit(folder)).filePath(name)));
        }
        QApplication::setPalette(light);
    }

    // --- Deliberate stops ---

    void aStoredUnitOtherThanMillimetersOrInchesStops()
    {
        lomir::testing::verifyStops(QStringLiteral("unit 2"),
                                    QStringLiteral("MainViewController: the document's unit 2 "
                                                   "is neither millimetres (0) nor inches (1)"));
    }

    void anUnreadableCustomSizeStops()
    {
        lomir::testing::verifyStops(
            QStringLiteral("unreadable width"),
            QStringLiteral("MainViewController: the custom size input customWidthInput holds "
                           "no number: \"1.2.3\""));
    }

    void savingWithoutASelectedSpacingStops()
    {
        lomir::testing::verifyStops(
            QStringLiteral("spacing 5"),
            QStringLiteral("MainViewController: the popup outputSpacingDropdown has no selected "
                           "item"));
    }

    void aReadableRecordOpensAndSaves()
    {
        lomir::testing::verifyRunsToEnd(QStringLiteral("readable"));
    }

    // --- Editing ---

    void theEditMenuUndoesAndRedoes()
    {
        const EditorWindow opened = openWindow();
        typeIntoLabel(opened, QStringLiteral("Fig"));
        opened.editor->undoAction()->trigger();
        QCOMPARE(opened.text(), QString());
        opened.editor->redoAction()->trigger();
        QCOMPARE(opened.text(), QStringLiteral("Fig"));
        QVERIFY(opened.window->menuBar()->findChildren<QMenu*>().size() >= 4);
    }

    void copyAndPasteKeepTheFonts()
    {
        Content record;
        RichText text(QStringLiteral("Bold"), arial(9.0, true));
        record.labelText = AttributedString(text);
        const EditorWindow opened = openWindow(record);
        opened.textView()->selectAll();
        opened.editor->copyAction()->trigger();
        pressInLabel(opened, Qt::Key_End);
        opened.editor->pasteAction()->trigger();
        RichText doubled = text;
        doubled.append(text);
        QCOMPARE(opened.editor->labelText(), doubled);
    }

    void theFormatToolBarMakesTheSelectionBold()
    {
        const EditorWindow opened = openWindow();
        typeIntoLabel(opened, QStringLiteral("Pear"));
        opened.textView()->selectAll();
        const QSizeF before = opened.editor->labelSize();
        opened.editor->formatControls()->boldAction()->trigger();
        QVERIFY(opened.editor->labelText().attributesAt(0).font->bold);
        // Bold type is wider: the label follows its text.
        QVERIFY(opened.editor->labelSize().width() > before.width());
        QVERIFY(opened.window->findChildren<QToolBar*>().contains(opened.editor->formatToolBar()));
    }

    void theEditorBreaksLinesWherePrintingDoes()
    {
        const EditorWindow opened = openWindow(customSizeRecord(40.0, 200.0));
        typeIntoLabel(opened, QStringLiteral("Hand-made apricot and vanilla jam, best before "
                                             "the end of next summer, keep cool"));
        const RichText text = opened.editor->labelText();
        const QTextDocument* editorDocument = opened.textView()->document();
        const LabelTextLayout printed(text, opened.editor->labelSize().width());
        const QTextBlock editorBlock = editorDocument->begin();
        const QTextBlock printedBlock = printed.document().begin();
        QVERIFY(editorBlock.layout()->lineCount() > 3);
        QCOMPARE(editorBlock.layout()->lineCount(), printedBlock.layout()->lineCount());
        for (int line = 0; line < editorBlock.layout()->lineCount(); ++line) {
            QCOMPARE(editorBlock.layout()->lineAt(line).textStart(),
                     printedBlock.layout()->lineAt(line).textStart());
        }
    }

    // --- Saving and reopening ---

    void everyControlSurvivesSavingAndReopening()
    {
        const EditorWindow opened = openWindow();
        typeIntoLabel(opened, QStringLiteral("Batch "));
        chooseItem(opened.sizeDropdown(), 1);
        chooseItem(opened.metricDropdown(), 1);
        replaceField(opened.customWidthInput(), QStringLiteral("2.5"));
        replaceField(opened.customHeightInput(), QStringLiteral("1"));
        replaceField(opened.quantityField(), QStringLiteral("42"));
        replaceField(opened.serialStartFromField(), QStringLiteral("7"));
        QTest::mouseClick(opened.addSerializationButton(), Qt::LeftButton);
        chooseItem(opened.outputSpacingDropdown(), 0);
        opened.editor->zoomOutAction()->trigger();
        QVERIFY(opened.document->isModified());

        const QString path = m_editors.filePath(QStringLiteral("every-control.lomir"));
        QVERIFY(opened.document->saveToFile(path, kOwnType));
        const Content saved = opened.editor->currentRecord();

        const EditorWindow reopened = openFile(path, kOwnType);
        QCOMPARE(reopened.editor->labelText(), opened.editor->labelText());
        QCOMPARE(reopened.text(), QStringLiteral("Batch ") + placeholderUnits(2));
        QCOMPARE(reopened.sizeDropdown()->currentIndex(), 1);
        QCOMPARE(reopened.metricDropdown()->currentIndex(), 1);
        QCOMPARE(reopened.customWidthInput()->text(), QStringLiteral("2.50"));
        QCOMPARE(reopened.customHeightInput()->text(), QStringLiteral("1"));
        QCOMPARE(reopened.quantityField()->text(), QStringLiteral("42"));
        QCOMPARE(reopened.serialStartFromField()->text(), QStringLiteral("7"));
        QCOMPARE(reopened.outputSpacingDropdown()->currentIndex(), 0);
        QCOMPARE(reopened.zoomSlider()->doubleValue(), 400.0);
        QCOMPARE(reopened.zoomLabel()->text(), opened.zoomLabel()->text());
        QCOMPARE(reopened.sizeLabel()->text(), opened.sizeLabel()->text());
        QCOMPARE(reopened.editor->labelSize(), QSizeF(180.0, 72.0));
        QCOMPARE(reopened.editor->labelSize(), opened.editor->labelSize());
        const Content again = reopened.editor->currentRecord();
        QCOMPARE(again.encode().value(), saved.encode().value());
        QVERIFY(!reopened.document->isModified());
    }

    void plainTextAndRtfKeepOnlyTheText_data()
    {
        QTest::addColumn<QString>("typeName");
        QTest::addColumn<QString>("fileName");
        QTest::newRow("plain text") << kPlainTextType << QStringLiteral("label.txt");
        QTest::newRow("RTF") << kRtfType << QStringLiteral("label.rtf");
    }

    void plainTextAndRtfKeepOnlyTheText()
    {
        QFETCH(QString, typeName);
        QFETCH(QString, fileName);
        const EditorWindow opened = openWindow();
        typeIntoLabel(opened, QStringLiteral("Rhubarb"));
        opened.textView()->selectAll();
        opened.editor->formatControls()->boldAction()->trigger();
        chooseItem(opened.sizeDropdown(), 1);
        replaceField(opened.quantityField(), QStringLiteral("42"));
        chooseItem(opened.outputSpacingDropdown(), 0);
        chooseItem(opened.metricDropdown(), 1);
        opened.editor->zoomOutAction()->trigger();

        const QString path = m_editors.filePath(fileName);
        QVERIFY(opened.document->saveToFile(path, typeName));
        const EditorWindow reopened = openFile(path, typeName);
        QCOMPARE(reopened.text(), QStringLiteral("Rhubarb"));
        if (typeName == kRtfType) {
            const RichText text = reopened.editor->labelText();
            QVERIFY(text.attributesAt(0).font->bold);
            QCOMPARE(text.attributesAt(0).font->pointSize, 4.0);
        }
        QCOMPARE(reopened.quantityField()->text(), QStringLiteral("10"));
        QCOMPARE(reopened.serialStartFromField()->text(), QStringLiteral("0"));
        QCOMPARE(reopened.sizeDropdown()->currentIndex(), 0);
        QCOMPARE(reopened.metricDropdown()->currentIndex(), 0);
        QCOMPARE(reopened.outputSpacingDropdown()->currentIndex(), 1);
        QCOMPARE(reopened.zoomSlider()->doubleValue(), 500.0);
    }
};

} // namespace

// Opens a window on a record that the editor cannot take, in a child process.
int runFatalCase(const char* name)
{
    QStandardPaths::setTestModeEnabled(true);
    Content record;
    if (qstrcmp(name, "unit 2") == 0) {
        record.metric = 2;
    } else if (qstrcmp(name, "unreadable width") == 0) {
        record.dimensions = 1;
        record.width = QStringLiteral("1.2.3");
    } else if (qstrcmp(name, "spacing 5") == 0) {
        record.outputSpacing = 5;
    } else if (qstrcmp(name, "readable") != 0) {
        return 2;
    }
    QTemporaryDir files;
    const QString path = files.filePath(QStringLiteral("case.lomir"));
    writeRecord(path, record);
    auto* window = instantiateController<CascadingWindowController>(kDocumentWindowScene);
    auto* document = new Document(window);
    if (!document->readFromFile(path, kOwnType))
        return 3;
    window->setDocument(document, nullptr);
    window->show();
    // Saving reads every control back.
    const Content saved = window->editor()->currentRecord();
    delete window;
    return saved.quantity == record.quantity ? 0 : 4;
}

LOMIR_TEST_MAIN_WITH_FATAL_CASES(QApplication, TestMainViewController)
#include "tst_mainviewcontroller.moc"
