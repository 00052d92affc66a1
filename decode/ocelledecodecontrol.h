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
 * Owner:   OcelleDecodeSession. Where a thread of the platform is inside error() when the service
 *          goes, the control stays until that returns, but must not be called any more.
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
    OcelleDecodeSession *const m_session; // not owned; gone where a decoder's error() holds this
    QVideoSurfaceFormat m_outputFormat;
};
