// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoSurface>
#include <QPointer>

#include <palaver/qpvrawvideosourcecontrol.h>

class OcelleCaptureSession;
class OcelleVideoOutput;

/*!
 * Gives the captured pictures to a second surface, beside the viewfinder's.
 *
 * Threads: application thread.
 * Owner:   OcelleCaptureService; goes before the session.
 */
class OcelleRawVideoSourceControl : public QPVRawVideoSourceControl
{
    Q_OBJECT
public:
    explicit OcelleRawVideoSourceControl(OcelleCaptureSession *session);
    ~OcelleRawVideoSourceControl();

    QAbstractVideoSurface *surface() const override; // null once the surface is destroyed
    /*! Null is remembered, but the pictures go on to the surface set before. */
    void setSurface(QAbstractVideoSurface *surface) override;

private:
    QPointer<QAbstractVideoSurface> m_surface;
    OcelleCaptureSession *const m_session; // not owned, outlives the control
    OcelleVideoOutput *m_output = nullptr; // owned; made for the first surface
};
