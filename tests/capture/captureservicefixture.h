// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "capturerecorder.h"
#include "fakeplatform.h"
#include "ocellecapturesession.h"
#include "ocelleprovider.h"

#include <QCameraViewfinderSettings>
#include <QList>

#include <memory>

/*! The values of the lists of statuses, in the order of a camera's life. */
namespace Statuses {
constexpr int Unloaded = QCamera::UnloadedStatus;
constexpr int Loading = QCamera::LoadingStatus;
constexpr int Unloading = QCamera::UnloadingStatus;
constexpr int Loaded = QCamera::LoadedStatus;
constexpr int Standby = QCamera::StandbyStatus;
constexpr int Starting = QCamera::StartingStatus;
constexpr int Stopping = QCamera::StoppingStatus;
constexpr int Active = QCamera::ActiveStatus;
} // namespace Statuses

/*! Settings with a size (none if empty) and frame rates (none if 0). */
QCameraViewfinderSettings viewfinderSettings(const QSize &resolution, qreal minimumFrameRate = 0,
                                             qreal maximumFrameRate = 0);

/*!
 * A capture session over one scripted camera "back", as its service would have it: the camera is
 * selected, the control recorded. Shut down on destruction, once every gate is open.
 */
class CaptureSessionFixture
{
public:
    explicit CaptureSessionFixture(
            Veltra::Ocelle::CameraFacing facing = Veltra::Ocelle::CameraFacing::Back);
    ~CaptureSessionFixture();

    /*! Requests \a state and serves events until the camera is there; false if it never is. */
    bool reach(QCamera::State state);

    FakePlatform platform;
    std::shared_ptr<FakeCameraScript> script; // of the camera "back"
    OcelleProvider provider;
    std::unique_ptr<OcelleCaptureSession> session;
    CaptureRecorder recorder;
};
