#include "core/document/document.h"
#include "core/document/documentformats.h"
#include "gui/app/appdelegate.h"
#include "gui/app/cascadingwindowcontroller.h"
#include "gui/app/documentdialogs.h"
#include "support/documentwindows.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <functional>

using namespace lomir;

namespace {

// Runs the answer on the dialog the call opens, once it is up.
template <typename Dialog> void answerNextDialog(std::function<void(Dialog*)> answer)
{
    QTimer::singleShot(0, [answer] {
        QTRY_VERIFY(qobject_cast<Dialog*>(QApplication::activeModalWidget()));
        answer(qobject_cast<Dialog*>(QApplication::activeModalWidget()));
    });
}

void chooseFilter(QFileDialog* dialog, const QString& filter)
{
    auto* types = dialog->findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
    QVERIFY(types);
    const int index = types->findText(filter);
    QVERIFY(index >= 0);
    // What the combo box does when the user picks an item.
    types->setCurrentIndex(index);
    Q_EMIT types->activated(index);
    Q_EMIT types->textActivated(filter);
}

void typeFileName(QFileDialog* dialog, const QString& name)
{
    auto* edit = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    QVERIFY(edit);
    edit->setText(name);
}

void clickSave(QFileDialog* dialog)
{
    auto* buttons = dialog->findChild<QDialogButtonBox*>(QStringLiteral("buttonBox"));
    QVERIFY(buttons && buttons->button(QDialogButtonBox::Save));
    buttons->button(QDialogButtonBox::Save)->click();
}

void clickButton(QMessageBox* box, QMessageBox::StandardButton which)
{
    QVERIFY(box->button(which));
    box->button(which)->click();
}

} // namespace

class DocumentDialogsTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    DocumentDialogs m_dialogs{[](const Document*) -> QWidget* { return nullptr; }};

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        testing::nameTestApplication(QStringLiteral("DocumentDialogsTest"));
        QCoreApplication::setApplicationVersion(QStringLiteral("3.2.1"));
        // Qt's own dialogs, whatever the desktop offers.
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    }

    void aNameWithoutExtensionTakesTheChosenFiltersType()
    {
        Document document;
        document.setUntitledName(QStringLiteral("Untitled"));
        answerNextDialog<QFileDialog>([this](QFileDialog* dialog) {
            QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptSave);
            dialog->setDirectory(m_dir.path());
            chooseFilter(dialog, QStringLiteral("Plain Text (*.txt)"));
            typeFileName(dialog, QStringLiteral("shelf"));
            clickSave(dialog);
        });
        const std::optional<SaveDestination> destination = m_dialogs.askSaveDestination(document);
        QVERIFY(destination);
        QCOMPARE(destination->path, m_dir.filePath(QStringLiteral("shelf.txt")));
        QCOMPARE(destination->typeName, QString(kPlainTextType));
    }

    void aNameWithAKnownExtensionTakesItsType()
    {
        Document document;
        document.setUntitledName(QStringLiteral("Untitled"));
        answerNextDialog<QFileDialog>([this](QFileDialog* dialog) {
            dialog->setDirectory(m_dir.path());
            // The own type's filter is chosen for a new document.
            QCOMPARE(dialog->selectedNameFilter(), QStringLiteral("Lomir Document (*.lomir)"));
            typeFileName(dialog, QStringLiteral("shelf.rtf"));
            clickSave(dialog);
        });
        const std::optional<SaveDestination> destination = m_dialogs.askSaveDestination(document);
        QVERIFY(destination);
        QCOMPARE(destination->path, m_dir.filePath(QStringLiteral("shelf.rtf")));
        QCOMPARE(destination->typeName, QString(kRtfType));
    }

    void cancelingTheSaveDialogChoosesNothing()
    {
        Document document;
        answerNextDialog<QFileDialog>([](QFileDialog* dialog) { dialog->reject(); });
        QVERIFY(!m_dialogs.askSaveDestination(document));
    }

    void theSaveChangesQuestionNamesTheDocument_data()
    {
        QTest::addColumn<int>("button");
        QTest::addColumn<SaveChangesAnswer>("answer");
        QTest::newRow("save") << int(QMessageBox::Save) << SaveChangesAnswer::Save;
        QTest::newRow("discard") << int(QMessageBox::Discard) << SaveChangesAnswer::DontSave;
        QTest::newRow("cancel") << int(QMessageBox::Cancel) << SaveChangesAnswer::Cancel;
    }

    void theSaveChangesQuestionNamesTheDocument()
    {
        QFETCH(int, button);
        QFETCH(SaveChangesAnswer, answer);
        Document document;
        document.setUntitledName(QStringLiteral("Untitled 4"));
        answerNextDialog<QMessageBox>([button](QMessageBox* box) {
            QVERIFY2(box->text().contains(QStringLiteral("“Untitled 4”")), qPrintable(box->text()));
            clickButton(box, QMessageBox::StandardButton(button));
        });
        QCOMPARE(m_dialogs.askToSaveChanges(document), answer);
    }

    void anErrorShowsTheSummaryAndWhatWentWrong()
    {
        answerNextDialog<QMessageBox>([](QMessageBox* box) {
            QCOMPARE(box->icon(), QMessageBox::Warning);
            QCOMPARE(box->text(), QStringLiteral("The document “a.lomir” could not be opened."));
            QCOMPARE(box->informativeText(),
                     QStringLiteral("Cannot open “/x/a.lomir”: No such file."));
            clickButton(box, QMessageBox::Ok);
        });
        m_dialogs.showError(nullptr, QStringLiteral("The document “a.lomir” could not be opened."),
                            Error{QString(kFileErrorDomain), 5,
                                  QStringLiteral("Cannot open “/x/a.lomir”: No such file.")});
    }

    void revertingIsConfirmedOrCanceled()
    {
        Document document;
        document.setUntitledName(QStringLiteral("Untitled"));
        answerNextDialog<QMessageBox>([](QMessageBox* box) {
            for (QAbstractButton* button : box->buttons()) {
                if (button->text() == QStringLiteral("Revert"))
                    button->click();
            }
        });
        QVERIFY(m_dialogs.confirmRevert(document));
        answerNextDialog<QMessageBox>(
            [](QMessageBox* box) { clickButton(box, QMessageBox::Cancel); });
        QVERIFY(!m_dialogs.confirmRevert(document));
    }

    void theAboutBoxShowsTheVersion()
    {
        testing::resetApplicationState();
        AppDelegate delegate;
        delegate.applicationDidFinishLaunching({});
        answerNextDialog<QMessageBox>([](QMessageBox* box) {
            QVERIFY2(box->text().contains(QStringLiteral("Lomir 3.2.1")), qPrintable(box->text()));
            box->accept();
        });
        delegate.windowFor(delegate.documentController().documents().front())
            ->aboutAction()
            ->trigger();
        QVERIFY(delegate.documentController().closeAllDocuments());
    }
};

QTEST_MAIN(DocumentDialogsTest)
#include "tst_documentdialogs.moc"
