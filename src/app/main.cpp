#include "app/commandline.h"

#include <QGuiApplication>
#include <QTextStream>

int main(int argc, char* argv[])
{
    // The command line never needs a display; text measurement and fonts still need
    // a GUI application object, so run it on the offscreen platform.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("Lomir"));
    QGuiApplication::setApplicationVersion(QStringLiteral(LOMIR_VERSION));

    QStringList arguments = QGuiApplication::arguments();
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
