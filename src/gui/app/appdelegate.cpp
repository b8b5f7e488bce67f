#include "gui/app/appdelegate.h"

#include "core/document/document.h"
#include "core/document/documentcontroller.h"
#include "gui/app/cascadingwindowcontroller.h"
#include "gui/app/documentdialogs.h"
#include "gui/app/scene.h"

#include <QApplication>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QSettings>

namespace lomir {

AppDelegate::AppDelegate(QObject* parent)
    : QObject(parent),
      m_ownDialogs(std::make_unique<DocumentDialogs>(
          [this](const Document* document) -> QWidget* { return windowFor(document); })),
      m_documents(std::make_unique<DocumentController>(*m_ownDialogs))
{
    connectDocumentController();
}

AppDelegate::AppDelegate(DocumentUserInterface& userInterface, QObject* parent)
    : QObject(parent), m_documents(std::make_unique<DocumentController>(userInterface))
{
    connectDocumentController();
}

void AppDelegate::connectDocumentController()
{
    connect(m_documents.get(), &DocumentController::documentAdded, this,
            &AppDelegate::makeWindowControllers);
    connect(m_documents.get(), &DocumentController::documentShowRequested, this,
            [this](Document* document) {
                if (CascadingWindowController* window = windowFor(document)) {
                    window->raise();
                    window->activateWindow();
                }
            });
    // Logging out ends the program without asking: what is unsaved comes back at the
    // next start.
    if (auto* application = qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        connect(application, &QGuiApplication::commitDataRequest, m_documents.get(),
                &DocumentController::writeRecoveryCopies);
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching(const QStringList& paths)
{
    // A plain write, not a default: any list stored before is replaced.
    QSettings().setValue(QLatin1StringView(kFontPanelSizeListKey), fontPanelSizeList());
    m_documents->launch(paths);
}

CascadingWindowController* AppDelegate::windowFor(const Document* document) const
{
    if (!document)
        return nullptr;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* window = qobject_cast<CascadingWindowController*>(widget);
        if (window && window->document() == document)
            return window;
    }
    return nullptr;
}

void AppDelegate::makeWindowControllers(Document* document)
{
    auto* window = instantiateController<CascadingWindowController>(kDocumentWindowScene);
    window->setDocument(document, m_documents.get());
    connect(window->newDocumentAction(), &QAction::triggered, this, &AppDelegate::newDocument);
    connect(window->openDocumentAction(), &QAction::triggered, this, &AppDelegate::openDocument);
    connect(window->quitAction(), &QAction::triggered, this, &AppDelegate::quit);
    connect(window->aboutAction(), &QAction::triggered, this, &AppDelegate::showAbout);
    QMenu* recent = window->openRecentMenu();
    connect(recent, &QMenu::aboutToShow, this, [this, recent] { fillOpenRecentMenu(recent); });
    window->show();
}

void AppDelegate::fillOpenRecentMenu(QMenu* menu)
{
    menu->clear();
    const QStringList files = m_documents->recentFiles();
    for (const QString& path : files) {
        QAction* action = menu->addAction(QFileInfo(path).fileName());
        action->setToolTip(path);
        action->setStatusTip(path);
        connect(action, &QAction::triggered, this,
                [this, path] { m_documents->openDocument(path); });
    }
    if (files.isEmpty())
        menu->addAction(tr("No Recent Documents"))->setEnabled(false);
    menu->addSeparator();
    QAction* clear = menu->addAction(tr("Clear Menu"));
    clear->setEnabled(!files.isEmpty());
    connect(clear, &QAction::triggered, m_documents.get(), &DocumentController::clearRecentFiles);
}

void AppDelegate::newDocument()
{
    m_documents->newDocument();
}

void AppDelegate::openDocument()
{
    m_documents->openDocuments();
}

void AppDelegate::quit()
{
    if (m_documents->closeAllDocuments())
        QCoreApplication::quit();
}

void AppDelegate::showAbout()
{
    QMessageBox::about(QApplication::activeWindow(), tr("About Lomir"),
                       tr("<p><b>Lomir %1</b></p>"
                          "<p>Designs and prints sheets of identical text labels.</p>")
                           .arg(QCoreApplication::applicationVersion()));
}

} // namespace lomir
