#include "gui/app/documentdialogs.h"

#include "core/document/document.h"
#include "core/document/documentformats.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>

namespace lomir {

namespace {

struct DialogTexts
{
    Q_DECLARE_TR_FUNCTIONS(DocumentDialogs)
};

// The file types a document is saved as, with the name filter that offers each.
struct SaveType
{
    QLatin1StringView typeName;
    QString filter;
    QString suffix;
};

std::vector<SaveType> saveTypes()
{
    return {
        {kLomirDocumentType, DialogTexts::tr("Lomir Document (*.lomir)"), QStringLiteral("lomir")},
        {kPlainTextType, DialogTexts::tr("Plain Text (*.txt)"), QStringLiteral("txt")},
        {kRtfType, DialogTexts::tr("Rich Text Format (*.rtf)"), QStringLiteral("rtf")},
    };
}

QString documentsFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

} // namespace

DocumentDialogs::DocumentDialogs(std::function<QWidget*(const Document*)> windowFor)
    : m_windowFor(std::move(windowFor))
{
}

QWidget* DocumentDialogs::parentFor(const Document* document) const
{
    QWidget* window = document && m_windowFor ? m_windowFor(document) : nullptr;
    return window ? window : QApplication::activeWindow();
}

SaveChangesAnswer DocumentDialogs::askToSaveChanges(const Document& document)
{
    QMessageBox box(QMessageBox::Warning, QCoreApplication::applicationName(),
                    DialogTexts::tr("Do you want to save the changes you made to “%1”?")
                        .arg(document.displayName()),
                    QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel,
                    parentFor(&document));
    box.setInformativeText(DialogTexts::tr("Your changes are lost if you don’t save them."));
    box.setDefaultButton(QMessageBox::Save);
    switch (box.exec()) {
    case QMessageBox::Save:
        return SaveChangesAnswer::Save;
    case QMessageBox::Discard:
        return SaveChangesAnswer::DontSave;
    default:
        return SaveChangesAnswer::Cancel;
    }
}

std::optional<SaveDestination> DocumentDialogs::askSaveDestination(const Document& document)
{
    const std::vector<SaveType> types = saveTypes();
    QStringList filters;
    for (const SaveType& type : types)
        filters.append(type.filter);

    QFileDialog dialog(parentFor(&document), DialogTexts::tr("Save As"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilters(filters);
    // A name typed without an extension takes the one of the chosen type.
    const auto selectType = [&](const QString& filter) {
        for (const SaveType& type : types) {
            if (type.filter == filter)
                dialog.setDefaultSuffix(type.suffix);
        }
    };
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, selectType);
    for (const SaveType& type : types) {
        if (type.typeName == document.fileType()) {
            dialog.selectNameFilter(type.filter);
            selectType(type.filter);
        }
    }
    if (document.filePath().isEmpty()) {
        dialog.setDirectory(documentsFolder());
        dialog.selectFile(document.displayName());
    } else {
        dialog.selectFile(document.filePath());
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    QString filterType = QString(kLomirDocumentType);
    for (const SaveType& type : types) {
        if (type.filter == dialog.selectedNameFilter())
            filterType = QString(type.typeName);
    }
    return saveDestination(dialog.selectedFiles().constFirst(), filterType);
}

QStringList DocumentDialogs::askFilesToOpen()
{
    const QStringList filters{
        DialogTexts::tr("Labels (*.lomir *.txt *.text *.rtf)"),
        DialogTexts::tr("Lomir Document (*.lomir)"),
        DialogTexts::tr("Plain Text (*.txt *.text)"),
        DialogTexts::tr("Rich Text Format (*.rtf)"),
    };
    return QFileDialog::getOpenFileNames(parentFor(nullptr), DialogTexts::tr("Open"),
                                         documentsFolder(), filters.join(QStringLiteral(";;")));
}

bool DocumentDialogs::confirmRevert(const Document& document)
{
    QMessageBox box(QMessageBox::Warning, QCoreApplication::applicationName(),
                    DialogTexts::tr("Do you want to revert “%1” to the version last saved?")
                        .arg(document.displayName()),
                    QMessageBox::Cancel, parentFor(&document));
    box.setInformativeText(DialogTexts::tr("Your current changes are lost."));
    QPushButton* revert = box.addButton(DialogTexts::tr("Revert"), QMessageBox::AcceptRole);
    box.setDefaultButton(revert);
    box.exec();
    return box.clickedButton() == revert;
}

void DocumentDialogs::showError(const Document* document, const QString& summary,
                                const Error& error)
{
    QMessageBox box(QMessageBox::Warning, QCoreApplication::applicationName(), summary,
                    QMessageBox::Ok, parentFor(document));
    box.setInformativeText(error.message);
    box.exec();
}

} // namespace lomir
