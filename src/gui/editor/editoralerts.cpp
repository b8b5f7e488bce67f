#include "gui/editor/editoralerts.h"

#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPushButton>

namespace lomir {

MessageBoxAlertPresenter::MessageBoxAlertPresenter(QWidget* parent) : m_parent(parent) {}

void MessageBoxAlertPresenter::beep()
{
    QApplication::beep();
}

bool MessageBoxAlertPresenter::runModal(const EditorAlert& alert)
{
    QMessageBox box(m_parent);
    box.setIcon(QMessageBox::Warning);
    box.setWindowModality(Qt::ApplicationModal);
    box.setWindowTitle(QApplication::applicationDisplayName());
    box.setText(alert.message);
    box.setInformativeText(alert.informativeText);
    box.setDefaultButton(box.addButton(tr("OK"), QMessageBox::AcceptRole));
    if (alert.showsSuppressionButton)
        box.setCheckBox(new QCheckBox(tr("Do not show this message again"), &box));
    box.exec();
    return box.checkBox() && box.checkBox()->isChecked();
}

} // namespace lomir
