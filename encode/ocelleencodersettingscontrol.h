// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QVideoEncoderSettingsControl>

class OcelleEncodeSession;

/*!
 * Qt's control of an encoder's settings over the encode session.
 *
 * Threads: any thread.
 * Owner:   OcelleEncodeService; goes before the session.
 * Units:   pixels, frames per second.
 */
class OcelleEncoderSettingsControl : public QVideoEncoderSettingsControl
{
    Q_OBJECT
public:
    OcelleEncoderSettingsControl(OcelleEncodeSession *session, QObject *parent);

    QList<QSize> supportedResolutions(const QVideoEncoderSettings &settings,
                                      bool *continuous) const override;
    QList<qreal> supportedFrameRates(const QVideoEncoderSettings &settings,
                                     bool *continuous) const override;
    QStringList supportedVideoCodecs() const override;                  // MIME types
    QString videoCodecDescription(const QString &codec) const override; // null for most
    QVideoEncoderSettings videoSettings() const override;
    void setVideoSettings(const QVideoEncoderSettings &settings) override;

private:
    OcelleEncodeSession *const m_session; // not owned
};
