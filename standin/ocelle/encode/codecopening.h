// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <mutex>

namespace Veltra {
namespace Ocelle {

/*!
 * Held while an encoder of a library that fills tables of the whole process is opened or closed,
 * some milliseconds, and never while calling anything else.
 */
std::mutex &codecOpening();

} // namespace Ocelle
} // namespace Veltra
