// SPDX-License-Identifier: BSD-3-Clause
#include "toolprocess.h"

#include <QDeadlineTimer>

namespace {
constexpr int Patience = 30000; // ms
} // namespace

ToolProcess::ToolProcess(const QStringList &arguments, const QString &cameras,
                         const QString &plugins)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("OCELLE_CAMERAS"), cameras);
    // The tool has to find its plugins, and that there is no display, by itself.
    for (const char *name : { "QT_PLUGIN_PATH", "QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY",
                              "QT_MULTIMEDIA_PREFERRED_PLUGINS" })
        environment.remove(QLatin1String(name));
    if (!plugins.isEmpty())
        environment.insert(QStringLiteral("QT_PLUGIN_PATH"), plugins);
    m_process.setProcessEnvironment(environment);
    m_process.start(QStringLiteral(OCELLE_TOOL), arguments);
    m_process.waitForStarted(Patience);
}

ToolProcess::~ToolProcess()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(Patience);
    }
}

QByteArray ToolProcess::nextLine()
{
    const QDeadlineTimer deadline(Patience);
    while (!m_process.canReadLine() && !deadline.hasExpired()) {
        if (!m_process.waitForReadyRead(int(deadline.remainingTime())))
            break;
    }
    return m_process.readLine().trimmed();
}

bool ToolProcess::waitForError(const QByteArray &text)
{
    const QDeadlineTimer deadline(Patience);
    m_process.setReadChannel(QProcess::StandardError);
    do {
        m_errors += m_process.readAllStandardError();
    } while (!m_errors.contains(text) && m_process.waitForReadyRead(int(deadline.remainingTime())));
    m_process.setReadChannel(QProcess::StandardOutput);
    return m_errors.contains(text);
}

void ToolProcess::send(int signal)
{
    if (m_process.processId() > 0)
        ::kill(pid_t(m_process.processId()), signal);
}

ToolResult ToolProcess::finish()
{
    ToolResult result;
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(Patience))
        return result;
    if (m_process.exitStatus() == QProcess::NormalExit)
        result.exitCode = m_process.exitCode();
    result.output = m_process.readAllStandardOutput();
    result.errors = m_errors + m_process.readAllStandardError();
    return result;
}
