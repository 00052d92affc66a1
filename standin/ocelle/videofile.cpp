// SPDX-License-Identifier: BSD-3-Clause
#include "videofile.h"

#include "libavlog.h"

#include <sys/stat.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

constexpr std::chrono::nanoseconds LongestGap = std::chrono::seconds(10); // longer: a jump of time
constexpr int MostBadReads = 32;       // in a row, then it counts as the end of the file
constexpr int ManyPixels = 1280 * 720; // from here on two threads decode
constexpr double UsualRate = 25;       // where the file does not tell
constexpr double HighestRate = 1000;   // a file that tells more does not tell
constexpr AVRational Nanoseconds { 1, 1000000000 };

std::string textOf(int error)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text {};
    av_strerror(error, text.data(), text.size());
    return text.data();
}

bool endsWith(const std::string &text, const std::string &end)
{
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

} // namespace

std::unique_ptr<VideoFile> VideoFile::open(const std::string &path, std::string &error)
{
    quietLibav();
    struct stat status
    {
    };
    if (stat(path.c_str(), &status) != 0) {
        error = std::string("cannot be read: ") + std::strerror(errno);
        return {};
    }
    if (!S_ISREG(status.st_mode)) {
        error = "is not a file";
        return {};
    }
    std::unique_ptr<VideoFile> file(new VideoFile);
    file->m_path = path;
    file->m_packet = av_packet_alloc();
    file->m_frame = av_frame_alloc();
    if (!file->openContainer(path, error) || !file->openDecoder(error))
        return {};
    return file;
}

VideoFile::~VideoFile()
{
    av_frame_free(&m_frame);
    av_packet_free(&m_packet);
    avcodec_free_context(&m_decoder);
    avformat_close_input(&m_container);
}

bool VideoFile::openContainer(const std::string &path, std::string &error)
{
    AVDictionary *options = nullptr; // a playlist must not make this process fetch anything
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    const int opened =
            avformat_open_input(&m_container, ("file:" + path).c_str(), nullptr, &options);
    av_dict_free(&options);
    if (opened < 0) {
        error = "cannot be read as video: " + textOf(opened);
        return false;
    }
    if (isStillPicture()) {
        error = "is not a video";
        return false;
    }
    const int analysed = avformat_find_stream_info(m_container, nullptr);
    m_stream = av_find_best_stream(m_container, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (analysed < 0 || m_stream < 0 ||
        m_container->streams[m_stream]->disposition & AV_DISPOSITION_ATTACHED_PIC) {
        error = "has no video";
        return false;
    }
    for (unsigned i = 0; i < m_container->nb_streams; ++i) {
        if (int(i) != m_stream)
            m_container->streams[i]->discard = AVDISCARD_ALL;
    }
    return true;
}

/*! Also true for plain text, which libavformat shows as a terminal would. */
bool VideoFile::isStillPicture() const
{
    const std::string name = m_container->iformat->name;
    return name == "tty" || name == "image2" || endsWith(name, "_pipe");
}

bool VideoFile::openDecoder(std::string &error)
{
    const AVStream *const stream = m_container->streams[m_stream];
    const AVCodecParameters *const parameters = stream->codecpar;
    const AVCodec *const codec = avcodec_find_decoder(parameters->codec_id);
    if (!codec) {
        error = std::string("is of a kind that no decoder here takes: ") +
                avcodec_get_name(parameters->codec_id);
        return false;
    }
    m_decoder = avcodec_alloc_context3(codec);
    avcodec_parameters_to_context(m_decoder, parameters);
    m_decoder->pkt_timebase = stream->time_base;
    m_decoder->thread_count = parameters->width * parameters->height >= ManyPixels ? 2 : 1;
    const int opened = avcodec_open2(m_decoder, codec, nullptr);
    if (opened < 0 || parameters->width <= 0 || parameters->height <= 0) {
        error = "cannot be decoded: " + (opened < 0 ? textOf(opened) : "it tells no size");
        return false;
    }
    readProperties();
    return true;
}

void VideoFile::readProperties()
{
    AVStream *const stream = m_container->streams[m_stream];
    AVRational rate = stream->avg_frame_rate;
    if (rate.num <= 0 || rate.den <= 0)
        rate = av_guess_frame_rate(m_container, stream, nullptr);
    double perSecond = rate.num > 0 && rate.den > 0 ? av_q2d(rate) : UsualRate;
    if (perSecond > HighestRate)
        perSecond = UsualRate;
    m_period = std::chrono::nanoseconds(std::llround(1e9 / perSecond));
    m_properties.frameRate = std::max(1, int(std::lround(perSecond)));
    m_properties.width = stream->codecpar->width;
    m_properties.height = stream->codecpar->height;
    m_properties.format =
            stream->codecpar->format == AV_PIX_FMT_NV12 ? PixelFormat::NV12 : PixelFormat::YU12;
}

VideoFile::Result VideoFile::read(const std::atomic<bool> &stop)
{
    while (!stop) {
        const int received = avcodec_receive_frame(m_decoder, m_frame);
        if (received == 0) {
            m_badReads = 0;
            m_offset = m_passStart + placeInTime();
            ++m_passPictures;
            return Result::Picture;
        }
        const bool stuck = m_draining && received != AVERROR_EOF && ++m_badReads > MostBadReads;
        if (received == AVERROR_EOF || stuck) {
            if (!beginNextPass())
                return Result::Failed;
        } else if (!m_draining && !feedDecoder()) {
            return Result::Failed;
        }
    }
    return Result::Stopped;
}

/*! Moves one packet to the decoder; what that cannot make sense of is left out. */
bool VideoFile::feedDecoder()
{
    const int got = av_read_frame(m_container, m_packet);
    if (got >= 0) {
        m_badReads = 0;
        if (m_packet->stream_index == m_stream)
            avcodec_send_packet(m_decoder, m_packet);
        av_packet_unref(m_packet);
        return true;
    }
    const bool flawed = got == AVERROR_INVALIDDATA || got == AVERROR(EAGAIN);
    if (!flawed && got != AVERROR_EOF) {
        m_error = "cannot be read on: " + textOf(got);
        return false;
    }
    if (got == AVERROR_EOF || ++m_badReads > MostBadReads) {
        m_badReads = 0;
        m_draining = true;
        avcodec_send_packet(m_decoder, nullptr);
    }
    return true;
}

bool VideoFile::beginNextPass()
{
    if (m_passPictures == 0) {
        m_error = "has no picture that can be decoded";
        return false;
    }
    const std::chrono::nanoseconds next = m_passStart + m_inPass + m_period;
    if (!seekToStart())
        return false;
    m_passStart = next;
    ++m_passes;
    return true;
}

bool VideoFile::restart()
{
    m_passStart = std::chrono::nanoseconds(0);
    m_passes = 0;
    return seekToStart();
}

bool VideoFile::seekToStart()
{
    avcodec_flush_buffers(m_decoder);
    m_draining = false;
    m_badReads = 0;
    m_passPictures = 0;
    m_inPass = std::chrono::nanoseconds(0);
    m_hasFirstStamp = false;

    // Where a file has no index, its beginning is found most surely by the byte.
    const int flags = m_container->iformat->flags;
    const bool byByte =
            flags & (AVFMT_NOTIMESTAMPS | AVFMT_TS_DISCONT) && !(flags & AVFMT_NO_BYTE_SEEK);
    const std::int64_t start =
            m_container->start_time == AV_NOPTS_VALUE ? 0 : m_container->start_time;
    const int sought = byByte ? av_seek_frame(m_container, -1, 0, AVSEEK_FLAG_BYTE)
                              : avformat_seek_file(m_container, -1, INT64_MIN, start, start, 0);
    if (sought >= 0)
        return true;
    avformat_close_input(&m_container); // some kinds of file have no other way back
    std::string why;
    if (openContainer(m_path, why))
        return true;
    m_error = why;
    return false;
}

/*! Where in its pass the picture comes, even if the file's own times are missing or jump. */
std::chrono::nanoseconds VideoFile::placeInTime()
{
    const AVRational unit = m_container->streams[m_stream]->time_base;
    const std::int64_t stamp = m_frame->best_effort_timestamp;
    const bool isFirst = m_passPictures == 0;
    const std::chrono::nanoseconds expected =
            isFirst ? std::chrono::nanoseconds(0) : m_inPass + m_period;
    if (stamp == AV_NOPTS_VALUE) {
        m_inPass = expected;
        return m_inPass;
    }
    std::chrono::nanoseconds place = expected;
    if (m_hasFirstStamp)
        place = std::chrono::nanoseconds(av_rescale_q(stamp - m_firstStamp, unit, Nanoseconds));
    const bool jumps = !isFirst && (place <= m_inPass || place - m_inPass > LongestGap);
    if (!m_hasFirstStamp || jumps) {
        place = expected;
        m_firstStamp = stamp - av_rescale_q(place.count(), Nanoseconds, unit);
        m_hasFirstStamp = true;
    }
    m_inPass = place;
    return m_inPass;
}

} // namespace Ocelle
} // namespace Veltra
