#pragma once

#include "core/base/fatal.h"

#include <QObject>
#include <QString>
#include <QStringView>
#include <memory>

namespace lomir {

// The scenes the application's windows are made from, by identifier.
inline constexpr QStringView kDocumentWindowScene = u"Document Window Controller";
// The review prompt's question, and the feedback window that follows a "No".
inline constexpr QStringView kReviewWindowScene = u"Review Window Controller";
inline constexpr QStringView kNegativeFeedbackWindowScene = u"Negative Feedback Window Controller";

// Makes the controller of the scene; the caller owns it. An identifier that names no
// scene is a programming error and stops the program.
QObject* instantiateScene(QStringView identifier);

// Makes the controller of the scene as a Controller; a scene whose controller is of
// another kind is a programming error and stops the program.
template <typename Controller> Controller* instantiateController(QStringView identifier)
{
    std::unique_ptr<QObject> made(instantiateScene(identifier));
    auto* controller = qobject_cast<Controller*>(made.get());
    if (!controller)
        fatalError(QStringLiteral("The scene “%1” makes a %2, not a %3")
                       .arg(identifier, QLatin1StringView(made->metaObject()->className()),
                            QLatin1StringView(Controller::staticMetaObject.className()))
                       .toStdString());
    made.release();
    return controller;
}

} // namespace lomir
