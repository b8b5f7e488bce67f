#pragma once

// Helpers for widget tests of the application's windows.

#include "core/document/documentcontroller.h"
#include "gui/app/appdelegate.h"
#include "gui/app/cascadingwindowcontroller.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QList>
#include <QSettings>
#include <QTest>

namespace lomir::testing {

// The document windows on screen.
inline QList<CascadingWindowController*> documentWindows()
{
    QList<CascadingWindowController*> windows;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<CascadingWindowController*>(widget);
            window && window->isVisible())
            windows.append(window);
    }
    return windows;
}

// Launches the application with the files and returns the first document window,
// once it is on screen.
inline CascadingWindowController* launch(AppDelegate& delegate, const QStringList& files = {})
{
    delegate.applicationDidFinishLaunching(files);
    CascadingWindowController* window = documentWindows().value(0);
    if (window && !QTest::qWaitForWindowExposed(window))
        return nullptr;
    return window;
}

// Names the application for the test, so that settings and the recovery folder are the
// test's own (below the XDG folders CTest gives each test).
inline void nameTestApplication(const QString& testName)
{
    QCoreApplication::setOrganizationName(QStringLiteral("LomirTests"));
    QCoreApplication::setApplicationName(testName);
}

// Starts a test function with no settings, no recovered documents and no windows left
// by the one before.
inline void resetApplicationState()
{
    for (CascadingWindowController* window : documentWindows())
        delete window;
    QSettings().clear();
    QDir(DocumentController::defaultRecoveryRoot()).removeRecursively();
}

} // namespace lomir::testing
