#pragma once

// Label texts with very many attribute runs, and a way to run the command line on them
// and see how long it took and how much memory it needed (with GNU time). The memory
// tests and the document benchmark share them.

#include "core/document/documentformats.h"
#include "support/files.h"

#include <QByteArray>
#include <QFile>
#include <QStringList>
#include <QTemporaryFile>
#include <fcntl.h>
#include <optional>
#include <spawn.h>
#include <sys/wait.h>
#include <vector>

extern char** environ;

namespace lomir::testing {

// A text of so many one-character runs that alternate between two attribute sets (a
// bold heading face and a red body face), so that no two runs merge.
inline RichText textWithRuns(qint64 runs)
{
    TextAttributes heading;
    heading.font =
        FontSpec{QStringLiteral("Helvetica"), QStringLiteral("Helvetica-Bold"), 14.0, true, false};
    TextAttributes body;
    body.font =
        FontSpec{QStringLiteral("Helvetica"), QStringLiteral("Helvetica"), 12.0, false, false};
    body.foreground = Rgba{200, 20, 20, 255};
    RichText text;
    for (qint64 run = 0; run < runs; ++run)
        text.append(QString(QChar(u'a' + int(run % 26))), run % 2 == 0 ? heading : body);
    return text;
}

// Writes a document of the text of textWithRuns(), of the type its name gives (.lomir or
// .rtf). False when it cannot.
inline bool writeDocumentWithRuns(qint64 runs, const QString& path)
{
    const QString type = typeForFileName(path);
    if (type != kLomirDocumentType && type != kRtfType)
        return false;
    Content record;
    record.labelText = AttributedString(textWithRuns(runs));
    const Result<QByteArray> data = dataOfType(record, type);
    return data && writeFile(path, *data);
}

struct MeasuredRun
{
    int exitStatus = -1; // the exit code, or 128 plus the signal that ended the program
    double seconds = 0.0;
    qint64 peakKilobytes = 0; // the largest resident set the program had
    QByteArray errorOutput;
};

// GNU time, which measures a program it starts itself. Asking the kernel for a child's
// peak from this process would not do: a child started from a large process counts that
// process's memory as its own until it runs the new program.
inline constexpr char kTimeProgram[] = "/usr/bin/time";

// Runs a program with its standard output thrown away and measures it alone. Nothing
// when it cannot be started and measured.
inline std::optional<MeasuredRun> runMeasured(const QString& program, const QStringList& arguments)
{
    QTemporaryFile errors;
    QTemporaryFile measurement;
    if (!errors.open() || !measurement.open())
        return std::nullopt;
    std::vector<QByteArray> encoded{kTimeProgram,
                                    "-f",
                                    "%x %e %M",
                                    "-o",
                                    QFile::encodeName(measurement.fileName()),
                                    QFile::encodeName(program)};
    for (const QString& argument : arguments)
        encoded.push_back(QFile::encodeName(argument));
    std::vector<char*> argv;
    for (QByteArray& argument : encoded)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, errors.handle(), 2);
    pid_t child = 0;
    const int spawned = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (spawned != 0 || waitpid(child, &status, 0) != child)
        return std::nullopt;

    // "%x %e %M" on the last line, after a line naming the signal if one ended it.
    const QList<QByteArray> lines = measurement.readAll().trimmed().split('\n');
    const QList<QByteArray> fields = lines.last().split(' ');
    if (fields.size() != 3)
        return std::nullopt;
    MeasuredRun result;
    bool ok[3] = {};
    result.exitStatus = fields[0].toInt(&ok[0]);
    result.seconds = fields[1].toDouble(&ok[1]);
    result.peakKilobytes = fields[2].toLongLong(&ok[2]);
    if (!ok[0] || !ok[1] || !ok[2])
        return std::nullopt;
    if (lines.size() > 1 && lines.first().startsWith("Command terminated by signal "))
        result.exitStatus = 128 + lines.first().mid(28).toInt();
    // The program wrote through a copy of this file's descriptor, which moved its offset.
    errors.seek(0);
    result.errorOutput = errors.readAll();
    return result;
}

} // namespace lomir::testing
