// SPDX-License-Identifier: BSD-3-Clause
#include "log.h"

#include <cstdio>

namespace Veltra {
namespace Ocelle {

void printLine(const std::string &text)
{
    const std::string line = "ocelle: " + text + '\n';
    std::fwrite(line.data(), 1, line.size(),
                stderr); // one call: lines of several threads stay whole
}

} // namespace Ocelle
} // namespace Veltra
