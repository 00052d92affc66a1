// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "camerarates.h"

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace Veltra {
namespace Ocelle {

/*! Measures one camera's rate from the times of its latest pictures. Any thread. */
class RateMeter
{
public:
    /*! The one of the camera called \a id, the same one for the life of the process. */
    static std::shared_ptr<RateMeter> forCamera(const std::string &id);

    /*! Forgets the earlier capture. */
    void begin(const CameraRate &rate);
    /*! A picture came, be it delivered or not. */
    void add(std::int64_t timestamp);
    CameraRate rate() const;

private:
    static constexpr std::size_t Span = 64; // pictures

    mutable std::mutex m_mutex; // guards what follows
    CameraRate m_rate;
    std::array<std::int64_t, Span> m_times {}; // microseconds, a ring
    std::uint64_t m_count = 0;
};

} // namespace Ocelle
} // namespace Veltra
