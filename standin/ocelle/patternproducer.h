// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "bufferpool.h"
#include "picturememory.h"
#include "pictureproducer.h"
#include "testpattern.h"

#include <ocelle/camera.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Veltra {
namespace Ocelle {

/*!
 * Paints the test picture at a steady rate. A buffer gets the background when it is first used;
 * after that only what moves is painted, on the capture thread, right before delivery.
 */
class PatternProducer final : public PictureProducer
{
public:
    /*! \a caption is written into the picture. */
    PatternProducer(const CameraCapability &capability, PixelFormat format,
                    const std::string &caption);

    std::chrono::nanoseconds period() const override;
    std::chrono::nanoseconds catchUp() const override;
    std::optional<std::chrono::nanoseconds> next(const std::atomic<bool> &stop) override;
    std::shared_ptr<GraphicBuffer> picture(std::uint64_t sequence, std::int64_t timestamp) override;
    std::string error() const override { return {}; }

private:
    const CameraCapability m_capability;
    const PixelFormat m_format;
    const TestPattern m_pattern;
    const std::shared_ptr<BufferPool<PictureMemory>> m_pool;
    std::int64_t m_next = 0; // number of the next picture
};

} // namespace Ocelle
} // namespace Veltra
