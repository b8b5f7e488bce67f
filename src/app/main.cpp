#include "app/commandline.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char* argv[])
{
    // The commands read and write files only: no display, no fonts.
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Lomir"));
    QCoreApplication::setApplicationVersion(QStringLiteral(LOMIR_VERSION));

    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    QTextStream out(stdout);
    QTextStream err(stderr);
    if (!lomir::isCommandLineInvocation(arguments)) {
        // The label editor is not part of this build yet: say what there is.
        out << QStringLiteral("Lomir %1\n").arg(QStringLiteral(LOMIR_VERSION));
        return lomir::runCommandLine({QStringLiteral("--help")}, out, err);
    }
    return lomir::runCommandLine(arguments, out, err);
}
