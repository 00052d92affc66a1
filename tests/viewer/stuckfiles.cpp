// SPDX-License-Identifier: BSD-3-Clause
#include "stuckfiles.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace {

constexpr int Count = 120; // one for each second

int makePipe(const QByteArray &path)
{
    if (mkfifo(path.constData(), 0600) != 0)
        return -1;
    return open(path.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC); // a reader, for a writer's open
}

} // namespace

StuckFiles::StuckFiles(const QString &folder, const QString &suffix)
{
    QDir().mkpath(folder);
    const QDateTime now = QDateTime::currentDateTime();
    for (int second = 0; second < Count; ++second) {
        const QString time = now.addSecs(second).toString(QStringLiteral("yyyy-MM-dd HH-mm-ss"));
        m_pipes.append(makePipe(
                QFile::encodeName(QStringLiteral("%1/Camera %2%3").arg(folder, time, suffix))));
    }
}

StuckFiles::~StuckFiles()
{
    for (const int pipe : qAsConst(m_pipes))
        close(pipe);
}

bool StuckFiles::areThere() const
{
    return std::all_of(m_pipes.cbegin(), m_pipes.cend(), [](int pipe) { return pipe >= 0; });
}

bool StuckFiles::isOneFull() const
{
    return std::any_of(m_pipes.cbegin(), m_pipes.cend(), [](int pipe) {
        pollfd state { pipe, POLLOUT, 0 };
        return poll(&state, 1, 0) == 0; // no room for more
    });
}
