// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QList>
#include <QMediaControl>
#include <QStringList>
#include <QVideoFrame>

#include <palaver/qpvencodedvideoframe.h>
#include <palaver/qpvencoder.h>
#include <palaver/qpvglobal.h>

class QVideoSurfaceFormat;

/*! Drives a video encoder. */
class PALAVER_EXPORT QPVEncodeControl : public QMediaControl
{
    Q_OBJECT
public:
    ~QPVEncodeControl();

    virtual QStringList supportedCodecs(bool flag) const = 0; // MIME types
    virtual QList<QVideoFrame::PixelFormat> supportedPixelFormats() const = 0;
    virtual QPVEncoder::Status status() const = 0;
    virtual bool start(const QVideoSurfaceFormat &format) = 0;
    virtual void drain() = 0;
    virtual void flush() = 0;
    virtual void stop() = 0;
    virtual bool encode(const QVideoFrame &frame) = 0; // false: not taken

Q_SIGNALS:
    void statusChanged(QPVEncoder::Status status);
    void error(QPVEncoder::Error error, const QString &errorString);
    void encodedVideoFrame(QPVEncodedVideoFrame frame);
    void endOfStream();

protected:
    explicit QPVEncodeControl(QObject *parent = nullptr);
};

#define QPVEncodeControl_iid "veltra.palaver.encodecontrol/1.0"
Q_MEDIA_DECLARE_CONTROL(QPVEncodeControl, QPVEncodeControl_iid)
