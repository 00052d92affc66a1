// SPDX-License-Identifier: BSD-3-Clause
#include "encodedstream.h"

#include <cstdio>
#include <memory>

extern "C" {
#include <libavcodec/bsf.h>
#include <libavformat/avformat.h>
}

namespace {

struct Close
{
    void operator()(AVFormatContext *container) const { avformat_close_input(&container); }
    void operator()(AVBSFContext *filter) const { av_bsf_free(&filter); }
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};
template <class Type>
using Owned = std::unique_ptr<Type, Close>;

const char *startCodeFilter(AVCodecID codec)
{
    return codec == AV_CODEC_ID_H264   ? "h264_mp4toannexb"
           : codec == AV_CODEC_ID_HEVC ? "hevc_mp4toannexb"
                                       : "null";
}

Owned<AVBSFContext> filterFor(const AVStream &stream)
{
    AVBSFContext *filter = nullptr;
    if (av_bsf_alloc(av_bsf_get_by_name(startCodeFilter(stream.codecpar->codec_id)), &filter) < 0)
        return {};
    Owned<AVBSFContext> owned(filter);
    if (avcodec_parameters_copy(filter->par_in, stream.codecpar) < 0 || av_bsf_init(filter) < 0)
        return {};
    return owned;
}

} // namespace

EncodedStream::EncodedStream(const char *path)
{
    const std::string problem = read(path);
    if (m_units.empty())
        std::fprintf(stderr, "%s: %s\n", path,
                     problem.empty() ? "there is no key frame" : problem.c_str());
}

EncodedStream::~EncodedStream()
{
    for (AVPacket *unit : m_units)
        av_packet_free(&unit);
}

std::string EncodedStream::read(const char *path)
{
    AVFormatContext *opened = nullptr;
    if (avformat_open_input(&opened, path, nullptr, nullptr) < 0)
        return "cannot be read";
    const Owned<AVFormatContext> container(opened);
    const int index = av_find_best_stream(opened, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0)
        return "has no video";
    const AVStream &stream = *opened->streams[index];
    const Owned<AVBSFContext> filter = filterFor(stream);
    Owned<AVPacket> packet(av_packet_alloc());
    if (!filter || !packet)
        return "cannot be put into units";
    m_width = stream.codecpar->width;
    m_height = stream.codecpar->height;
    while (av_read_frame(opened, packet.get()) >= 0) {
        if (packet->stream_index != index) {
            av_packet_unref(packet.get());
            continue;
        }
        if (av_bsf_send_packet(filter.get(), packet.get()) < 0)
            return "is damaged";
        while (av_bsf_receive_packet(filter.get(), packet.get()) >= 0) {
            if (!m_units.empty() || (packet->flags & AV_PKT_FLAG_KEY))
                m_units.push_back(av_packet_clone(packet.get()));
            av_packet_unref(packet.get());
        }
    }
    return {};
}
