// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <thread>

struct inotify_event;

namespace Veltra {
namespace Ocelle {

/*!
 * Tells of files that appear in a folder, once they are completely written, and of those that go.
 *
 * Threads: made, started and destroyed on any one thread; calls its functions on a thread of its
 *          own. The destructor waits for one that is under way.
 * Errors:  isValid() is false, and error() tells why, where the folder cannot be watched.
 */
class FolderWatch
{
public:
    struct Functions
    {
        std::function<void(const std::string &name)> onComplete; // there, or written once more
        std::function<void(const std::string &name)> onGone;
        std::function<void()> onOverflow;   // some of the above were lost
        std::function<void()> onFolderGone; // nothing more will come
    };

    /*! Takes note of changes from now on, for start() to tell. */
    explicit FolderWatch(std::string path);
    ~FolderWatch();
    FolderWatch(const FolderWatch &) = delete;
    FolderWatch &operator=(const FolderWatch &) = delete;

    bool isValid() const { return m_error.empty(); }
    const std::string &error() const { return m_error; }

    /*! Begins to call; once. Without effect on a watch that is not valid. */
    void start(Functions functions);

private:
    void run(); // own thread
    bool readEvents();
    void handle(const inotify_event &event);
    bool isCompleteAtOnce(const std::string &name) const;

    const std::string m_path;
    std::string m_error;
    int m_events = -1; // inotify, owned
    int m_quit = -1;   // eventfd, owned
    Functions m_functions;
    bool m_folderGone = false; // own thread
    std::thread m_thread;
};

} // namespace Ocelle
} // namespace Veltra
