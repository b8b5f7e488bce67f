#pragma once

#include <QStringList>

class QTextStream;

namespace lomir {

// Exit statuses of the command line.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1; // the command could not be carried out
inline constexpr int kExitUsage = 2;   // the command was not understood

// Whether the arguments (without the program name) ask for a command-line command
// rather than the editor: they start with "convert", "inspect", "print" or an option. Any
// other arguments are files for the editor to open.
bool isCommandLineInvocation(const QStringList& arguments);

// Whether the command is "print", which lays out and paints the label with the editor's
// own objects: it needs a QApplication, on the offscreen platform, and the translations.
bool isPrintCommand(const QStringList& arguments);

// Runs a command-line command: --version, --help, convert, inspect, print. Results go to
// out; errors go to err as one sentence a user can act on. Needs no display.
int runCommandLine(const QStringList& arguments, QTextStream& out, QTextStream& err);

} // namespace lomir
