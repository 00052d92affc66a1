// SPDX-License-Identifier: BSD-3-Clause
#include "interruption.h"

#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>

namespace Tool {
namespace {

std::atomic<int> writeEnd { -1 };
static_assert(std::atomic<int>::is_always_lock_free, "read in a signal handler");

extern "C" void onSignal(int)
{
    const int error = errno;
    const char byte = 0;
    if (write(writeEnd.load(), &byte, 1) < 0)
        errno = error;
}

void setHandler(int signal, void (*handler)(int), int flags)
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigaction(signal, &action, nullptr);
}

bool isIgnored(int signal)
{
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

Interruption::Interruption(QObject *parent)
    : QObject(parent)
{
    if (pipe2(m_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return; // the signals keep ending the program at once
    auto *notifier = new QSocketNotifier(m_pipe[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        notifier->setEnabled(false);
        emit interrupted();
    });
    writeEnd = m_pipe[1];
    for (const int signal : { SIGINT, SIGTERM })
        setHandler(signal, onSignal, static_cast<int>(SA_RESTART | SA_RESETHAND));
    // Of a terminal that closes, both the shell and the kernel tell.
    m_takesHangUp = !isIgnored(SIGHUP); // as nohup has it
    if (m_takesHangUp)
        setHandler(SIGHUP, onSignal, SA_RESTART);
}

Interruption::~Interruption()
{
    if (m_pipe[0] < 0)
        return;
    for (const int signal : { SIGINT, SIGTERM })
        setHandler(signal, SIG_DFL, 0);
    if (m_takesHangUp)
        setHandler(SIGHUP, SIG_DFL, 0);
    close(m_pipe[0]);
    close(m_pipe[1]);
}

} // namespace Tool
