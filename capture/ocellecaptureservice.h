// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMediaService>

class OcelleCaptureSession;
class OcelleInfoControl;
class OcelleProvider;
class OcelleRawVideoSourceControl;
class OcelleSelector;
class OcelleVideoRendererControl;
class OcelleViewfinderSettings2;

/*!
 * The camera service: makes the session and all controls once, and hands the controls out by
 * interface id.
 *
 * Threads: application thread.
 * Owner:   Qt, until OcelleProvider::release(). Controls stay the service's own.
 */
class OcelleCaptureService : public QMediaService
{
    Q_OBJECT
public:
    OcelleCaptureService(OcelleProvider *provider, QObject *parent);
    ~OcelleCaptureService();

    QMediaControl *requestControl(const char *name) override; // null for an unknown id
    void releaseControl(QMediaControl *control) override;     // does nothing

private:
    // Owned, deleted in this order from the last to the first but for the session, which goes last
    OcelleCaptureSession *const m_session;
    OcelleSelector *const m_selector;
    OcelleVideoRendererControl *const m_rendererControl;
    OcelleInfoControl *const m_infoControl;
    OcelleRawVideoSourceControl *const m_rawVideoSourceControl;
    OcelleViewfinderSettings2 *const m_viewfinderSettingsControl;
};
