// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <sys/types.h>

/*!
 * What the kernel says of the threads of this program, to wait until one of them waits.
 *
 * Threads: any thread.
 */
namespace ThreadState {

/*! The kernel's number for the calling thread. */
pid_t current();

/*! Returns once \a thread sleeps, for a lock, say, or has ended. */
void waitUntilAsleep(pid_t thread);

} // namespace ThreadState
