// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QObject>
#include <QString>
#include <QVideoEncoderSettings>

#include <ocelle/codecmanager.h>
#include <palaver/qpvencoder.h>

#include <atomic>
#include <memory>

class QVideoFrame;

namespace Veltra {
namespace Ocelle {
class VideoEncoder;
} // namespace Ocelle
} // namespace Veltra

/*!
 * Owns one encoder of the platform, configures it from the first picture after a start and hands it
 * the pictures, whose pixels stay where they are. What comes out goes to the encoder's listener.
 *
 * Threads: worker thread; status() any. The platform's encoder is destroyed on the worker thread,
 *          where it may call its listener once more.
 * Owner:   OcelleEncodeWorker, by value.
 * Units:   bits per second, frames per second, degrees.
 * Errors:  by result; the worker words them.
 */
class OcelleEncoder : public QObject
{
    Q_OBJECT
public:
    explicit OcelleEncoder(QObject *parent);
    ~OcelleEncoder();

    /*! The kind of codec a MIME type names, exactly; a warning and Unknown where it names none. */
    static Veltra::Ocelle::CodecType codecType(const QString &codec);

    // Worker thread
    //
    //  Unloaded --load--> Loaded --start--> Starting --first picture--> Active
    //     ^                                    |                          |
    //     '---------- Stopping <--flush, drain-+--------------------------'
    //
    /*! Refused, without a change, in any status but Unloaded; an empty pointer unloads. */
    bool load(std::shared_ptr<Veltra::Ocelle::VideoEncoder> encoder);
    /*! Refused, without a change, in any status but Loaded. */
    bool start(const QVideoEncoderSettings &settings);
    /*! Refused below Starting. All that a running encoder takes over is the bit rate. */
    bool changeSettings(const QVideoEncoderSettings &settings);
    /*! False where the picture is not taken, be it that the encoder does not start. */
    bool encode(const QVideoFrame &frame);
    /*! Release the encoder, without asking it for what it still holds; nothing below Starting. */
    void flush();
    void drain();
    void setStatus(QPVEncoder::Status status);

    // Any thread
    QPVEncoder::Status status() const;

signals:
    void statusChanged(QPVEncoder::Status status); // on the worker thread, no lock held

private:
    template <typename Picture, typename Encode>
    bool encodeAs(std::shared_ptr<Picture> picture, Encode operation);
    bool startUp(const QVideoFrame &frame);
    void setParameters();
    void release();

    std::shared_ptr<Veltra::Ocelle::VideoEncoder> m_encoder; // empty when unloaded
    std::atomic<QPVEncoder::Status> m_status {
        QPVEncoder::UnloadedStatus
    }; // written by the worker thread
    QVideoEncoderSettings m_settings;
};
