// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <palaver/qpvencodecontrol.h>

class OcelleEncodeSession;

/*!
 * The exchange library's encode control over the encode session.
 *
 * Threads: any thread; for the signals see OcelleEncodeSession.
 * Owner:   OcelleEncodeSession, which emits the signals.
 */
class OcelleEncodeControl : public QPVEncodeControl
{
    Q_OBJECT
public:
    explicit OcelleEncodeControl(OcelleEncodeSession *session);

    QStringList supportedCodecs(bool flag) const override;
    QList<QVideoFrame::PixelFormat> supportedPixelFormats() const override;
    QPVEncoder::Status status() const override;
    bool start(const QVideoSurfaceFormat &format) override;
    void drain() override; // not implemented, says so
    void flush() override; // not implemented, says so
    void stop() override;
    bool encode(const QVideoFrame &frame) override;

private:
    OcelleEncodeSession *const m_session; // not owned, outlives the control
};
