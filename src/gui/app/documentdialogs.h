#pragma once

#include "core/document/documentcontroller.h"

#include <functional>

class QWidget;

namespace lomir {

// The document controller's questions and messages as dialogs over the document's
// window: message boxes for saving changes, reverting and errors, file dialogs for
// opening and saving.
class DocumentDialogs : public DocumentUserInterface
{
public:
    // windowFor gives the window a dialog about the document belongs to (null for none).
    explicit DocumentDialogs(std::function<QWidget*(const Document*)> windowFor);

    SaveChangesAnswer askToSaveChanges(const Document& document) override;
    std::optional<SaveDestination> askSaveDestination(const Document& document) override;
    QStringList askFilesToOpen() override;
    bool confirmRevert(const Document& document) override;
    void showError(const Document* document, const QString& summary, const Error& error) override;

private:
    QWidget* parentFor(const Document* document) const;

    std::function<QWidget*(const Document*)> m_windowFor;
};

} // namespace lomir
