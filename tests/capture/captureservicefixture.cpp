// SPDX-License-Identifier: BSD-3-Clause
#include "captureservicefixture.h"

#include "calllog.h"
#include "ocellecapturecontrol.h"

#include <QtTest>

QCameraViewfinderSettings viewfinderSettings(const QSize &resolution, qreal minimumFrameRate,
                                             qreal maximumFrameRate)
{
    QCameraViewfinderSettings settings;
    if (!resolution.isEmpty())
        settings.setResolution(resolution);
    if (minimumFrameRate != 0)
        settings.setMinimumFrameRate(minimumFrameRate);
    if (maximumFrameRate != 0)
        settings.setMaximumFrameRate(maximumFrameRate);
    return settings;
}

CaptureSessionFixture::CaptureSessionFixture(Veltra::Ocelle::CameraFacing facing)
    : script(platform.cameras.add("back", facing))
    , provider(&platform.cameras, &platform.codecs)
    , session(new OcelleCaptureSession(&provider, nullptr))
    , recorder(session->captureControl())
{
    session->setDevice(QStringLiteral("back"));
    CallLog::instance().clear();
}

CaptureSessionFixture::~CaptureSessionFixture()
{
    for (Gate *gate :
         { &script->openGate, &script->infoGate, &script->startGate, &script->stopGate })
        gate->open();
    if (session)
        session->shutdown();
}

bool CaptureSessionFixture::reach(QCamera::State state)
{
    session->requestState(state);
    return QTest::qWaitFor([&] {
        const QCamera::Status status = session->status();
        const bool reached =
                state == QCamera::UnloadedState ? status == QCamera::UnloadedStatus
                : state == QCamera::LoadedState
                        ? status == QCamera::LoadedStatus || status == QCamera::StandbyStatus
                        : status == QCamera::ActiveStatus;
        // What the worker says on the way arrives before what it says last.
        return reached && !recorder.statuses.isEmpty() && recorder.statuses.last() == status;
    });
}
