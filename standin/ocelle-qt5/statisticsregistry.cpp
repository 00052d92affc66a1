// SPDX-License-Identifier: BSD-3-Clause
#include "statisticsregistry.h"

#include "picturemailbox.h"

#include <algorithm>
#include <iterator>

namespace Veltra {
namespace Ocelle {

StatisticsRegistry &StatisticsRegistry::instance()
{
    static auto &registry = *new StatisticsRegistry;
    return registry;
}

void StatisticsRegistry::add(const QAbstractVideoSurface *surface,
                             const std::shared_ptr<PictureMailbox> &mailbox)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.emplace_back(surface, mailbox);
}

void StatisticsRegistry::remove(const QAbstractVideoSurface *surface, const PictureMailbox *mailbox)
{
    std::shared_ptr<PictureMailbox> removed; // released after the lock
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), [&](const Entry &entry) {
        return entry.first == surface && entry.second.get() == mailbox;
    });
    if (found == m_entries.end())
        return;
    removed = std::move(found->second);
    m_entries.erase(found);
}

bool StatisticsRegistry::sum(const QAbstractVideoSurface *surface,
                             VideoOutputStatistics &statistics) const
{
    std::vector<Entry> entries;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        std::copy_if(m_entries.begin(), m_entries.end(), std::back_inserter(entries),
                     [surface](const Entry &entry) { return entry.first == surface; });
    }
    if (entries.empty())
        return false;
    statistics = VideoOutputStatistics();
    for (const Entry &entry : entries) {
        const VideoOutputStatistics one = entry.second->statistics();
        statistics.delivered += one.delivered;
        statistics.presented += one.presented;
        statistics.dropped += one.dropped;
        statistics.refused += one.refused;
        statistics.missing += one.missing;
        statistics.duplicated += one.duplicated;
    }
    return true;
}

bool videoOutputStatistics(const QAbstractVideoSurface *surface, VideoOutputStatistics *statistics)
{
    return StatisticsRegistry::instance().sum(surface, *statistics);
}

} // namespace Ocelle
} // namespace Veltra
