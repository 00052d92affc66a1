// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "doubleunit.h"

#include <ocelle/videodecoder.h>

#include <atomic>
#include <deque>
#include <memory>
#include <thread>

/*!
 * A decoder of the double. Two pictures stay inside until others push them out.
 *
 * Threads: operations one at a time; the listener is called within decode() and drain().
 */
class DoubleDecoder : public Veltra::Ocelle::VideoDecoder
{
public:
    explicit DoubleDecoder(Veltra::Ocelle::CodecType type);
    ~DoubleDecoder() override;

    static int alive();

    bool initialize(Veltra::Ocelle::DecoderConfig config) override;
    bool decode(const unsigned char *data, std::uint64_t size, std::uint64_t timestamp,
                Veltra::Ocelle::FrameType type, void (*release)(void *), void *releaseArg) override;
    void flush() override;
    void drain() override;
    void stop() override;

private:
    struct Waiting
    {
        DoubleUnit unit;
        std::uint64_t timestamp;
    };

    bool decodeUnit(const unsigned char *data, std::uint64_t size, std::uint64_t timestamp);
    bool takeGarbage();
    bool refuse(const std::string &reason);
    void putOut(const Waiting &waiting);
    void hand(const std::shared_ptr<Veltra::Ocelle::GraphicBuffer> &picture);
    void endLate();

    static std::atomic<int> s_alive;
    const Veltra::Ocelle::CodecType m_type;
    bool m_isInitialized = false;
    bool m_isBroken = false;
    bool m_hasKey = false;
    int m_lost = 0;               // frames that give no picture from now on
    std::deque<Waiting> m_inside; // oldest first
    std::thread m_late;           // after flush(), where that is the fault
};
