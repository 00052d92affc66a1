// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "codecservice.h"
#include "surface.h"

#include <QCamera>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QVideoSurfaceFormat>
#include <QVideoWidget>

#include <palaver/qpvdecodecontrol.h>
#include <palaver/qpvencodecontrol.h>

class QPVRawVideoSourceControl;
class QVideoEncoderSettingsControl;
class QVideoRendererControl;

/*!
 * The camera's picture beside what becomes of it behind encoder and decoder.
 *
 * Threads: the application thread.
 * Errors:  the first one by failed(), and the window says the same.
 */
class CallWindow : public QWidget
{
    Q_OBJECT
public:
    CallWindow();
    ~CallWindow() override;

    void start();
    void stop();
    void requestKeyFrame() { m_wantsKeyFrame = true; }
    int bitRate() const { return m_bitRate.value(); } // bits per second
    void setBitRate(int bitRate) { m_bitRate.setValue(bitRate); }
    QString summary() const;

signals:
    void pictureReceived(int count);
    void failed(const QString &error);

private:
    void startEncoder(const QVideoSurfaceFormat &format);
    void send(QVideoFrame frame);
    void receive(const QPVEncodedVideoFrame &unit);
    void showReceived(const QVideoFrame &frame);
    void applyBitRate();
    void fail(const QString &error);

    QLabel m_text;
    QSlider m_bitRate { Qt::Horizontal };
    QPushButton m_keyFrame { tr("Key frame") };
    QVideoWidget m_local;  // the camera's picture
    QVideoWidget m_remote; // what came through

    // What feeds a surface is declared after it, and so goes before it.
    // The camera's pictures to the encoder, and the decoder's in a format that the widget draws.
    Surface m_sending { { QVideoFrame::Format_NV12, QVideoFrame::Format_YUV420P } };
    Surface m_receiving { m_remote.videoSurface()->supportedPixelFormats() };
    CodecService m_decoding { QStringLiteral("veltra.palaver.decoder") };
    CodecService m_encoding { QStringLiteral("veltra.palaver.encoder") };
    QCamera m_camera;

    QPVDecodeControl *m_decoder = nullptr; // these are the services'
    QVideoRendererControl *m_renderer = nullptr;
    QPVEncodeControl *m_encoder = nullptr;
    QVideoEncoderSettingsControl *m_settings = nullptr;
    QPVRawVideoSourceControl *m_raw = nullptr;

    bool m_hasFailed = false;
    bool m_wantsKeyFrame = false;
    bool m_decodes = false; // the decoder takes units
    int m_sent = 0;         // pictures
    int m_keyFrames = 0;
    int m_received = 0;
};
