#pragma once

class QCoreApplication;

namespace lomir {

// Installs the translations shipped with the application for the user's language, or
// the English ones when there are none for it. The program's texts are keys ("Zoom",
// "Space Limit Alert Message"), so even English needs its translation. Returns false when
// no translation could be loaded.
bool installTranslations(QCoreApplication& application);

} // namespace lomir
