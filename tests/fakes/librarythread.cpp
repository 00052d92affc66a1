// SPDX-License-Identifier: BSD-3-Clause
#include "librarythread.h"

#include <pthread.h>

#include <utility>

LibraryThread::LibraryThread(const char *name, std::function<void()> body)
    : m_thread([name, body = std::move(body)] {
        pthread_setname_np(pthread_self(), name);
        body();
    })
{
}

LibraryThread::~LibraryThread()
{
    join();
}

void LibraryThread::join()
{
    if (m_thread.joinable())
        m_thread.join();
}

void LibraryThread::run(const char *name, std::function<void()> body)
{
    LibraryThread thread(name, std::move(body));
}
