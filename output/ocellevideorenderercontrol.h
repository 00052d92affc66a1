// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QAbstractVideoSurface>
#include <QPointer>
#include <QVideoRendererControl>

class OcelleVideoOutput;
class OcelleVideoSession;

/*!
 * Turns the application's surface into a video output and attaches it to the session.
 *
 * Threads: application thread.
 * Owner:   the service; goes before the session, which is the output's Qt parent.
 */
class OcelleVideoRendererControl : public QVideoRendererControl
{
    Q_OBJECT
public:
    OcelleVideoRendererControl(OcelleVideoSession *session, QObject *parent);
    ~OcelleVideoRendererControl();

    QAbstractVideoSurface *surface() const override; // null once the surface is destroyed
    void setSurface(QAbstractVideoSurface *surface) override;

private:
    void dropOutput();

    QPointer<QAbstractVideoSurface> m_surface;
    OcelleVideoSession *const m_session;   // not owned, outlives the control
    OcelleVideoOutput *m_output = nullptr; // owned; there while a surface is set
};
