// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMediaControl>
#include <QVideoRendererControl>

#include <palaver/qpvglobal.h>

/*!
 * Offers a service's raw pictures to a second video surface, beside the one of the service's own
 * renderer control.
 */
class PALAVER_EXPORT QPVRawVideoSourceControl : public QVideoRendererControl
{
    Q_OBJECT
public:
    ~QPVRawVideoSourceControl();

protected:
    explicit QPVRawVideoSourceControl(QObject *parent = nullptr);
};

#define QPVRawVideoSourceControl_iid "veltra.palaver.rawvideosourcecontrol/1.0"
Q_MEDIA_DECLARE_CONTROL(QPVRawVideoSourceControl, QPVRawVideoSourceControl_iid)
