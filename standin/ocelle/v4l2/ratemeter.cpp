// SPDX-License-Identifier: BSD-3-Clause
#include "ratemeter.h"

#include <algorithm>
#include <map>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr std::uint64_t LeastPictures = 4; // for a measurement

struct Registry
{
    std::mutex mutex; // guards meters
    std::map<std::string, std::shared_ptr<RateMeter>> meters;
};

Registry &registry()
{
    static auto *const all = new Registry; // never destroyed: threads may run until the very end
    return *all;
}

} // namespace

std::shared_ptr<RateMeter> RateMeter::forCamera(const std::string &id)
{
    const std::lock_guard<std::mutex> lock(registry().mutex);
    std::shared_ptr<RateMeter> &meter = registry().meters[id];
    if (!meter)
        meter = std::make_shared<RateMeter>();
    return meter;
}

void RateMeter::begin(const CameraRate &rate)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_rate = rate;
    m_count = 0;
}

void RateMeter::add(std::int64_t timestamp)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_times[m_count % Span] = timestamp;
    ++m_count;
}

CameraRate RateMeter::rate() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    CameraRate rate = m_rate;
    if (m_count < LeastPictures)
        return rate;
    const std::uint64_t intervals = std::min<std::uint64_t>(m_count, Span) - 1;
    const std::int64_t last = m_times[(m_count - 1) % Span];
    const std::int64_t first = m_times[(m_count - 1 - intervals) % Span];
    if (last > first)
        rate.measured = double(intervals) * 1e6 / double(last - first);
    return rate;
}

std::vector<CameraRate> cameraRates()
{
    std::map<std::string, std::shared_ptr<RateMeter>> meters;
    {
        const std::lock_guard<std::mutex> lock(registry().mutex);
        meters = registry().meters;
    }
    std::vector<CameraRate> all;
    for (const auto &[id, meter] : meters) {
        all.push_back(meter->rate());
        all.back().id = id;
    }
    return all;
}

} // namespace Ocelle
} // namespace Veltra
