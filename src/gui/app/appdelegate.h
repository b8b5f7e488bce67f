#pragma once

#include "core/app/fontpanelsizes.h"

#include <QObject>
#include <QStringList>
#include <memory>

class QMenu;

namespace lomir {

class CascadingWindowController;
class Document;
class DocumentController;
class DocumentDialogs;
class DocumentUserInterface;

// The application's own duties: at launch it writes the font size list and opens the
// documents; it gives every document a window and carries out the commands that are
// not about one document (New, Open, Open Recent, Quit, About), which are always
// enabled.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    // Asks the user with dialogs.
    explicit AppDelegate(QObject* parent = nullptr);
    // Asks the user through the given interface, which must outlive the delegate.
    explicit AppDelegate(DocumentUserInterface& userInterface, QObject* parent = nullptr);
    ~AppDelegate() override;

    // Called by main() once the application object exists: writes the font size list,
    // then brings back recovered documents and opens the files, or a new document when
    // there is nothing else.
    void applicationDidFinishLaunching(const QStringList& paths);

    DocumentController& documentController() const { return *m_documents; }
    // The window of the document, or null.
    CascadingWindowController* windowFor(const Document* document) const;

    void newDocument();
    void openDocument();
    // Closes every document, asking about unsaved changes, then ends the program;
    // stays when the user cancels.
    void quit();
    void showAbout();

private:
    void connectDocumentController();
    // Called whenever the document controller adds a document: gives it its window.
    void makeWindowControllers(Document* document);
    void fillOpenRecentMenu(QMenu* menu);

    std::unique_ptr<DocumentDialogs> m_ownDialogs;
    std::unique_ptr<DocumentController> m_documents;
};

} // namespace lomir
