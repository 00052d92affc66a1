// SPDX-License-Identifier: BSD-3-Clause
#include "videofilereader.h"

#include "avvideobuffer.h"

#include <QFile>

namespace Tool {
namespace {

constexpr double UsualRate = 25; // pictures per second, where a file tells none

} // namespace

std::unique_ptr<VideoFileReader> VideoFileReader::open(const QString &path, QString *error)
{
    std::unique_ptr<VideoFileReader> reader(new VideoFileReader);
    reader->m_path = path;
    reader->m_packet.reset(av_packet_alloc());
    reader->m_picture.reset(av_frame_alloc());
    QString reason;
    if (!reader->openStream(&reason)) {
        *error = QStringLiteral("%1: %2").arg(path, reason);
        return nullptr;
    }
    reader->readProperties();
    return reader;
}

VideoFileReader::~VideoFileReader()
{
    avformat_close_input(&m_container);
}

bool VideoFileReader::openStream(QString *error)
{
    const QByteArray url = "file:" + QFile::encodeName(m_path);
    int code = avformat_open_input(&m_container, url.constData(), nullptr, nullptr);
    if (code >= 0)
        code = avformat_find_stream_info(m_container, nullptr);
    if (code >= 0 && m_container->pb && avio_size(m_container->pb) == 0)
        code = AVERROR_INVALIDDATA; // which a name alone made a stream
    if (code < 0) {
        *error = openErrorText(code);
        return false;
    }
    const AVCodec *codec = nullptr;
    m_stream = av_find_best_stream(m_container, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (m_stream < 0) {
        *error = m_stream == AVERROR_DECODER_NOT_FOUND
                         ? QStringLiteral("there is no decoder for its video")
                         : QStringLiteral("has no video");
        return false;
    }
    m_decoder.reset(avcodec_alloc_context3(codec));
    m_decoder->pkt_timebase = m_container->streams[m_stream]->time_base;
    m_decoder->thread_count = 0;              // as many as there are processors
    m_decoder->thread_type = FF_THREAD_SLICE; // threads for pictures do not always tell of damage
    code = avcodec_parameters_to_context(m_decoder.get(), m_container->streams[m_stream]->codecpar);
    if (code >= 0)
        code = avcodec_open2(m_decoder.get(), codec, nullptr);
    if (code < 0)
        *error = avErrorText(code);
    return code >= 0;
}

void VideoFileReader::readProperties()
{
    AVStream *const stream = m_container->streams[m_stream];
    m_properties.size = QSize(stream->codecpar->width, stream->codecpar->height);
    m_properties.rate = av_q2d(av_guess_frame_rate(m_container, stream, nullptr));
    if (!(m_properties.rate > 0))
        m_properties.rate = UsualRate;
    if (stream->time_base.num == 1)
        m_properties.timeScale = stream->time_base.den;
    if (m_container->duration > 0)
        m_properties.duration = m_container->duration;
    m_properties.turn = storedTurn(*stream);
    m_end.set(toldDuration(*m_container, m_stream), m_properties.rate);
}

VideoFileReader::Result VideoFileReader::read(QVideoFrame *frame, QString *error)
{
    for (;;) {
        const int code = avcodec_receive_frame(m_decoder.get(), m_picture.get());
        if (code >= 0 && m_picture->decode_error_flags != 0)
            ++m_damaged;
        if (code >= 0)
            return wrap(frame, error) ? Result::Picture : Result::Failed;
        if (code == AVERROR_EOF)
            return Result::End;
        if (code != AVERROR(EAGAIN))
            ++m_damaged;
        if (!m_isDraining && !feed(error))
            return Result::Failed;
    }
}

/*! The next piece of the file for the decoder, or its end. */
bool VideoFileReader::feed(QString *error)
{
    const int code = av_read_frame(m_container, m_packet.get());
    if (code < 0 && code != AVERROR_EOF) {
        *error = QStringLiteral("%1: %2").arg(m_path, avErrorText(code));
        return false;
    }
    if (code < 0) {
        m_isDraining = true;
        avcodec_send_packet(m_decoder.get(), nullptr);
        return true;
    }
    if (m_packet->flags & AV_PKT_FLAG_CORRUPT)
        m_end.addCut();
    if (m_packet->stream_index == m_stream) {
        follow(*m_packet);
        if (avcodec_send_packet(m_decoder.get(), m_packet.get()) < 0)
            ++m_damaged;
    }
    av_packet_unref(m_packet.get());
    return true;
}

/*! How far the file has come. */
void VideoFileReader::follow(const AVPacket &packet)
{
    const AVRational timeBase = m_container->streams[m_stream]->time_base;
    if (m_packets == 0)
        m_firstPacket = packet.pts;
    const bool isTimed = packet.pts != AV_NOPTS_VALUE && m_firstPacket != AV_NOPTS_VALUE;
    const qint64 time = isTimed ? av_rescale_q(packet.pts - m_firstPacket, timeBase, Microseconds)
                                : qint64(double(m_packets) * 1e6 / m_properties.rate);
    m_end.add(packet, time, timeBase);
    ++m_packets;
}

bool VideoFileReader::wrap(QVideoFrame *frame, QString *error)
{
    const qint64 time = timeOf(*m_picture);
    if (AvVideoBuffer::formatOf(*m_picture) == QVideoFrame::Format_Invalid && !convert(error))
        return false;
    *frame = QVideoFrame(new AvVideoBuffer(m_picture.get()),
                         QSize(m_picture->width, m_picture->height),
                         AvVideoBuffer::formatOf(*m_picture));
    frame->setStartTime(time);
    av_frame_unref(m_picture.get());
    return true;
}

/*! Replaces the picture by one of a format that every encoder takes. */
bool VideoFileReader::convert(QString *error)
{
    AvPointer<AVFrame> converted(av_frame_alloc());
    converted->format = AV_PIX_FMT_YUV420P;
    converted->width = m_picture->width;
    converted->height = m_picture->height;
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), m_picture->width, m_picture->height,
                                        AVPixelFormat(m_picture->format), converted->width,
                                        converted->height, AV_PIX_FMT_YUV420P, SWS_BICUBIC, nullptr,
                                        nullptr, nullptr));
    const int code = m_scaler ? sws_scale_frame(m_scaler.get(), converted.get(), m_picture.get())
                              : AVERROR(EINVAL);
    if (code < 0) {
        *error = QStringLiteral("%1: a picture cannot be converted: %2")
                         .arg(m_path, avErrorText(code));
        return false;
    }
    m_picture = std::move(converted);
    return true;
}

/*! A picture without a time of its own comes one period after the last one. */
qint64 VideoFileReader::timeOf(const AVFrame &picture)
{
    const AVRational timeBase = m_container->streams[m_stream]->time_base;
    const std::int64_t stamp = picture.best_effort_timestamp;
    const auto period = static_cast<qint64>(1e6 / m_properties.rate);
    if (!m_hasFirst) {
        m_hasFirst = true;
        m_firstStamp = stamp;
        return m_lastTime = 0;
    }
    const bool hasTime = stamp != AV_NOPTS_VALUE && m_firstStamp != AV_NOPTS_VALUE;
    m_lastTime = hasTime ? av_rescale_q(stamp - m_firstStamp, timeBase, Microseconds)
                         : m_lastTime + period;
    return m_lastTime;
}

} // namespace Tool
