#pragma once

// Checks of the program's deliberate stops. A test program runs itself again with
// "--fatal-case NAME"; its main() hands such a run to the test's own case runner, which
// makes the stop happen, and the parent checks that the child aborted.

#include <QCoreApplication>
#include <QProcess>
#include <QString>
#include <cstring>
#include <sys/resource.h>

namespace lomir::testing {

inline constexpr char kFatalCaseOption[] = "--fatal-case";

// Whether this run of the test program is a child asked to stop on purpose.
inline bool isFatalCaseRun(int argc, char* argv[])
{
    return argc == 3 && std::strcmp(argv[1], kFatalCaseOption) == 0;
}

struct ChildRun
{
    bool finished = false;
    QProcess::ExitStatus status = QProcess::NormalExit;
    int exitCode = 0;
    QString errorOutput;
};

// Runs this test program again with a fatal case and reports how it ended.
inline ChildRun runInChild(const QString& caseName)
{
    QProcess child;
    child.setProgram(QCoreApplication::applicationFilePath());
    child.setArguments({QString::fromLatin1(kFatalCaseOption), caseName});
    child.setChildProcessModifier([] {
        // The child aborts on purpose: no core file for it.
        const rlimit noCoreFile{0, 0};
        setrlimit(RLIMIT_CORE, &noCoreFile);
    });
    child.start();
    ChildRun run;
    run.finished = child.waitForFinished(60000);
    run.status = child.exitStatus();
    run.exitCode = child.exitCode();
    run.errorOutput = QString::fromUtf8(child.readAllStandardError());
    return run;
}

} // namespace lomir::testing
