// SPDX-License-Identifier: BSD-3-Clause
#pragma once

namespace Veltra {
namespace Ocelle {

/*!
 * libav speaks of every flaw of a stream on standard error; here only what has a consequence is
 * told. Makes it silent for the process, unless the application has chosen how much it says. Any
 * thread.
 */
void quietLibav();

} // namespace Ocelle
} // namespace Veltra
