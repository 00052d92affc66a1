// SPDX-License-Identifier: BSD-3-Clause
#include <QMetaType>
#include <QVideoSurfaceFormat>

#include <palaver/qpvrawvideosourcecontrol.h>

QPVRawVideoSourceControl::QPVRawVideoSourceControl(QObject *parent)
    : QVideoRendererControl(parent)
{
    // A surface's surfaceFormatChanged() may cross threads, queued.
    qRegisterMetaType<QVideoSurfaceFormat>();
}

QPVRawVideoSourceControl::~QPVRawVideoSourceControl() = default;
