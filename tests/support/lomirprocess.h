#pragma once

// Running the built program (LOMIR_BINARY) as a user would, and reading what it said.

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

namespace lomir::testing {

// How a run of the program ended: the exit code (-1 when it did not end normally) and
// what it wrote.
struct Run
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

// Runs the program with the arguments; the child set-up runs in the child before the
// program starts, and the environment, when given, replaces the test's own.
inline Run runLomir(const QStringList& arguments, int timeoutMs = 60000,
                    const std::function<void()>& childSetUp = {},
                    const std::optional<QProcessEnvironment>& environment = std::nullopt)
{
    QProcess process;
    if (environment)
        process.setProcessEnvironment(*environment);
    if (childSetUp)
        process.setChildProcessModifier(childSetUp);
    process.start(QStringLiteral(LOMIR_BINARY), arguments);
    if (!process.waitForFinished(timeoutMs))
        return {};
    if (process.exitStatus() != QProcess::NormalExit)
        return {-1, process.readAllStandardOutput(), process.readAllStandardError()};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

// The error output of a failed command: one line, without the line break.
inline QString oneLine(const Run& run)
{
    const QString message = QString::fromUtf8(run.err);
    return message.count(QLatin1Char('\n')) == 1 && message.endsWith(QLatin1Char('\n'))
               ? message.chopped(1)
               : QStringLiteral("not one line: ") + message;
}

} // namespace lomir::testing
