// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "driverstream.h"
#include "graphicbuffer.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace Veltra {
namespace Ocelle {

/*!
 * A picture in the driver's own memory, for a BufferPool.
 *
 * Threads: filled by the capture thread before it is handed out, read by anyone after.
 * Owner:   the pool; while it is out it keeps the stream's memory.
 */
class DriverPicture : public GraphicBuffer
{
public:
    void attach(std::shared_ptr<DriverStream> stream, std::uint32_t index)
    {
        m_stream = std::move(stream);
        m_index = index;
    }
    void release()
    {
        const std::shared_ptr<DriverStream> stream = std::move(m_stream);
        if (stream)
            stream->giveBack(m_index);
    }

private:
    std::shared_ptr<DriverStream> m_stream; // while it is out
    std::uint32_t m_index = 0;
};

} // namespace Ocelle
} // namespace Veltra
