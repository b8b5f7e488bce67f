#pragma once

#include "core/app/printoptions.h"

#include <QString>

class QTextStream;

namespace lomir {

// Carries out `lomir print`: opens the file as the type in a Document, gives it a document
// window whose editor loads the record (the window is never shown on a screen: the caller
// runs a QApplication on the offscreen platform), types the given quantity and first
// number into the editor's fields, and prints through the print routine into the PDF file
// or onto the print queue. Errors go to err as one sentence a user can act on. A label too
// large for the paper prints the cell size alert's texts and exits 1. Prints made here are
// not counted for the review prompt. Returns the exit status.
int runPrintCommand(const PrintCommandOptions& options, const QString& type, QTextStream& err);

} // namespace lomir
