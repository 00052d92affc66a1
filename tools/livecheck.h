// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "decoding.h"
#include "previewsurface.h"
#include "yuvpicture.h"

#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QQueue>

#include <palaver/qpvencodedvideoframe.h>

namespace Tool {

/*!
 * Decodes what is being recorded at once, shows it on a surface and compares it with what the
 * camera showed.
 *
 * Threads: the application thread.
 * Errors:  failed() with a text; ended() still follows finish().
 */
class LiveCheck : public QObject
{
    Q_OBJECT
public:
    struct Result
    {
        qint64 previewed = 0;       // pictures on the preview's surface
        qint64 units = 0;           // that the encoder put out
        qint64 decoded = 0;         // pictures on the surface behind the decoder
        qint64 lost = 0;            // units without a picture
        qint64 compared = 0;        // pictures
        double psnr = 0;            // dB, of all of them
        double lowestPsnr = 0;      // of one
        LatencyHistogram latencies; // from the camera to that surface, microseconds
    };

    explicit LiveCheck(QMediaServiceProviderPlugin *backend, QObject *parent = nullptr);

    QString problem(VideoCodec codec) const { return m_decoding.problem(codec); }
    bool start(VideoCodec codec, QSize size, QString *error);

    QAbstractVideoSurface *preview() { return &m_preview; } // for the camera
    void addCameraPicture(const QVideoFrame &frame);
    void addUnit(const QPVEncodedVideoFrame &unit);
    void finish(); // no more units come

    Result result() const;
    /*!
     * Saves the last picture that was compared as PREFIX-camera.png, PREFIX-decoded.png and
     * PREFIX-difference.png.
     */
    bool savePictures(const QString &prefix, QString *error) const;

signals:
    void failed(const QString &error);
    void ended();

private:
    void feed();
    void onDecoded();
    void compare(const YuvPicture &camera, const YuvPicture &decoded);

    PreviewSurface m_preview;
    PreviewSurface m_screen; // before the decoding, which lets go of it
    Decoding m_decoding;
    QHash<qint64, YuvPicture> m_camera; // by time, those not yet compared
    QQueue<qint64> m_times;             // of these, oldest first
    QQueue<StreamUnit> m_units;         // for which the decoder had no room
    bool m_isFinishing = false;
    Result m_result;
    std::uint64_t m_squaredError = 0;
    qint64 m_samples = 0;
    YuvPicture m_lastCamera;
    YuvPicture m_lastDecoded;
};

QString toText(const LiveCheck::Result &result);
QJsonObject toJson(const LiveCheck::Result &result);

} // namespace Tool
