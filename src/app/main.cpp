#include "app/appdelegate.h"
#include "app/commandline.h"
#include "editor/translations.h"

#include <QApplication>
#include <QTextStream>

namespace {

void nameApplication()
{
    // The names place the settings and the recovery folder.
    QCoreApplication::setOrganizationName(QStringLiteral("Brenvik"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("brenvik.com"));
    QCoreApplication::setApplicationName(QStringLiteral("Lomir"));
    QCoreApplication::setApplicationVersion(QStringLiteral(LOMIR_VERSION));
}

QStringList argumentsOf(int argc, char* argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

} // namespace

int main(int argc, char* argv[])
{
    if (lomir::isCommandLineInvocation(argumentsOf(argc, argv))) {
        // The commands read and write files only: no display, no fonts, no windows.
        QCoreApplication application(argc, argv);
        nameApplication();
        QStringList arguments = QCoreApplication::arguments();
        arguments.removeFirst();
        QTextStream out(stdout);
        QTextStream err(stderr);
        return lomir::runCommandLine(arguments, out, err);
    }

    QApplication application(argc, argv);
    nameApplication();
    lomir::installTranslations(application);
    lomir::AppDelegate delegate;
    QStringList files = QCoreApplication::arguments();
    files.removeFirst();
    delegate.applicationDidFinishLaunching(files);
    return application.exec();
}
