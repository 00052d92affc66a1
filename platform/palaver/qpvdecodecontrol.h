// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMediaControl>
#include <QStringList>
#include <QVideoEncoderSettings>
#include <QVideoSurfaceFormat>

#include <palaver/qpvdecoder.h>
#include <palaver/qpvencodedvideoframe.h>
#include <palaver/qpvglobal.h>

/*! Drives a video decoder. */
class PALAVER_EXPORT QPVDecodeControl : public QMediaControl
{
    Q_OBJECT
public:
    ~QPVDecodeControl();

    virtual QStringList supportedCodecs(bool flag) const = 0; // MIME types
    virtual bool isFormatSupported(const QVideoEncoderSettings &settings) const = 0;
    /*! Begins decoding a stream of the codec and resolution that \a settings name. */
    virtual bool start(const QVideoEncoderSettings &settings) = 0;
    virtual QVideoEncoderSettings codecSettings() const = 0;
    virtual QVideoSurfaceFormat outputFormat() const = 0;
    virtual bool decode(const QPVEncodedVideoFrame &frame) = 0; // false: refused
    virtual void drain() = 0; // decodes what is queued, then stops
    virtual void flush() = 0; // discards what is queued, then stops
    virtual void stop() = 0;  // as flush()
    virtual QPVDecoder::Status status() const = 0;

Q_SIGNALS:
    void statusChanged(QPVDecoder::Status status);
    void error(QPVDecoder::Error error, const QString &errorString);
    void outputFormatChanged(const QVideoSurfaceFormat &format);

protected:
    explicit QPVDecodeControl(QObject *parent = nullptr);
};

#define QPVDecodeControl_iid "veltra.palaver.decodecontrol/1.0"
Q_MEDIA_DECLARE_CONTROL(QPVDecodeControl, QPVDecodeControl_iid)
