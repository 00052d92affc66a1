// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMediaService>

class OcelleDecodeSession;
class OcelleProvider;
class OcelleVideoRendererControl;

/*!
 * The decoder service: makes the session and the renderer control once and hands the controls out
 * by interface id.
 *
 * Threads: application thread.
 * Owner:   Qt, until OcelleProvider::release(). Controls stay the service's own.
 */
class OcelleDecodeService : public QMediaService
{
    Q_OBJECT
public:
    OcelleDecodeService(OcelleProvider *provider, QObject *parent);
    ~OcelleDecodeService();

    QMediaControl *requestControl(const char *name) override; // null for an unknown id
    void releaseControl(QMediaControl *control) override;     // does nothing

private:
    OcelleDecodeSession *const m_session;                // owned
    OcelleVideoRendererControl *const m_rendererControl; // owned; goes before the session
};
