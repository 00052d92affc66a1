// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace Veltra {
namespace Ocelle {

/*! The live numbers behind CameraStatistics. Any thread. */
struct CameraCounters
{
    std::atomic<std::uint64_t> captured { 0 };
    std::atomic<std::uint64_t> dropped { 0 };
    std::atomic<std::uint64_t> late { 0 };

    /*! The counters of the camera called \a id, the same ones for the life of the process. */
    static std::shared_ptr<CameraCounters> forCamera(const std::string &id);
};

} // namespace Ocelle
} // namespace Veltra
