// SPDX-License-Identifier: BSD-3-Clause
#include "streamreader.h"

#include "cameralist.h"
#include "shownfields.h"

#include <QFile>

namespace Tool {
namespace {

constexpr double UsualRate = 25; // pictures per second, where a file tells none

std::optional<VideoCodec> codecOf(AVCodecID id)
{
    switch (id) {
    case AV_CODEC_ID_H264:
        return VideoCodec::H264;
    case AV_CODEC_ID_HEVC:
        return VideoCodec::H265;
    case AV_CODEC_ID_VP8:
        return VideoCodec::VP8;
    case AV_CODEC_ID_VP9:
        return VideoCodec::VP9;
    default:
        return std::nullopt;
    }
}

/*! The demuxer for a bare stream; null where there is none. */
const char *bareDemuxer(VideoCodec codec)
{
    switch (codec) {
    case VideoCodec::H264:
        return "h264";
    case VideoCodec::H265:
        return "hevc";
    case VideoCodec::VP8:
    case VideoCodec::VP9:
        break;
    }
    return nullptr;
}

/*! What brings start codes to a stream that is described like that; null where it has them. */
const char *startCodeFilter(const AVCodecParameters &parameters)
{
    const bool isPacked = parameters.extradata_size > 0 && parameters.extradata[0] == 1;
    if (!isPacked)
        return nullptr;
    return parameters.codec_id == AV_CODEC_ID_H264   ? "h264_mp4toannexb"
           : parameters.codec_id == AV_CODEC_ID_HEVC ? "hevc_mp4toannexb"
                                                     : nullptr;
}

} // namespace

std::unique_ptr<StreamReader> StreamReader::open(const QString &path,
                                                 std::optional<VideoCodec> codec, QString *error)
{
    std::unique_ptr<StreamReader> reader(new StreamReader);
    reader->m_path = path;
    reader->m_packet.reset(av_packet_alloc());
    QString reason;
    if (!reader->openFile(codec, &reason)) {
        *error = QStringLiteral("%1: %2").arg(path, reason);
        return nullptr;
    }
    reader->readProperties();
    return reader;
}

StreamReader::~StreamReader()
{
    avformat_close_input(&m_container);
}

bool StreamReader::openFile(std::optional<VideoCodec> codec, QString *error)
{
    const char *const demuxer = codec ? bareDemuxer(*codec) : nullptr;
    bool isOpen = openInput(nullptr, error) && findStream(error);
    if (!isOpen && demuxer && QFile::exists(m_path)) // not recognised as anything
        isOpen = openInput(demuxer, error) && findStream(error);
    if (!isOpen)
        return false;
    const AVCodecID id = m_container->streams[m_stream]->codecpar->codec_id;
    const auto found = codecOf(id);
    if (!found) {
        *error = QStringLiteral("its video is %1, which is none of %2")
                         .arg(QLatin1String(avcodec_get_name(id)), joined(codecNames()));
        return false;
    }
    if (codec && codec != found) {
        *error =
                QStringLiteral("its video is %1, not %2").arg(codecName(*found), codecName(*codec));
        return false;
    }
    m_properties.codec = *found;
    return openTools(error);
}

bool StreamReader::openInput(const char *demuxer, QString *error)
{
    avformat_close_input(&m_container);
    const QByteArray url = "file:" + QFile::encodeName(m_path);
    const AVInputFormat *const format = demuxer ? av_find_input_format(demuxer) : nullptr;
    int code = avformat_open_input(&m_container, url.constData(), format, nullptr);
    if (code >= 0)
        code = avformat_find_stream_info(m_container, nullptr);
    if (code >= 0 && m_container->pb && avio_size(m_container->pb) == 0)
        code = AVERROR_INVALIDDATA; // which a name alone made a stream
    if (code < 0)
        *error = openErrorText(code);
    return code >= 0;
}

bool StreamReader::findStream(QString *error)
{
    m_stream = av_find_best_stream(m_container, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (m_stream < 0)
        *error = QStringLiteral("has no video");
    return m_stream >= 0;
}

bool StreamReader::openTools(QString *error)
{
    const AVStream *const stream = m_container->streams[m_stream];
    int code = 0;
    if (const char *const name = startCodeFilter(*stream->codecpar)) {
        AVBSFContext *filter = nullptr;
        code = av_bsf_alloc(av_bsf_get_by_name(name), &filter);
        m_filter.reset(filter);
        if (code >= 0)
            code = avcodec_parameters_copy(filter->par_in, stream->codecpar);
        if (code >= 0) {
            filter->time_base_in = stream->time_base;
            code = av_bsf_init(filter);
        }
    }
    if (code < 0) {
        *error = avErrorText(code);
        return false;
    }
    m_parser.reset(av_parser_init(stream->codecpar->codec_id));
    m_parserContext.reset(avcodec_alloc_context3(nullptr));
    if (m_parser && m_parserContext) {
        m_parser->flags |= PARSER_FLAG_COMPLETE_FRAMES;
        m_parserContext->codec_id = stream->codecpar->codec_id;
    }
    return true;
}

void StreamReader::readProperties()
{
    AVStream *const stream = m_container->streams[m_stream];
    m_properties.size = QSize(stream->codecpar->width, stream->codecpar->height);
    m_properties.rate = av_q2d(av_guess_frame_rate(m_container, stream, nullptr));
    if (!(m_properties.rate > 0))
        m_properties.rate = UsualRate;
    if (stream->time_base.num == 1)
        m_properties.timeScale = stream->time_base.den;
    m_properties.duration = toldDuration(*m_container, m_stream);
    m_properties.turn = storedTurn(*stream);
    m_end.set(m_properties.duration, m_properties.rate);
}

StreamReader::Result StreamReader::read(StreamUnit *unit, QString *error)
{
    const int code = readPacket();
    if (code == AVERROR_EOF)
        return Result::End;
    if (code < 0) {
        *error = missingEnd();
        if (error->isEmpty())
            *error = QStringLiteral("%1: %2").arg(m_path, avErrorText(code));
        return Result::Failed;
    }
    describe(unit);
    av_packet_unref(m_packet.get());
    return Result::Unit;
}

/*! The next packet of the video that holds something. */
int StreamReader::readPacket()
{
    for (;;) {
        int code = m_filter ? av_bsf_receive_packet(m_filter.get(), m_packet.get())
                            : av_read_frame(m_container, m_packet.get());
        if (m_filter && code == AVERROR(EAGAIN)) {
            code = feedFilter();
            if (code < 0)
                return code;
            continue;
        }
        if (code < 0)
            return code;
        if (m_packet->flags & AV_PKT_FLAG_CORRUPT)
            m_end.addCut();
        if (m_packet->stream_index == m_stream && m_packet->size > 0)
            return 0;
        av_packet_unref(m_packet.get());
    }
}

int StreamReader::feedFilter()
{
    int code = av_read_frame(m_container, m_packet.get());
    if (code == AVERROR_EOF)
        return av_bsf_send_packet(m_filter.get(), nullptr);
    if (code < 0)
        return code;
    if (m_packet->flags & AV_PKT_FLAG_CORRUPT)
        m_end.addCut();
    if (m_packet->stream_index == m_stream && m_packet->size > 0)
        code = av_bsf_send_packet(m_filter.get(), m_packet.get());
    av_packet_unref(m_packet.get());
    if (code == AVERROR_INVALIDDATA) { // the end of what is left of it
        m_end.addCut();
        return 0;
    }
    return code;
}

void StreamReader::describe(StreamUnit *unit)
{
    const AVPacket &packet = *m_packet;
    const auto period = static_cast<qint64>(1e6 / m_properties.rate);
    unit->data = QByteArray(reinterpret_cast<const char *>(packet.data), packet.size);
    unit->isKey = packet.flags & AV_PKT_FLAG_KEY;
    unit->fields = fieldsOf(packet);
    const std::int64_t due = packet.dts != AV_NOPTS_VALUE ? packet.dts : packet.pts;
    if (m_units == 0) {
        m_hasTimes = packet.pts != AV_NOPTS_VALUE;
        m_firstStamp = packet.pts;
        m_firstDue = due;
    }
    const bool isTimed = m_hasTimes && packet.pts != AV_NOPTS_VALUE;
    unit->time = isTimed ? microseconds(packet.pts - m_firstStamp) : m_units * period;
    unit->due =
            m_hasTimes && due != AV_NOPTS_VALUE ? microseconds(due - m_firstDue) : m_units * period;
    m_end.add(packet, unit->time, m_container->streams[m_stream]->time_base);
    ++m_units;
}

int StreamReader::fieldsOf(const AVPacket &packet)
{
    constexpr int whole = 2;
    const auto *const data = packet.data;
    if (m_properties.codec == VideoCodec::VP8 || m_properties.codec == VideoCodec::VP9)
        return isShown(m_properties.codec, data, std::size_t(packet.size)) ? whole : 0;
    if (m_properties.codec == VideoCodec::H265 || !m_parser) // H.265's fields are pictures
        return whole;
    std::uint8_t *parsed = nullptr;
    int size = 0;
    m_parser->picture_structure = AV_PICTURE_STRUCTURE_UNKNOWN;
    av_parser_parse2(m_parser.get(), m_parserContext.get(), &parsed, &size, data, packet.size,
                     packet.pts, packet.dts, -1);
    const AVPictureStructure structure = m_parser->picture_structure;
    return structure == AV_PICTURE_STRUCTURE_TOP_FIELD ||
                           structure == AV_PICTURE_STRUCTURE_BOTTOM_FIELD
                   ? 1
                   : whole;
}

qint64 StreamReader::microseconds(std::int64_t stamp) const
{
    return av_rescale_q(stamp, m_container->streams[m_stream]->time_base, Microseconds);
}

} // namespace Tool
