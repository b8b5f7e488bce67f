#pragma once

// A virtual X display of the test's own (Xvfb, started through xvfb-run), for tests that
// run the application as a real process and type into it with xdotool. Nothing here
// touches the user's display.

#include <QDir>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace lomir::testing {

class VirtualDisplay
{
public:
    // The tools this needs that are not installed, for the skip message.
    static QStringList missingTools()
    {
        QStringList missing;
        for (const QString& tool : {QStringLiteral("xvfb-run"), QStringLiteral("xdotool")}) {
            if (QStandardPaths::findExecutable(tool).isEmpty())
                missing.append(tool);
        }
        return missing;
    }

    VirtualDisplay() = default;
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    ~VirtualDisplay()
    {
        // The command under xvfb-run waits for its input to end; xvfb-run then stops
        // the server.
        if (m_server.state() != QProcess::NotRunning) {
            m_server.closeWriteChannel();
            if (!m_server.waitForFinished(10000))
                m_server.kill();
            m_server.waitForFinished(5000);
        }
    }

    // Starts the server and learns its display name and authority file. xvfb-run picks
    // a free display number; two tests may pick the same at once, so a failed start is
    // tried again.
    bool start()
    {
        for (int attempt = 0; attempt < 3 && m_display.isEmpty(); ++attempt) {
            m_server.start(QStringLiteral("xvfb-run"),
                           {QStringLiteral("-a"), QStringLiteral("-s"),
                            QStringLiteral("-screen 0 1280x1024x24 -nolisten tcp"),
                            QStringLiteral("sh"), QStringLiteral("-c"),
                            QStringLiteral("echo \"$DISPLAY $XAUTHORITY\"; exec cat >/dev/null")});
            if (!m_server.waitForStarted(10000))
                continue;
            while (!m_server.canReadLine() && m_server.state() == QProcess::Running)
                m_server.waitForReadyRead(10000);
            const QStringList fields =
                QString::fromLocal8Bit(m_server.readLine()).trimmed().split(u' ');
            if (fields.size() == 2 && fields[0].startsWith(u':')) {
                m_display = fields[0];
                m_authority = fields[1];
            } else {
                m_server.kill();
                m_server.waitForFinished(5000);
            }
        }
        return !m_display.isEmpty() && m_runtimeDir.isValid();
    }

    // The environment for a process on this display: the X platform, and folders of
    // its own for runtime files.
    QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), m_display);
        environment.insert(QStringLiteral("XAUTHORITY"), m_authority);
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_runtimeDir.path());
        return environment;
    }

    // Runs xdotool with the arguments and returns its output, or nothing when it fails
    // or takes longer than the timeout.
    std::optional<QString> xdotool(const QStringList& arguments, int timeoutMs = 15000) const
    {
        QProcess tool;
        tool.setProcessEnvironment(environment());
        tool.start(QStringLiteral("xdotool"), arguments);
        if (!tool.waitForFinished(timeoutMs)) {
            tool.kill();
            tool.waitForFinished(5000);
            return std::nullopt;
        }
        if (tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0)
            return std::nullopt;
        return QString::fromLocal8Bit(tool.readAllStandardOutput()).trimmed();
    }

    // The first visible window whose name matches the pattern, waiting for it.
    std::optional<QString> waitForWindow(const QString& namePattern) const
    {
        const std::optional<QString> found =
            xdotool({QStringLiteral("search"), QStringLiteral("--sync"),
                     QStringLiteral("--onlyvisible"), QStringLiteral("--name"), namePattern});
        if (!found || found->isEmpty())
            return std::nullopt;
        return found->split(u'\n').constFirst();
    }

private:
    QProcess m_server;
    QString m_display;
    QString m_authority;
    QTemporaryDir m_runtimeDir;
};

} // namespace lomir::testing
