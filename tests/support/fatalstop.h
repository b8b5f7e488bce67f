#pragma once

// Checks of the program's deliberate stops. A test program runs itself again with
// "--fatal-case NAME"; its main() hands such a run to the test's own case runner, which
// makes the stop happen, and the parent checks that the child aborted.

#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QTemporaryDir>
#include <QTest>
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

// Runs this test program again with a fatal case and reports how it ended. The child's
// temporary files go into a folder of the parent's, removed once the child has ended: a
// child that stops on purpose never gets to remove its own.
inline ChildRun runInChild(const QString& caseName)
{
    const QTemporaryDir childTemporaryFiles;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TMPDIR"), childTemporaryFiles.path());
    QProcess child;
    child.setProcessEnvironment(environment);
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

// Runs the fatal case in a child and checks that it stopped the program with the
// message (a failure is recorded in the current test).
inline void verifyStops(const QString& caseName, const QString& message)
{
    const ChildRun run = runInChild(caseName);
    QVERIFY2(run.finished, "the child process did not finish");
    QVERIFY2(run.status == QProcess::CrashExit, qPrintable(run.errorOutput));
    QVERIFY2(run.errorOutput.contains(QStringLiteral("Fatal error: ") + message),
             qPrintable(run.errorOutput));
}

// Runs a case that must not stop in a child and checks that it ended normally, so that
// the crashes seen for the fatal cases are the stops and not the harness.
inline void verifyRunsToEnd(const QString& caseName)
{
    const ChildRun run = runInChild(caseName);
    QVERIFY(run.finished);
    QCOMPARE(run.status, QProcess::NormalExit);
    QCOMPARE(run.exitCode, 0);
    QVERIFY(!run.errorOutput.contains(QStringLiteral("Fatal error")));
}

} // namespace lomir::testing

// The main() of a test program with fatal cases: a child run makes the stop of its case
// happen through the test's own runFatalCase(const char* name), which returns only when
// the stop did not happen; any other run runs the tests. The application object comes
// first, so that a case may use what it provides (fonts, for one).
#define LOMIR_TEST_MAIN_WITH_FATAL_CASES(Application, TestObject)                                  \
    int main(int argc, char* argv[])                                                               \
    {                                                                                              \
        Application app(argc, argv);                                                               \
        if (lomir::testing::isFatalCaseRun(argc, argv))                                            \
            return runFatalCase(argv[2]);                                                          \
        TestObject test;                                                                           \
        QTEST_SET_MAIN_SOURCE_PATH                                                                 \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
