// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "gate.h"

#include <atomic>
#include <functional>

class FakeVideoEncoder;

/*!
 * What the encoders of one codec manager do, changeable while they run.
 *
 * Threads: the flags and gates from any thread; the functions are set before the encoders are made.
 */
class FakeEncoderScript
{
public:
    std::atomic<bool> createFails { false };
    std::atomic<bool> initializeFails { false };
    std::atomic<bool> encodeFails { false };
    std::atomic<bool> keepsPictures { false }; // until FakeVideoEncoder::dropPictures()

    Gate initializeGate;
    Gate encodeGate;
    Gate destroyGate;

    /*! Called before an encoder is given out, on the calling thread. */
    std::function<void()> onCreate;
    /*! Called at the end of encode() and from the destructor, on the calling thread. */
    std::function<void(FakeVideoEncoder &)> onEncode;
    std::function<void(FakeVideoEncoder &)> onDestroy;
};
