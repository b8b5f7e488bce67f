#pragma once

#include <QColor>
#include <QPointF>
#include <QString>
#include <optional>

namespace lomir {

// The label is shown as a white card with a soft shadow, half opaque, just below it.
inline constexpr float kLabelShadowOpacity = 0.5f;
// Half a point to the left and one and a half points down: the label's y axis points down.
inline constexpr QPointF kLabelShadowOffset{-0.5, 1.5};
inline constexpr double kLabelShadowRadius = 1.0;

// The name of the setting that holds the desktop's appearance ("Dark" for dark).
inline constexpr char kAppearanceStyleKey[] = "AppleInterfaceStyle";

// Whether the editor is drawn for a dark desktop. The setting decides when it is present
// (dark exactly when it holds "Dark"), so a user can pick an appearance; otherwise the
// desktop's palette does.
bool isDarkAppearance(const std::optional<QString>& appearanceStyle, bool paletteIsDark);

// The label's shadow: black on a dark desktop, where gray would not show, else 50% gray.
QColor labelShadowColor(bool darkAppearance);

} // namespace lomir
