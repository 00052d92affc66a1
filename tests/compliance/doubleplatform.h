// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "fault.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

class DoubleCameraManager;
class DoubleCodecManager;

/*!
 * A platform that keeps the whole contract, but for one fault: two cameras, and encoders and
 * decoders of H.264 and VP8 whose compression is a fiction of their own. The library's factories hand
 * it out while it lives.
 *
 * Threads: built and destroyed on the test's thread, one at a time; the rest on any.
 */
class DoublePlatform
{
public:
    explicit DoublePlatform(Fault fault);
    ~DoublePlatform();
    DoublePlatform(const DoublePlatform &) = delete;
    DoublePlatform &operator=(const DoublePlatform &) = delete;

    /*! Whether the platform that lives now has that fault. */
    static bool has(Fault fault);
    /*! Does not return until letGo(), where the platform has that fault. */
    static void hangWith(Fault fault);
    /*! Keeps \a kept as long as the platform lives. */
    static void keep(std::shared_ptr<void> kept);

    void letGo();

    DoubleCameraManager &cameras() { return *m_cameras; }
    DoubleCodecManager &codecs() { return *m_codecs; }

private:
    const Fault m_fault;
    std::mutex m_mutex; // guards the members below
    std::condition_variable m_released;
    bool m_isReleased = false;
    std::vector<std::shared_ptr<void>> m_kept;
    const std::unique_ptr<DoubleCameraManager> m_cameras;
    const std::unique_ptr<DoubleCodecManager> m_codecs;
};
