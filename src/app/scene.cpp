#include "app/scene.h"

#include "app/cascadingwindowcontroller.h"

namespace lomir {

QObject* instantiateScene(QStringView identifier)
{
    if (identifier == kDocumentWindowScene)
        return new CascadingWindowController;
    fatalError(QStringLiteral("No scene has the identifier “%1”").arg(identifier).toStdString());
}

} // namespace lomir
