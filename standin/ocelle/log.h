// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

namespace Veltra {
namespace Ocelle {

/*! Writes "ocelle: ", \a text and a line end to standard error in one go. Any thread. */
void printLine(const std::string &text);

} // namespace Ocelle
} // namespace Veltra
