#include "gui/app/scene.h"

#include "gui/app/cascadingwindowcontroller.h"
#include "gui/app/reviewwindows.h"

namespace lomir {

QObject* instantiateScene(QStringView identifier)
{
    if (identifier == kDocumentWindowScene)
        return new CascadingWindowController;
    if (identifier == kReviewWindowScene)
        return new ReviewViewController;
    if (identifier == kNegativeFeedbackWindowScene)
        return new NegativeFeedbackViewController;
    fatalError(QStringLiteral("No scene has the identifier “%1”").arg(identifier).toStdString());
}

} // namespace lomir
