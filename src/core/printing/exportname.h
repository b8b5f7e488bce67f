#pragma once

#include <QString>

namespace lomir {

// The name Export as PDF suggests for a document shown as documentName: the name without
// the extension of a label file (".lomir", ".txt", ".rtf", in any case) and with ".pdf"
// ("Jam.lomir" becomes "Jam.pdf", "Untitled 2" becomes "Untitled 2.pdf"). Other dots stay,
// so "Plum 1.5 kg" keeps its numbers.
QString pdfFileName(const QString& documentName);

} // namespace lomir
