// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "videooutputstatistics.h"

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace Veltra {
namespace Ocelle {

class PictureMailbox;

/*!
 * Which outputs of this process have which surface.
 *
 * Threads: any. Surfaces are compared, never touched.
 * Owner:   the process; it is never destroyed, so that objects of any lifetime can leave it.
 */
class StatisticsRegistry
{
public:
    static StatisticsRegistry &instance();

    void add(const QAbstractVideoSurface *surface, const std::shared_ptr<PictureMailbox> &mailbox);
    void remove(const QAbstractVideoSurface *surface, const PictureMailbox *mailbox);

    bool sum(const QAbstractVideoSurface *surface, VideoOutputStatistics &statistics) const;

private:
    using Entry = std::pair<const QAbstractVideoSurface *, std::shared_ptr<PictureMailbox>>;

    StatisticsRegistry() = default;

    mutable std::mutex m_mutex; // guards m_entries
    std::vector<Entry> m_entries;
};

} // namespace Ocelle
} // namespace Veltra
