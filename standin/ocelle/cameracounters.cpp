// SPDX-License-Identifier: BSD-3-Clause
#include "cameracounters.h"

#include "camerastatistics.h"

#include <map>
#include <mutex>

namespace Veltra {
namespace Ocelle {

namespace {

struct Registry
{
    std::mutex mutex; // guards counters
    std::map<std::string, std::shared_ptr<CameraCounters>> counters;
};

Registry &registry()
{
    static Registry *const instance = new Registry; // never destroyed: captures may outlast main()
    return *instance;
}

} // namespace

std::shared_ptr<CameraCounters> CameraCounters::forCamera(const std::string &id)
{
    Registry &all = registry();
    const std::lock_guard<std::mutex> lock(all.mutex);
    std::shared_ptr<CameraCounters> &counters = all.counters[id];
    if (!counters)
        counters = std::make_shared<CameraCounters>();
    return counters;
}

std::vector<CameraStatistics> cameraStatistics()
{
    Registry &all = registry();
    const std::lock_guard<std::mutex> lock(all.mutex);
    std::vector<CameraStatistics> statistics;
    for (const auto &[id, counters] : all.counters) {
        // The parts before the whole, so that they never add up to more.
        const std::uint64_t late = counters->late.load(std::memory_order_acquire);
        const std::uint64_t dropped = counters->dropped.load(std::memory_order_acquire);
        const std::uint64_t captured = counters->captured.load(std::memory_order_acquire);
        statistics.push_back({ id, captured, dropped, late });
    }
    return statistics;
}

} // namespace Ocelle
} // namespace Veltra
