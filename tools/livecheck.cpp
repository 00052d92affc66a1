// SPDX-License-Identifier: BSD-3-Clause
#include "livecheck.h"

#include "frameimage.h"

namespace Tool {
namespace {

constexpr int MostKept = 64;      // pictures of the camera: more than the services have room for
constexpr int DifferenceGain = 8; // small ones would not be seen

QString milliseconds(double microseconds)
{
    return QString::number(microseconds / 1000, 'f', 2);
}

double rounded(double microseconds)
{
    return qRound64(microseconds) / 1000.0;
}

} // namespace

LiveCheck::LiveCheck(QMediaServiceProviderPlugin *backend, QObject *parent)
    : QObject(parent)
    , m_decoding(backend, &m_screen)
{
    connect(&m_screen, &PreviewSurface::pictureTaken, this, &LiveCheck::onDecoded);
    connect(&m_decoding, &Decoding::started, this, &LiveCheck::feed, Qt::QueuedConnection);
    connect(&m_decoding, &Decoding::roomWasMade, this, &LiveCheck::feed);
    connect(&m_decoding, &Decoding::damaged, this, &LiveCheck::failed);
    connect(&m_decoding, &Decoding::failed, this, &LiveCheck::failed);
    connect(&m_decoding, &Decoding::ended, this, &LiveCheck::ended);
}

bool LiveCheck::start(VideoCodec codec, QSize size, QString *error)
{
    return m_decoding.start(codec, size, error);
}

void LiveCheck::addCameraPicture(const QVideoFrame &frame)
{
    YuvPicture picture(frame, QRect());
    if (picture.isNull())
        return;
    m_camera.insert(frame.startTime(), std::move(picture));
    m_times.enqueue(frame.startTime());
    if (m_times.size() > MostKept)
        m_camera.remove(m_times.dequeue());
}

void LiveCheck::addUnit(const QPVEncodedVideoFrame &unit)
{
    StreamUnit taken;
    taken.data = unit.data();
    taken.time = qint64(unit.meta().timestamp);
    taken.isKey = unit.meta().frameType == QPVEncodedVideoFrame::KeyFrame;
    ++m_result.units;
    m_units.enqueue(taken);
    feed();
}

void LiveCheck::finish()
{
    m_isFinishing = true;
    feed();
}

void LiveCheck::feed()
{
    while (!m_units.isEmpty() && m_decoding.decode(m_units.head()))
        m_units.dequeue();
    if (m_isFinishing && m_units.isEmpty())
        m_decoding.drain();
}

void LiveCheck::onDecoded()
{
    const QVideoFrame frame = m_screen.frame();
    m_decoding.onPicture(frame.startTime());
    const auto camera = m_camera.find(frame.startTime());
    if (camera != m_camera.end()) {
        const YuvPicture decoded(frame, m_screen.viewport());
        compare(*camera, decoded);
        m_camera.erase(camera);
        m_times.removeOne(frame.startTime());
    }
    QMetaObject::invokeMethod(this, &LiveCheck::feed, Qt::QueuedConnection);
}

void LiveCheck::compare(const YuvPicture &camera, const YuvPicture &decoded)
{
    if (decoded.isNull() || camera.size() != decoded.size())
        return;
    const std::uint64_t error = camera.squaredErrorTo(decoded);
    const double one = psnr(error, camera.samples());
    m_result.lowestPsnr = m_result.compared == 0 ? one : qMin(m_result.lowestPsnr, one);
    ++m_result.compared;
    m_squaredError += error;
    m_samples += camera.samples();
    m_lastCamera = camera;
    m_lastDecoded = decoded;
}

LiveCheck::Result LiveCheck::result() const
{
    Result result = m_result;
    result.previewed = m_preview.presented();
    result.decoded = m_screen.presented();
    result.lost = qMax<qint64>(0, result.units - result.decoded);
    result.psnr = result.compared > 0 ? psnr(m_squaredError, m_samples) : 0;
    result.latencies = m_screen.latencies();
    return result;
}

bool LiveCheck::savePictures(const QString &prefix, QString *error) const
{
    const QImage camera = m_lastCamera.image();
    const QImage decoded = m_lastDecoded.image();
    if (camera.isNull() || decoded.isNull()) {
        *error = QStringLiteral("there are no pictures to save");
        return false;
    }
    const std::pair<const char *, QImage> images[] = {
        { "-camera.png", camera },
        { "-decoded.png", decoded },
        { "-difference.png", difference(camera, decoded, DifferenceGain) },
    };
    for (const auto &[suffix, image] : images) {
        const QString file = prefix + QLatin1String(suffix);
        QString reason;
        if (saveImage(image, file, &reason))
            continue;
        *error = QStringLiteral("%1 was not saved: %2").arg(file, reason);
        return false;
    }
    return true;
}

QString toText(const LiveCheck::Result &result)
{
    return QStringLiteral("decoded at once: %1 pictures of %2, %3 lost; PSNR %4 dB, at least %5 "
                          "dB; from the camera to the surface mean %6 ms, median %7 ms, max %8 ms")
            .arg(result.decoded)
            .arg(result.units)
            .arg(result.lost)
            .arg(result.psnr, 0, 'f', 1)
            .arg(result.lowestPsnr, 0, 'f', 1)
            .arg(milliseconds(result.latencies.mean()),
                 milliseconds(result.latencies.quantile(0.5)),
                 milliseconds(double(result.latencies.maximum())));
}

QJsonObject toJson(const LiveCheck::Result &result)
{
    return QJsonObject {
        { QStringLiteral("previewed"), result.previewed },
        { QStringLiteral("units"), result.units },
        { QStringLiteral("decoded"), result.decoded },
        { QStringLiteral("undecoded"), result.lost },
        { QStringLiteral("compared"), result.compared },
        { QStringLiteral("psnr"), qRound(result.psnr * 10) / 10.0 },
        { QStringLiteral("lowest_psnr"), qRound(result.lowestPsnr * 10) / 10.0 },
        { QStringLiteral("latency_mean_ms"), rounded(result.latencies.mean()) },
        { QStringLiteral("latency_median_ms"), rounded(result.latencies.quantile(0.5)) },
        { QStringLiteral("latency_max_ms"), rounded(double(result.latencies.maximum())) },
    };
}

} // namespace Tool
