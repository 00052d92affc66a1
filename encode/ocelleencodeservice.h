// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMediaService>

class OcelleEncodeSession;
class OcelleEncodedVideoSourceControl;
class OcelleEncoderSettingsControl;
class OcelleProvider;

/*!
 * The encoder service: makes the session and all controls once, and hands the controls out by
 * interface id.
 *
 * Threads: application thread.
 * Owner:   Qt, until OcelleProvider::release(). Controls stay the service's own.
 */
class OcelleEncodeService : public QMediaService
{
    Q_OBJECT
public:
    OcelleEncodeService(OcelleProvider *provider, QObject *parent);
    ~OcelleEncodeService();

    QMediaControl *requestControl(const char *name) override; // null for an unknown id
    void releaseControl(QMediaControl *control) override;     // does nothing

private:
    OcelleEncodeSession *const m_session;                        // owned, goes last
    OcelleEncoderSettingsControl *const m_settingsControl;       // owned
    OcelleEncodedVideoSourceControl *const m_videoSourceControl; // owned
};
