// SPDX-License-Identifier: BSD-3-Clause
#include "console.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace Tool {
namespace {

const char *programName = "ocelle"; // main thread only

void writeError(const QByteArray &text)
{
    endProgress();
    std::fputs(text.constData(), stderr);
}

bool progressShown = false; // main thread only

bool writeOut(const QByteArray &bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0)
        return true;
    static bool isTold = false; // main thread only
    if (!std::exchange(isTold, true))
        printError(QStringLiteral("standard output cannot be written to: %1")
                           .arg(QString::fromLocal8Bit(std::strerror(errno))));
    return false;
}

} // namespace

void holdStandardStreams()
{
    for (const int descriptor : { STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO }) {
        if (fcntl(descriptor, F_GETFD) < 0)
            open("/dev/null", O_RDONLY); // becomes the lowest one that is free, which is this one
    }
}

bool printLine(const QString &text)
{
    endProgress();
    return writeOut(text.toUtf8() + '\n');
}

bool printJson(const QJsonDocument &document, QJsonDocument::JsonFormat format)
{
    endProgress();
    const QByteArray json = document.toJson(format);
    return writeOut(json.endsWith('\n') ? json : json + '\n');
}

void setProgramName(const char *name)
{
    programName = name;
}

void printError(const QString &text)
{
    writeError(programName + (": " + text.toUtf8()) + '\n');
}

void printNote(const QString &text)
{
    writeError(text.toUtf8() + '\n');
}

bool progressIsLive()
{
    static const bool live = isatty(STDERR_FILENO) != 0;
    return live;
}

void printProgress(const QString &text)
{
    if (!progressIsLive()) {
        printNote(text);
        return;
    }
    std::fputs(("\r\033[K" + text.toUtf8()).constData(), stderr);
    progressShown = true;
}

void endProgress()
{
    if (progressShown)
        std::fputc('\n', stderr);
    progressShown = false;
}

} // namespace Tool
