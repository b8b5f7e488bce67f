#pragma once

#include <QByteArray>

namespace lomir {

// The 3144-byte "sRGB IEC61966-2.1" ICC profile that macOS stores with sRGB colours in
// keyed archives.
QByteArray srgbIccProfile();

} // namespace lomir
