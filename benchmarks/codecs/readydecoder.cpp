// SPDX-License-Identifier: BSD-3-Clause
#include "readydecoder.h"

using Veltra::Ocelle::DecoderConfig;
using Veltra::Ocelle::FrameType;
using Veltra::Ocelle::GraphicBuffer;
using Veltra::Ocelle::PixelFormat;

bool ReadyDecoder::initialize(DecoderConfig config)
{
    const std::size_t luma = std::size_t(config.width) * std::size_t(config.height);
    m_memory.assign(luma * 3 / 2, 128);
    for (auto &picture : m_pictures) {
        picture = std::make_shared<GraphicBuffer>();
        picture->width = config.width;
        picture->height = config.height;
        picture->format = PixelFormat::YU12;
        picture->planeCount = 3;
        picture->planes[0] = { m_memory.data(), config.width, config.height };
        picture->planes[1] = { m_memory.data() + luma, config.width / 2, config.height / 2 };
        picture->planes[2] = { m_memory.data() + luma * 5 / 4, config.width / 2,
                               config.height / 2 };
        picture->live = false;
    }
    return luma > 0;
}

bool ReadyDecoder::decode(const unsigned char *, std::uint64_t, std::uint64_t timestamp, FrameType,
                          void (*release)(void *), void *releaseArg)
{
    release(releaseArg);
    std::shared_ptr<GraphicBuffer> picture = m_pictures[m_next % m_pictures.size()];
    picture->timestamp = std::int64_t(timestamp);
    picture->sequence = m_next++;
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (m_listener)
        m_listener->onDecodedGraphicBuffer(std::move(picture));
    return true;
}
