// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "capturecontrol.h"

#include <ocelle/camera.h>

#include <memory>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * An opened camera of any source.
 *
 * Delivery is on a thread of its own, one per capture. stopCapture(), setListener() and the
 * destructor return when no callback for them is running any more; from within a callback of this
 * camera they return at once, and that callback is the last one.
 *
 * Threads: any.
 * Owner:   whoever opened it; what it delivered may outlive it.
 * Errors:  false from startCapture(), with the reason on standard error; what goes wrong later is
 *          told once through CameraListener::onCameraError(), and the capture has ended then.
 */
class StreamingCamera final : public Camera
{
public:
    explicit StreamingCamera(std::shared_ptr<CaptureControl> control);
    ~StreamingCamera() override;

    bool getInfo(CameraInfo &info) override;
    std::vector<PixelFormat> getSupportedPixelFormats() override;
    bool startCapture(const CameraCapability &capability, int flags) override;
    void stopCapture() override;
    bool captureStarted() override;

    /*! Through the control's gate: the base's mutex would go with a camera dropped in a callback. */
    void setListener(CameraListener *listener) override;

private:
    const std::shared_ptr<CaptureControl> m_control;
};

} // namespace Ocelle
} // namespace Veltra
