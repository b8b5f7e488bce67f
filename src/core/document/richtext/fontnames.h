#pragma once

#include "core/document/richtext/richtext.h"

#include <QString>

namespace lomir {

// The PostScript name of a face, as macOS names it in archives and Cocoa RTF:
// "Helvetica-Bold", "ArialMT", "Arial-BoldItalicMT", "TimesNewRomanPSMT".
QString postScriptNameFor(const QString& family, bool bold, bool italic);

// The face a PostScript name stands for, as well as its spelling tells: family,
// bold and italic ("Avenir-Book" is Avenir, regular; "Menlo-BoldItalic" is Menlo,
// bold and italic). The name itself is kept in the result.
FontSpec fontFromPostScriptName(const QString& postScriptName, double pointSize);

} // namespace lomir
