// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QVideoSurfaceFormat>

#include <palaver/qpvdecodecontrol.h>

class OcelleDecodeSession;

/*!
 * The application's handle on the decode session.
 *
 * Threads: application thread; error() may be emitted on any thread, statusChanged() is emitted on
 *          the application thread.
 * Owner:   OcelleDecodeSession.
 */
class OcelleDecodeControl : public QPVDecodeControl
{
    Q_OBJECT
public:
    explicit OcelleDecodeControl(OcelleDecodeSession *session);

    QStringList supportedCodecs(bool flag) const override;
    bool isFormatSupported(const QVideoEncoderSettings &settings) const override;
    bool start(const QVideoEncoderSettings &settings) override;
    QVideoEncoderSettings codecSettings() const override;
    QVideoSurfaceFormat outputFormat() const override; // as last set, not valid at first
    bool decode(const QPVEncodedVideoFrame &frame) override;
    void drain() override;
    void flush() override;
    void stop() override;
    QPVDecoder::Status status() const override;

    void setOutputFormat(const QVideoSurfaceFormat &format);

private:
    OcelleDecodeSession *const m_session; // not owned, outlives the control
    QVideoSurfaceFormat m_outputFormat;
};
