#include "core/printing/calibration.h"
#include "core/printing/pagesetup.h"
#include "core/printing/paper.h"
#include "gui/printing/pagesetupdialog.h"

#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QLabel>
#include <QPageSize>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <map>

using namespace lomir;

namespace {

constexpr double kPointsInAMillimeter = 72.0 / 25.4;

PageSetupChoice a5Landscape()
{
    PageSetupChoice choice;
    choice.layout = QPageLayout(QPageSize(QPageSize::A5), QPageLayout::Landscape,
                                QMarginsF(5.0, 6.0, 7.0, 8.0), QPageLayout::Millimeter);
    choice.printerName = QStringLiteral("Roll");
    choice.calibrations[QStringLiteral("Roll")] = PrinterCalibration{1.0, -1.5, 99.0};
    return choice;
}

// The stored calibrations the dialog is given for printers the choice does not hold.
PrinterCalibration storedOffice(const QString& printer)
{
    return printer == QStringLiteral("Office") ? PrinterCalibration{0.25, 0.5, 100.5}
                                               : PrinterCalibration();
}

void typeInto(QDoubleSpinBox* box, double value)
{
    box->setFocus(Qt::OtherFocusReason);
    box->selectAll();
    QTest::keyClicks(box, QString::number(value));
    // Leaving the box commits what was typed (Return would close the dialog).
    QTest::keyClick(box, Qt::Key_Tab);
}

// Shows the dialog, as the user sees it, so that typing and the focus work as they do there.
void show(PageSetupDialog& dialog)
{
    dialog.show();
    if (!QTest::qWaitForWindowActive(&dialog))
        qFatal("the dialog was not shown");
}

void choose(QComboBox* box, const QString& text)
{
    const int index = box->findText(text);
    QVERIFY2(index >= 0, qPrintable(text));
    box->setCurrentIndex(index);
}

class TestPageSetupDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheCurrentChoice()
    {
        PageSetupDialog dialog(a5Landscape(), {QStringLiteral("Office"), QStringLiteral("Roll")},
                               storedOffice);
        show(dialog);
        QCOMPARE(dialog.paperBox()->currentData().toInt(), int(QPageSize::A5));
        QVERIFY(!dialog.paperWidthBox()->isEnabled());
        QCOMPARE(dialog.paperWidthBox()->value(), 148.0);
        QCOMPARE(dialog.paperHeightBox()->value(), 210.0);
        QCOMPARE(dialog.orientationBox()->currentData().toInt(), int(QPageLayout::Landscape));
        QCOMPARE(dialog.unitBox()->currentData().toInt(), int(QPageLayout::Millimeter));
        QCOMPARE(dialog.marginBox(Qt::LeftEdge)->value(), 5.0);
        QCOMPARE(dialog.marginBox(Qt::TopEdge)->value(), 6.0);
        QCOMPARE(dialog.marginBox(Qt::RightEdge)->value(), 7.0);
        QCOMPARE(dialog.marginBox(Qt::BottomEdge)->value(), 8.0);
        QCOMPARE(dialog.printerBox()->currentText(), QStringLiteral("Roll"));
        QCOMPARE(dialog.horizontalOffsetBox()->value(), 1.0);
        QCOMPARE(dialog.verticalOffsetBox()->value(), -1.5);
        QCOMPARE(dialog.scaleBox()->value(), 99.0);
        QVERIFY(dialog.okButton()->isEnabled());
        // Unchanged, the dialog gives back what it was given.
        const PageSetupChoice choice = dialog.choice();
        QVERIFY(choice.layout.isEquivalentTo(a5Landscape().layout));
        QCOMPARE(paperSettings(choice.layout), paperSettings(a5Landscape().layout));
        QCOMPARE(choice.printerName, QStringLiteral("Roll"));
        QCOMPARE(choice.calibration(), (PrinterCalibration{1.0, -1.5, 99.0}));
    }

    void aCustomPaperIsExactlyTheSizeTyped()
    {
        PageSetupDialog dialog(a5Landscape(), {}, storedOffice);
        show(dialog);
        choose(dialog.paperBox(), QStringLiteral("Custom"));
        QVERIFY(dialog.paperWidthBox()->isEnabled());
        choose(dialog.orientationBox(), QStringLiteral("Portrait"));
        typeInto(dialog.paperWidthBox(), 62.0);
        typeInto(dialog.paperHeightBox(), 29.0);
        for (Qt::Edge edge : {Qt::LeftEdge, Qt::TopEdge, Qt::RightEdge, Qt::BottomEdge})
            typeInto(dialog.marginBox(edge), 0.0);
        const PaperSettings paper = paperSettings(dialog.choice().layout);
        QCOMPARE(paper.paper, QSizeF(62.0 * kPointsInAMillimeter, 29.0 * kPointsInAMillimeter));
        QCOMPARE(paper.margins, QMarginsF());
        QVERIFY(dialog.okButton()->isEnabled());
    }

    void lengthsFollowTheUnit()
    {
        PageSetupDialog dialog(a5Landscape(), {}, storedOffice);
        show(dialog);
        choose(dialog.unitBox(), QStringLiteral("Inches"));
        QCOMPARE(dialog.paperWidthBox()->value(), 5.827);         // 148 mm
        QCOMPARE(dialog.marginBox(Qt::LeftEdge)->value(), 0.197); // 5 mm
        choose(dialog.unitBox(), QStringLiteral("Points"));
        QCOMPARE(dialog.marginBox(Qt::LeftEdge)->value(), 14.17);
        // A margin typed in the new unit is that many of it.
        typeInto(dialog.marginBox(Qt::TopEdge), 36.0);
        QCOMPARE(paperSettings(dialog.choice().layout).margins.top(), 36.0);
        // The paper stays the named one.
        QCOMPARE(dialog.choice().layout.pageSize().id(), QPageSize::A5);
    }

    void marginsThatLeaveNoRoomAreRefused()
    {
        PageSetupDialog dialog(a5Landscape(), {}, storedOffice);
        show(dialog);
        auto* warning = dialog.findChild<QLabel*>();
        typeInto(dialog.marginBox(Qt::LeftEdge), 100.0);
        typeInto(dialog.marginBox(Qt::RightEdge), 110.0);
        // 210 mm wide in landscape: 100 + 110 leaves nothing.
        QVERIFY(!dialog.isValidChoice());
        QVERIFY(!dialog.okButton()->isEnabled());
        QVERIFY(!dialog.calibrationPageButton()->isEnabled());
        bool warned = false;
        for (const QLabel* label : dialog.findChildren<QLabel*>())
            warned =
                warned || (label->isVisible() && label->text().contains(QStringLiteral("room")));
        QVERIFY(warning && warned);
        typeInto(dialog.marginBox(Qt::RightEdge), 100.0);
        QVERIFY(dialog.okButton()->isEnabled());
    }

    void eachPrinterKeepsItsOwnCalibration()
    {
        PageSetupDialog dialog(a5Landscape(), {QStringLiteral("Office"), QStringLiteral("Roll")},
                               storedOffice);
        show(dialog);
        typeInto(dialog.horizontalOffsetBox(), 2.5);
        choose(dialog.printerBox(), QStringLiteral("Office"));
        // Another printer shows its stored calibration.
        QCOMPARE(dialog.horizontalOffsetBox()->value(), 0.25);
        QCOMPARE(dialog.scaleBox()->value(), 100.5);
        typeInto(dialog.scaleBox(), 101.0);
        choose(dialog.printerBox(), QStringLiteral("Roll"));
        QCOMPARE(dialog.horizontalOffsetBox()->value(), 2.5);

        const PageSetupChoice choice = dialog.choice();
        QCOMPARE(choice.printerName, QStringLiteral("Roll"));
        const std::map<QString, PrinterCalibration> expected{
            {QStringLiteral("Office"), PrinterCalibration{0.25, 0.5, 101.0}},
            {QStringLiteral("Roll"), PrinterCalibration{2.5, -1.5, 99.0}}};
        QCOMPARE(choice.calibrations, expected);
    }

    void calibrationStaysWithinItsRange()
    {
        PageSetupDialog dialog(a5Landscape(), {QStringLiteral("Roll")}, storedOffice);
        show(dialog);
        typeInto(dialog.horizontalOffsetBox(), 80.0);
        typeInto(dialog.scaleBox(), 10.0);
        QVERIFY(isValidCalibration(dialog.choice().calibration()));
    }

    void theCalibrationPageButtonAsksWithTheChoiceAsItStands()
    {
        PageSetupDialog dialog(a5Landscape(), {QStringLiteral("Roll")}, storedOffice);
        show(dialog);
        QSignalSpy asked(&dialog, &PageSetupDialog::calibrationPageRequested);
        typeInto(dialog.verticalOffsetBox(), 3.0);
        QTest::mouseClick(dialog.calibrationPageButton(), Qt::LeftButton);
        QCOMPARE(asked.size(), 1);
        const auto choice = asked.first().first().value<PageSetupChoice>();
        QCOMPARE(choice.calibration(), (PrinterCalibration{1.0, 3.0, 99.0}));
        QVERIFY(choice.layout.isEquivalentTo(a5Landscape().layout));
    }

    void withoutPrintersThereIsNothingToCalibrate()
    {
        PageSetupChoice current = a5Landscape();
        current.printerName.clear();
        current.calibrations.clear();
        PageSetupDialog dialog(current, {}, storedOffice);
        show(dialog);
        QVERIFY(!dialog.findChild<QGroupBox*>()->isEnabled());
        // The greyed-out calibration shows a print left as it is, not the smallest scale.
        QCOMPARE(dialog.scaleBox()->value(), 100.0);
        QVERIFY(dialog.choice().printerName.isEmpty());
        QVERIFY(dialog.choice().calibrations.empty());
        QVERIFY(dialog.okButton()->isEnabled());
    }
};

} // namespace

QTEST_MAIN(TestPageSetupDialog)
#include "tst_pagesetupdialog.moc"
