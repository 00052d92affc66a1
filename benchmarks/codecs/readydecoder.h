// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "graphicbuffer.h"

#include <ocelle/videodecoder.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/*!
 * A decoder that has its pictures ready: what is left is what everybody else spends on them.
 *
 * Threads: calls its listener on the thread of decode().
 */
class ReadyDecoder : public Veltra::Ocelle::VideoDecoder
{
public:
    bool initialize(Veltra::Ocelle::DecoderConfig config) override;
    bool decode(const unsigned char *data, std::uint64_t size, std::uint64_t timestamp,
                Veltra::Ocelle::FrameType type, void (*release)(void *), void *releaseArg) override;
    void flush() override {}
    void drain() override {}
    void stop() override {}

private:
    std::array<std::shared_ptr<Veltra::Ocelle::GraphicBuffer>, 64> m_pictures; // more than are out
    std::vector<std::uint8_t> m_memory;                                        // of all of them
    std::size_t m_next = 0;
};
