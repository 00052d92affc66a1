// SPDX-License-Identifier: BSD-3-Clause
#include "capturerecorder.h"

#include "calllog.h"

#include <QCameraControl>

namespace {

void log(const QString &what)
{
    CallLog::instance().add(QStringLiteral("control"), what);
}

} // namespace

CaptureRecorder::CaptureRecorder(QCameraControl *control)
{
    connect(control, &QCameraControl::stateChanged, this,
            [this](QCamera::State state) { states.append(state); });
    connect(control, &QCameraControl::statusChanged, this,
            [this](QCamera::Status status) { statuses.append(status); });
    connect(control, &QCameraControl::error, this, [this](int code, const QString &text) {
        errors.append(QStringLiteral("%1 %2").arg(code).arg(text));
    });

    connect(control, &QCameraControl::stateChanged,
            [](QCamera::State state) { log(QStringLiteral("stateChanged(%1)").arg(state)); });
    connect(control, &QCameraControl::statusChanged,
            [](QCamera::Status status) { log(QStringLiteral("statusChanged(%1)").arg(status)); });
    connect(control, &QCameraControl::error, [](int code, const QString &text) {
        log(QStringLiteral("error(%1, %2)").arg(code).arg(text));
    });
}

void CaptureRecorder::clear()
{
    states.clear();
    statuses.clear();
    errors.clear();
}
