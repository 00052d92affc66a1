// SPDX-License-Identifier: BSD-3-Clause
#include "threadstate.h"

#include <unistd.h>

#include <fstream>
#include <string>
#include <thread>

namespace {

/*! The kernel's letter for it; Z for one that has ended. */
char stateOf(pid_t thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string text;
    std::getline(file, text);
    const std::size_t nameEnd = text.rfind(") ");
    return nameEnd == std::string::npos ? 'Z' : text[nameEnd + 2];
}

} // namespace

pid_t ThreadState::current()
{
    return gettid();
}

void ThreadState::waitUntilAsleep(pid_t thread)
{
    for (char state = 'R'; state == 'R' || state == 'D'; state = stateOf(thread))
        std::this_thread::yield();
}
