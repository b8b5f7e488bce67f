#pragma once

#include <QStringList>

namespace lomir {

// The name of the setting that holds the font sizes offered to the user.
inline constexpr char kFontPanelSizeListKey[] = "NSFontPanelSizeList";

// The font sizes offered to the user, as strings: 1 to 14 points in steps of one, then
// the display sizes 18, 24, 36 and 48. Small sizes come first because labels are small.
QStringList fontPanelSizeList();

} // namespace lomir
