#include "core/app/translations.h"
#include "gui/app/appdelegate.h"
#include "program/commandline.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>
#include <memory>
#include <new>

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

// Runs a command-line command in the application made for it.
int runCommand()
{
    nameApplication();
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    QTextStream out(stdout);
    QTextStream err(stderr);
    try {
        return lomir::runCommandLine(arguments, out, err);
    } catch (const std::bad_alloc&) {
        // Files are read within a bounded multiple of their size; this is a machine that
        // cannot give even that, or a command that needs more on the way out.
        err << QCoreApplication::translate("CommandLine",
                                           "Lomir ran out of memory: there is not enough "
                                           "memory to finish “%1”. Close other programs "
                                           "and try again.")
                   .arg(arguments.join(QLatin1Char(' ')))
            << '\n';
        return lomir::kExitFailure;
    }
}

} // namespace

int main(int argc, char* argv[])
{
    const QStringList arguments = argumentsOf(argc, argv);
    if (lomir::isPrintCommand(arguments)) {
        // Printing lays the label out with the editor's own objects; they are widgets, made
        // on the offscreen platform so that no display is needed, whatever one there is.
        qputenv("QT_QPA_PLATFORM", "offscreen");
        // Outside a desktop session (a shell over ssh, cron, a print server) there is no
        // runtime folder: Qt would warn on stderr and make one in /tmp for good. The print
        // gets a private one for its run instead.
        std::unique_ptr<QTemporaryDir> runtimeFolder;
        if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR")) {
            runtimeFolder = std::make_unique<QTemporaryDir>();
            if (runtimeFolder->isValid())
                qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtimeFolder->path()));
        }
        QApplication application(argc, argv);
        lomir::installTranslations(application);
        return runCommand();
    }
    if (lomir::isCommandLineInvocation(arguments)) {
        // The other commands read and write files only: no display, no fonts, no windows.
        QCoreApplication application(argc, argv);
        return runCommand();
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
