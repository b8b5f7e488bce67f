// Reads label documents with very many attribute runs the way a user's command does, and
// reports how long `lomir inspect` and `lomir convert` take and how much memory they
// need. Every document is written by the program's own writers; every command runs as a
// child process, so its peak memory is its own. One line per command on stdout:
//   runs=N input=lomir|rtf bytes=B command=inspect|convert seconds=T peak_rss_mb=M exit=E
//
// The runs alternate between two attribute sets (a bold heading face and a red body
// face), one character each, so that no two runs merge.

#include "document/documentformats.h"
#include "document/rtf/rtf.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>
#include <cstdio>
#include <fcntl.h>
#include <optional>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <vector>

extern char** environ;

using namespace lomir;

namespace {

constexpr int kUsageExit = 2;
constexpr int kFailureExit = 1;

void printUsage()
{
    std::fputs("Usage: document-bench [--runs N[,N...]] [--keep DIR]\n"
               "       document-bench --write N FILE.lomir|FILE.rtf\n"
               "  --runs N,...   run counts to measure (default 100000,1000000)\n"
               "  --keep DIR     write the documents into DIR and keep them\n"
               "  --write N F    only write a document of N runs to F\n",
               stderr);
}

// A text of so many one-character runs, alternating between two attribute sets.
RichText textWithRuns(qint64 runs)
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

bool writeDocument(qint64 runs, const QString& path)
{
    Content record;
    record.labelText = AttributedString(textWithRuns(runs));
    const QString type = typeForFileName(path);
    if (type != kLomirDocumentType && type != kRtfType) {
        std::fprintf(stderr, "document-bench: name the document .lomir or .rtf: %s\n",
                     qPrintable(path));
        return false;
    }
    const Result<QByteArray> data = dataOfType(record, type);
    QFile file(path);
    if (!data || !file.open(QIODevice::WriteOnly) || file.write(*data) != data->size()) {
        std::fprintf(stderr, "document-bench: cannot write %s\n", qPrintable(path));
        return false;
    }
    return true;
}

struct Measurement
{
    double seconds = 0.0;
    double peakResidentMegabytes = 0.0;
    int exitStatus = -1;
};

// Runs the program with its output to /dev/null and measures the child alone.
std::optional<Measurement> measure(const QStringList& arguments)
{
    std::vector<QByteArray> encoded;
    encoded.push_back(QByteArrayLiteral(LOMIR_BINARY));
    for (const QString& argument : arguments)
        encoded.push_back(QFile::encodeName(argument));
    std::vector<char*> argv;
    for (QByteArray& argument : encoded)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    QElapsedTimer timer;
    timer.start();
    pid_t child = 0;
    const int spawned = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0)
        return std::nullopt;
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child)
        return std::nullopt;
    Measurement result;
    result.seconds = double(timer.nsecsElapsed()) / 1.0e9;
    result.peakResidentMegabytes = double(usage.ru_maxrss) / 1024.0; // kilobytes on Linux
    result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

std::optional<std::vector<qint64>> parseRunCounts(const QString& text)
{
    std::vector<qint64> counts;
    for (const QString& part : text.split(QLatin1Char(','))) {
        bool ok = false;
        const qint64 count = part.toLongLong(&ok);
        if (!ok || count < 1)
            return std::nullopt;
        counts.push_back(count);
    }
    return counts;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();

    if (arguments.size() == 4 && arguments[1] == u"--write") {
        const std::optional<std::vector<qint64>> runs = parseRunCounts(arguments[2]);
        if (!runs || runs->size() != 1) {
            printUsage();
            return kUsageExit;
        }
        return writeDocument(runs->front(), arguments[3]) ? 0 : kFailureExit;
    }

    std::vector<qint64> runCounts{100000, 1000000};
    QString keep;
    for (qsizetype i = 1; i < arguments.size(); i += 2) {
        if (i + 1 >= arguments.size()) {
            printUsage();
            return kUsageExit;
        }
        if (arguments[i] == u"--runs") {
            const std::optional<std::vector<qint64>> counts = parseRunCounts(arguments[i + 1]);
            if (!counts) {
                printUsage();
                return kUsageExit;
            }
            runCounts = *counts;
        } else if (arguments[i] == u"--keep") {
            keep = arguments[i + 1];
        } else {
            printUsage();
            return kUsageExit;
        }
    }

    QTemporaryDir temporary(QDir::tempPath() + QStringLiteral("/document-bench-XXXXXX"));
    const QDir dir(keep.isEmpty() ? temporary.path() : keep);
    if ((keep.isEmpty() && !temporary.isValid()) || !dir.exists()) {
        std::fputs("document-bench: no folder to write the documents into\n", stderr);
        return kFailureExit;
    }

    for (const qint64 runs : runCounts) {
        for (const char* suffix : {"lomir", "rtf"}) {
            const QString input =
                dir.filePath(QStringLiteral("runs-%1.%2").arg(runs).arg(QLatin1String(suffix)));
            if (!writeDocument(runs, input))
                return kFailureExit;
            const qint64 bytes = QFileInfo(input).size();
            const QString output =
                dir.filePath(QStringLiteral("runs-%1-%2.txt").arg(runs).arg(QLatin1String(suffix)));
            const std::pair<const char*, QStringList> commands[] = {
                {"inspect", {QStringLiteral("inspect"), input}},
                {"convert", {QStringLiteral("convert"), input, output}},
            };
            for (const auto& [name, commandArguments] : commands) {
                const std::optional<Measurement> measured = measure(commandArguments);
                if (!measured) {
                    std::fputs("document-bench: cannot run " LOMIR_BINARY "\n", stderr);
                    return kFailureExit;
                }
                std::printf("runs=%lld input=%s bytes=%lld command=%s seconds=%.3f "
                            "peak_rss_mb=%.1f exit=%d\n",
                            static_cast<long long>(runs), suffix, static_cast<long long>(bytes),
                            name, measured->seconds, measured->peakResidentMegabytes,
                            measured->exitStatus);
                std::fflush(stdout);
            }
            if (keep.isEmpty())
                QFile::remove(output);
        }
    }
    return 0;
}
