// SPDX-License-Identifier: BSD-3-Clause
#include "ocellecapturecontrol.h"

#include "ocellecapturesession.h"

OcelleCaptureControl::OcelleCaptureControl(OcelleCaptureSession *session)
    : m_session(session)
{
    connect(session, &OcelleCaptureSession::error, this, &QCameraControl::error);
}

QCamera::State OcelleCaptureControl::state() const
{
    return m_session->requestedState();
}

void OcelleCaptureControl::setState(QCamera::State state)
{
    m_session->requestState(state);
}

QCamera::Status OcelleCaptureControl::status() const
{
    return m_session->status();
}

QCamera::CaptureModes OcelleCaptureControl::captureMode() const
{
    return QCamera::CaptureVideo;
}

void OcelleCaptureControl::setCaptureMode(QCamera::CaptureModes) {}

bool OcelleCaptureControl::isCaptureModeSupported(QCamera::CaptureModes mode) const
{
    return mode == QCamera::CaptureVideo;
}

bool OcelleCaptureControl::canChangeProperty(PropertyChangeType, QCamera::Status status) const
{
    return status <= QCamera::StoppingStatus;
}
