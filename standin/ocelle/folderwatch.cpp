// SPDX-License-Identifier: BSD-3-Clause
#include "folderwatch.h"

#include "librarythread.h"
#include "log.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <system_error>
#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr std::uint32_t Complete = IN_CLOSE_WRITE | IN_MOVED_TO;
constexpr std::uint32_t Gone = IN_DELETE | IN_MOVED_FROM;
constexpr std::uint32_t FolderGone = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT | IN_IGNORED;
constexpr std::uint32_t Watched =
        Complete | Gone | IN_CREATE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

} // namespace

FolderWatch::FolderWatch(std::string path)
    : m_path(std::move(path))
    , m_events(inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
    , m_quit(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (m_events < 0 || m_quit < 0 || inotify_add_watch(m_events, m_path.c_str(), Watched) < 0)
        m_error = std::strerror(errno);
}

FolderWatch::~FolderWatch()
{
    if (m_thread.joinable()) {
        eventfd_write(m_quit, 1);
        m_thread.join();
    }
    if (m_events >= 0)
        close(m_events);
    if (m_quit >= 0)
        close(m_quit);
}

void FolderWatch::start(Functions functions)
{
    if (!isValid())
        return;
    m_functions = std::move(functions);
    try {
        m_thread = startThread("OcelleFolder", [this] { run(); });
    } catch (const std::system_error &) {
        printLine("changes in \"" + m_path + "\" are not noticed: the system has no thread left");
    }
}

void FolderWatch::run()
{
    while (!m_folderGone) {
        std::array<pollfd, 2> waited { pollfd { m_events, POLLIN, 0 },
                                       pollfd { m_quit, POLLIN, 0 } };
        if (poll(waited.data(), waited.size(), -1) < 0 && errno != EINTR)
            return;
        if (waited[1].revents || !readEvents())
            return;
    }
}

bool FolderWatch::readEvents()
{
    alignas(inotify_event) std::array<char, 16 * 1024> buffer;
    const ssize_t size = read(m_events, buffer.data(), buffer.size());
    if (size < 0)
        return errno == EAGAIN || errno == EINTR;
    for (ssize_t at = 0; at < size && !m_folderGone;) {
        // The kernel pads names so that every record is aligned.
        const auto *const event = reinterpret_cast<const inotify_event *>(buffer.data() + at);
        handle(*event);
        at += ssize_t(sizeof(inotify_event) + event->len);
    }
    return true;
}

void FolderWatch::handle(const inotify_event &event)
{
    if (event.mask & IN_Q_OVERFLOW) {
        m_functions.onOverflow();
    } else if (event.mask & FolderGone) {
        m_folderGone = true;
        m_functions.onFolderGone();
    } else if (event.len > 0 && !(event.mask & IN_ISDIR)) {
        const std::string name = event.name;
        if (event.mask & Gone)
            m_functions.onGone(name);
        else if (event.mask & Complete || isCompleteAtOnce(name))
            m_functions.onComplete(name);
    }
}

/*! A new name of a file that exists elsewhere: nobody is going to write and close it. */
bool FolderWatch::isCompleteAtOnce(const std::string &name) const
{
    struct stat status
    {
    };
    if (lstat((m_path + '/' + name).c_str(), &status) != 0)
        return false;
    return S_ISLNK(status.st_mode) || (S_ISREG(status.st_mode) && status.st_nlink > 1);
}

} // namespace Ocelle
} // namespace Veltra
