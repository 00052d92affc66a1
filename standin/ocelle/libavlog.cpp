// SPDX-License-Identifier: BSD-3-Clause
#include "libavlog.h"

#include <mutex>

extern "C" {
#include <libavutil/log.h>
}

namespace Veltra {
namespace Ocelle {

void quietLibav()
{
    static std::once_flag once;
    std::call_once(once, [] {
        if (av_log_get_level() == AV_LOG_INFO) // the application has not chosen
            av_log_set_level(AV_LOG_FATAL);
    });
}

} // namespace Ocelle
} // namespace Veltra
