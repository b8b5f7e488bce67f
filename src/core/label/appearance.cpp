#include "core/label/appearance.h"

namespace lomir {

bool isDarkAppearance(const std::optional<QString>& appearanceStyle, bool paletteIsDark)
{
    if (appearanceStyle)
        return *appearanceStyle == QStringLiteral("Dark");
    return paletteIsDark;
}

QColor labelShadowColor(bool darkAppearance)
{
    return darkAppearance ? QColor::fromRgbF(0.0f, 0.0f, 0.0f) : QColor::fromRgbF(0.5f, 0.5f, 0.5f);
}

} // namespace lomir
