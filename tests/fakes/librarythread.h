// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <functional>
#include <thread>

/*!
 * A thread of the platform's own, outside Qt, named for the log. Joined on destruction.
 */
class LibraryThread
{
public:
    /*! Starts \a body on a thread called \a name, at most 15 characters. */
    LibraryThread(const char *name, std::function<void()> body);
    ~LibraryThread();
    LibraryThread(const LibraryThread &) = delete;
    LibraryThread &operator=(const LibraryThread &) = delete;

    void join();

    /*! Runs \a body on such a thread and waits for it. */
    static void run(const char *name, std::function<void()> body);

private:
    std::thread m_thread;
};
