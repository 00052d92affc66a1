// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <csignal>

/*! What a finished run of the tool left. */
struct ToolResult
{
    int exitCode = -1; // -1 if it did not end by itself, or not in time
    QByteArray output;
    QByteArray errors;
};

/*!
 * The tool as a process of its own, with cameras of the test's choosing and no display.
 *
 * Errors: every wait ends after half a minute.
 */
class ToolProcess
{
public:
    /*! \a plugins is a folder of Qt plugins besides the tool's own. */
    ToolProcess(const QStringList &arguments, const QString &cameras, const QString &plugins = {});
    ~ToolProcess();

    /*! Waits for one more line of standard output; empty if none comes. */
    QByteArray nextLine();
    /*! Waits until \a text is found on standard error. */
    bool waitForError(const QByteArray &text);
    void interrupt() { send(SIGINT); } // as Ctrl-C does
    void send(int signal);
    ToolResult finish();

    static ToolResult run(const QStringList &arguments,
                          const QString &cameras = QStringLiteral("pattern"))
    {
        return ToolProcess(arguments, cameras).finish();
    }

private:
    QProcess m_process;
    QByteArray m_errors; // those read so far
};
