// SPDX-License-Identifier: BSD-3-Clause
#include "codecopening.h"

namespace Veltra {
namespace Ocelle {

std::mutex &codecOpening()
{
    static std::mutex mutex;
    return mutex;
}

} // namespace Ocelle
} // namespace Veltra
