// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <functional>
#include <string>
#include <thread>

namespace Veltra {
namespace Ocelle {

/*!
 * Starts a thread named \a name (up to 15 characters) that takes no signals, so that those of the
 * application stay with its own threads. Throws std::system_error where there is no thread to have.
 */
std::thread startThread(const std::string &name, std::function<void()> body);

} // namespace Ocelle
} // namespace Veltra
