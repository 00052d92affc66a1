// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "camerasource.h"
#include "capturerun.h"
#include "pictureproducer.h"

#include <ocelle/camera.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace Veltra {
namespace Ocelle {

/*!
 * What starts and stops the captures of one opened camera.
 *
 * Kept apart from the camera so that a source can tell of an unplugged camera at any time without
 * ever holding the camera itself, whose last owner relies on its destructor to end delivery.
 *
 * Threads: any.
 * Owner:   the camera; its source refers to it weakly.
 * Errors:  false; the reason goes to standard error, one line.
 */
class CaptureControl
{
public:
    /*! Makes the pictures for one capture; empty, after a line on standard error, if it cannot. */
    using MakeProducer =
            std::function<std::unique_ptr<PictureProducer>(const CameraCapability &capability)>;

    CaptureControl(CameraDescription description, MakeProducer makeProducer);

    /*! False where it is started already or \a capability is not one of the camera's own. */
    bool start(const CameraCapability &capability);
    /*!
     * Ends delivery. Returns when the last callback has returned, or at once if called from within
     * a callback of this camera, which then is the last one.
     */
    void stop();
    bool isStarted() const;

    /*! Waits for a callback that is under way, unless called from within it. */
    void setListener(CameraListener *listener);

    /*! Ends a capture with an error and lets no other one begin. Does not wait. */
    void unplug();
    /*! The same, with the source's own words for the error. */
    void unplug(const std::string &error);

    const CameraDescription &description() const { return m_description; }

private:
    bool isOffered(const CameraCapability &capability) const;
    bool beginStart();
    bool finishStart(std::unique_ptr<PictureProducer> producer);
    std::string quotedName() const;

    const CameraDescription m_description;
    const MakeProducer m_makeProducer;
    const std::shared_ptr<CameraCounters> m_counters;
    const std::shared_ptr<CaptureRun::Gate> m_gate = std::make_shared<CaptureRun::Gate>();

    mutable std::mutex m_mutex;        // guards what follows
    std::shared_ptr<CaptureRun> m_run; // the latest one
    bool m_starting = false;
    bool m_unplugged = false;
};

} // namespace Ocelle
} // namespace Veltra
