// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "gate.h"

#include <atomic>
#include <functional>

class FakeVideoDecoder;

/*!
 * What the decoders of one codec manager do, changeable while they run.
 *
 * Threads: the flags, counts and gates from any thread; the functions are set while no decoder is
 *          called.
 */
class FakeDecoderScript
{
public:
    void openGates()
    {
        for (Gate *gate : { &initializeGate, &decodeGate, &flushGate, &drainGate, &stopGate })
            gate->open();
    }

    std::atomic<bool> createFails { false };
    std::atomic<bool> initializeFails { false };
    std::atomic<bool> decodeFails { false };
    std::atomic<bool> keepsBlocks { false }; // until FakeVideoDecoder::releaseBlocks()

    std::atomic<int> blocksTaken { 0 };
    std::atomic<int> blocksReleased { 0 };
    /*! Blocks that did not come with the C library's free and their own address for it. */
    std::atomic<int> foreignBlocks { 0 };

    // Hold the calls up, once logged
    Gate initializeGate;
    Gate decodeGate;
    Gate flushGate;
    Gate drainGate;
    Gate stopGate;

    // Called at the end of each call, on the calling thread
    std::function<void(FakeVideoDecoder &)> onInitialize;
    std::function<void(FakeVideoDecoder &)> onDecode;
    std::function<void(FakeVideoDecoder &)> onFlush;
    std::function<void(FakeVideoDecoder &)> onDrain;
    std::function<void(FakeVideoDecoder &)> onStop;
    std::function<void(FakeVideoDecoder &)> onDestroy; // at the start of the destructor
};
