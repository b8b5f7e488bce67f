// Reads label documents with very many attribute runs the way a user's command does, and
// reports how long `lomir inspect` and `lomir convert` take and how much memory they
// need. Every document is written by the program's own writers; every command runs as a
// child process under GNU time, so its peak memory is its own. One line per command on
// stdout:
//   runs=N input=lomir|rtf bytes=B command=inspect|convert seconds=T peak_rss_mb=M exit=E
// and, for a document the writers refuse (it would be beyond the limits that reading
// keeps to), one line saying so:
//   runs=N input=rtf refused="the sentence the writer gives"
//
// The runs alternate between two attribute sets (a bold heading face and a red body
// face), one character each, so that no two runs merge.

#include "core/document/documentformats.h"
#include "support/manyruns.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>
#include <cstdio>
#include <optional>
#include <vector>

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

// Writes the document, or says why the writers refuse it; false when it cannot be
// written for another reason.
bool writeDocument(qint64 runs, const QString& path, QString* refusal = nullptr)
{
    const QString type = typeForFileName(path);
    if (type != kLomirDocumentType && type != kRtfType) {
        std::fprintf(stderr, "document-bench: name the document .lomir or .rtf: %s\n",
                     qPrintable(path));
        return false;
    }
    Content record;
    record.labelText = AttributedString(testing::textWithRuns(runs));
    const Result<QByteArray> data = dataOfType(record, type);
    if (!data && refusal) {
        *refusal = data.error().message;
        return true;
    }
    QFile file(path);
    if (!data || !file.open(QIODevice::WriteOnly) || file.write(*data) != data->size()) {
        std::fprintf(stderr, "document-bench: cannot write %s\n", qPrintable(path));
        return false;
    }
    return true;
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
            QString refusal;
            if (!writeDocument(runs, input, &refusal))
                return kFailureExit;
            if (!refusal.isEmpty()) {
                std::printf("runs=%lld input=%s refused=\"%s\"\n", static_cast<long long>(runs),
                            suffix, qPrintable(refusal));
                std::fflush(stdout);
                continue;
            }
            const qint64 bytes = QFileInfo(input).size();
            const QString output =
                dir.filePath(QStringLiteral("runs-%1-%2.txt").arg(runs).arg(QLatin1String(suffix)));
            const std::pair<const char*, QStringList> commands[] = {
                {"inspect", {QStringLiteral("inspect"), input}},
                {"convert", {QStringLiteral("convert"), input, output}},
            };
            for (const auto& [name, commandArguments] : commands) {
                const std::optional<testing::MeasuredRun> measured =
                    testing::runMeasured(QStringLiteral(LOMIR_BINARY), commandArguments);
                if (!measured) {
                    std::fprintf(stderr, "document-bench: cannot run " LOMIR_BINARY " under %s\n",
                                 testing::kTimeProgram);
                    return kFailureExit;
                }
                std::printf("runs=%lld input=%s bytes=%lld command=%s seconds=%.3f "
                            "peak_rss_mb=%.1f exit=%d\n",
                            static_cast<long long>(runs), suffix, static_cast<long long>(bytes),
                            name, measured->seconds, double(measured->peakKilobytes) / 1024.0,
                            measured->exitStatus);
                std::fflush(stdout);
            }
            if (keep.isEmpty())
                QFile::remove(output);
        }
    }
    return 0;
}
