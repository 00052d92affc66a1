// SPDX-License-Identifier: BSD-3-Clause
#include "callwindow.h"

#include <QCameraInfo>
#include <QGridLayout>
#include <QMediaService>
#include <QVideoEncoderSettingsControl>
#include <QVideoRendererControl>

#include <palaver/qpvrawvideosourcecontrol.h>

namespace {
const auto Codec = QStringLiteral("video/h264");
constexpr int MostBitRate = 4000000; // bits per second
} // namespace

CallWindow::CallWindow()
{
    m_bitRate.setRange(100000, MostBitRate);
    m_bitRate.setValue(1000000);
    m_bitRate.setAccessibleName(tr("Bit rate"));
    m_text.setWordWrap(true);
    auto *const layout = new QGridLayout(this);
    layout->addWidget(&m_local, 0, 0);
    layout->addWidget(&m_remote, 0, 1);
    layout->addWidget(&m_bitRate, 1, 0);
    layout->addWidget(&m_keyFrame, 1, 1);
    layout->addWidget(&m_text, 2, 0, 1, 2);
    layout->setRowStretch(0, 1);
    layout->setColumnStretch(0, 1); // the same width for both
    layout->setColumnStretch(1, 1);
    resize(1000, 480);

    connect(&m_keyFrame, &QPushButton::clicked, this, &CallWindow::requestKeyFrame);
    connect(&m_bitRate, &QSlider::valueChanged, this, &CallWindow::applyBitRate);
    connect(&m_sending, &Surface::formatCame, this, &CallWindow::startEncoder);
    connect(&m_sending, &Surface::pictureCame, this, &CallWindow::send);
    connect(&m_receiving, &Surface::pictureCame, this, &CallWindow::showReceived);
    connect(&m_camera, &QCamera::errorOccurred, this, [this](QCamera::Error error) {
        if (error != QCamera::NoError) // which is told too, when an error is over
            fail(m_camera.errorString());
    });
}

CallWindow::~CallWindow()
{
    stop();
}

void CallWindow::start()
{
    m_decoder = m_decoding.control<QPVDecodeControl *>();
    m_renderer = m_decoding.control<QVideoRendererControl *>();
    m_encoder = m_encoding.control<QPVEncodeControl *>();
    m_settings = m_encoding.control<QVideoEncoderSettingsControl *>();
    if (!m_decoder || !m_renderer)
        return fail(m_decoding.error());
    if (!m_encoder || !m_settings)
        return fail(m_encoding.error());
    if (QCameraInfo::defaultCamera().isNull())
        return fail(tr("There is no camera. \"ocelle doctor\" tells why."));
    if (QMediaService *const service = m_camera.service())
        m_raw = service->requestControl<QPVRawVideoSourceControl *>();
    if (!m_raw)
        return fail(tr("The camera is not one of Ocelle's. "
                       "QT_MULTIMEDIA_PREFERRED_PLUGINS=ocelle prefers these."));
    if (!m_encoder->supportedCodecs(false).contains(Codec))
        return fail(tr("There is no H.264 encoder here."));

    // What the services tell comes from threads of the library: queued, it comes to this one.
    connect(m_encoder, &QPVEncodeControl::encodedVideoFrame, this, &CallWindow::receive,
            Qt::QueuedConnection);
    connect(
            m_encoder, &QPVEncodeControl::error, this,
            [this](QPVEncoder::Error, const QString &error) { fail(error); }, Qt::QueuedConnection);
    connect(
            m_decoder, &QPVDecodeControl::error, this,
            [this](QPVDecoder::Error, const QString &error) { fail(error); }, Qt::QueuedConnection);
    connect(
            m_decoder, &QPVDecodeControl::statusChanged, this,
            [this](QPVDecoder::Status status) {
                // Not before the decoder is there, else it would miss the first key frame.
                if (status == QPVDecoder::StartingStatus && !m_decodes) {
                    m_decodes = true;
                    m_camera.start();
                }
            },
            Qt::QueuedConnection);
    applyBitRate();
    m_renderer->setSurface(&m_receiving);
    m_raw->setSurface(&m_sending); // beside the viewfinder
    m_camera.setViewfinder(&m_local);
    QVideoEncoderSettings stream;
    stream.setCodec(Codec);
    stream.setResolution(640, 480); // a hint; the stream knows better
    if (!m_decoder->start(stream))
        fail(tr("The decoder does not start."));
}

void CallWindow::stop()
{
    m_camera.stop();
    if (m_raw)
        m_raw->setSurface(nullptr);
    if (m_encoder)
        m_encoder->stop();
    if (m_decoder)
        m_decoder->stop();
    if (m_renderer)
        m_renderer->setSurface(nullptr);
    m_decodes = false;
}

/*! The camera is about to bring pictures of that size. */
void CallWindow::startEncoder(const QVideoSurfaceFormat &format)
{
    if (!m_encoder->start(format))
        fail(tr("The encoder does not start."));
}

void CallWindow::applyBitRate()
{
    if (!m_settings)
        return;
    QVideoEncoderSettings settings;
    settings.setCodec(Codec);
    settings.setBitRate(m_bitRate.value());
    settings.setEncodingMode(QMultimedia::ConstantBitRateEncoding);
    m_settings->setVideoSettings(settings); // also while it encodes
}

void CallWindow::send(QVideoFrame frame)
{
    if (m_wantsKeyFrame)
        frame.setMetaData(QStringLiteral("KeyFrame"), true);
    if (!m_encoder->encode(frame))
        return; // not ready yet, or it does not keep up: this picture is not sent
    m_wantsKeyFrame = false;
    ++m_sent;
}

/*! A unit from the encoder. A real call would send it through the network first. */
void CallWindow::receive(const QPVEncodedVideoFrame &unit)
{
    if (unit.meta().frameType == QPVEncodedVideoFrame::KeyFrame)
        ++m_keyFrames;
    if (m_decodes && !m_decoder->decode(unit))
        requestKeyFrame(); // a unit is lost, so what follows cannot be decoded right
}

void CallWindow::showReceived(const QVideoFrame &frame)
{
    // The widget's own surface draws what it is given, once it has been told the format.
    QAbstractVideoSurface *const screen = m_remote.videoSurface();
    const QVideoSurfaceFormat now = screen->surfaceFormat();
    const bool isAsBefore = screen->isActive() && now.frameSize() == frame.size() &&
                            now.pixelFormat() == frame.pixelFormat();
    if (!isAsBefore && !screen->start({ frame.size(), frame.pixelFormat() }))
        return fail(tr("The window cannot show pictures of this format."));
    if (!screen->present(frame))
        return fail(tr("The window does not show a picture that came."));
    ++m_received;
    if (!m_hasFailed)
        m_text.setText(summary());
    emit pictureReceived(m_received);
}

QString CallWindow::summary() const
{
    return tr("%1 sent, %2 key frames, %3 received, %4 kbit/s at most")
            .arg(m_sent)
            .arg(m_keyFrames)
            .arg(m_received)
            .arg(m_bitRate.value() / 1000);
}

void CallWindow::fail(const QString &error)
{
    if (m_hasFailed)
        return;
    m_hasFailed = true;
    m_text.setText(error);
    QMetaObject::invokeMethod(
            this, [this, error] { emit failed(error); }, Qt::QueuedConnection);
}
