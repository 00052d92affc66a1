// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "cameracounters.h"
#include "listenergate.h"
#include "pacer.h"
#include "pictureproducer.h"

#include <ocelle/camera.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace Veltra {
namespace Ocelle {

/*!
 * One capture from start to stop, with a thread of its own.
 *
 * It outlives its camera where the camera is stopped or destroyed from within a callback: then the
 * thread still has to return from that callback, and keeps the run alive until it has.
 *
 * Threads: grouped below.
 * Owner:   the camera, and the capture thread.
 * Errors:  one call of CameraListener::onCameraError(), the last thing the capture thread does.
 */
class CaptureRun : public std::enable_shared_from_this<CaptureRun>
{
public:
    using Gate = ListenerGate<CameraListener>;

    /*! \a name is the camera's, for sentences of the run's own. */
    CaptureRun(std::string name, std::shared_ptr<Gate> gate,
               std::shared_ptr<CameraCounters> counters, std::unique_ptr<PictureProducer> producer);

    // Any thread; start() once
    /*! Delivers once \a previous, which may be empty, has finished. False if there is no thread. */
    bool start(std::shared_ptr<CaptureRun> previous);
    /*!
     * No picture is delivered any more. An error that came before this is still reported, for which
     * waitUntilFinished() waits.
     */
    void requestStop();
    /*! The same from within a callback, which is then the last one: no error follows it. */
    void requestSilentStop();
    /*! Ends it with \a message to the listener, unless it is ending already. */
    void fail(const std::string &message);
    /*! Until it is asked to stop or has failed. */
    bool isActive() const;
    /*! Returns once the capture thread has made its last callback. Not from within one. */
    void waitUntilFinished();

private:
    // Capture thread
    void run();
    void capture();
    template <class Ask>
    auto ask(Ask &&what) -> decltype(what());
    void deliver(std::uint64_t sequence, Pacer::TimePoint due, const Pacer &pacer);
    bool waitUntil(Pacer::TimePoint due);
    void reportError();

    void end(const std::string &error); // any thread, with m_mutex

    const std::string m_name;
    const std::shared_ptr<Gate> m_gate;
    const std::shared_ptr<CameraCounters> m_counters;
    std::unique_ptr<PictureProducer>
            m_producer;                     // capture thread once started; changed with m_mutex
    std::shared_ptr<CaptureRun> m_previous; // the same

    std::atomic<bool> m_ending { false }; // written under m_mutex, read anywhere

    mutable std::mutex m_mutex; // guards what follows, and goes with the conditions
    std::condition_variable m_woken;
    std::condition_variable m_done;
    std::string m_error; // to be reported
    bool m_finished = false;
};

} // namespace Ocelle
} // namespace Veltra
