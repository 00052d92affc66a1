// SPDX-License-Identifier: BSD-3-Clause
#include "librarythread.h"

#include <pthread.h>
#include <signal.h>

#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

/*! Blocks all signals on this thread for its lifetime; a thread started meanwhile inherits that. */
class SignalBlock
{
public:
    SignalBlock()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalBlock(const SignalBlock &) = delete;
    SignalBlock &operator=(const SignalBlock &) = delete;

private:
    sigset_t m_before;
};

} // namespace

std::thread startThread(const std::string &name, std::function<void()> body)
{
    const SignalBlock block;
    return std::thread([name, body = std::move(body)] {
        pthread_setname_np(pthread_self(), name.c_str());
        body();
    });
}

} // namespace Ocelle
} // namespace Veltra
