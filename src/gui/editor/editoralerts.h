#pragma once

#include <QCoreApplication>
#include <QString>

class QWidget;

namespace lomir {

// A warning the editor gives: its message, the informative text under it, and whether it
// offers to stay quiet from now on.
struct EditorAlert
{
    QString message;
    QString informativeText;
    bool showsSuppressionButton = false;

    bool operator==(const EditorAlert&) const = default;
};

// How the editor warns the user. The desktop's own presenter beeps and runs message
// boxes; tests put a recorder in its place so that nothing waits for a click.
class AlertPresenter
{
public:
    virtual ~AlertPresenter() = default;

    // Sounds the desktop's beep.
    virtual void beep() = 0;
    // Shows the alert until the user closes it. Returns whether its suppression box was
    // ticked when it closed (false for an alert without one).
    virtual bool runModal(const EditorAlert& alert) = 0;
};

// Warnings as message boxes: the warning icon, one button titled "OK", modal for the
// whole application, the suppression box as the box's check box; the beep is
// QApplication::beep().
class MessageBoxAlertPresenter final : public AlertPresenter
{
    Q_DECLARE_TR_FUNCTIONS(MessageBoxAlertPresenter)

public:
    // The boxes are centred on the parent's window.
    explicit MessageBoxAlertPresenter(QWidget* parent);

    void beep() override;
    bool runModal(const EditorAlert& alert) override;

private:
    QWidget* m_parent;
};

} // namespace lomir
