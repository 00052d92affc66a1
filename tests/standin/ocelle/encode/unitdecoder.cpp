// SPDX-License-Identifier: BSD-3-Clause
#include "unitdecoder.h"

#include <libyuv/planar_functions.h>
#include <libyuv/scale.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

using namespace Veltra::Ocelle;

namespace {
const char *decoderName(CodecType type)
{
    switch (type) {
    case CodecType::VP8:
        return "vp8";
    case CodecType::VP9:
        return "vp9";
    case CodecType::H264:
        return "h264";
    case CodecType::H265:
        return "hevc";
    case CodecType::Unknown:
        break;
    }
    return "";
}

RawPicture pictureOf(const AVFrame &frame)
{
    RawPicture picture(frame.width, frame.height);
    libyuv::CopyPlane(frame.data[0], frame.linesize[0], picture.y.data(), picture.width,
                      picture.width, picture.height);
    libyuv::CopyPlane(frame.data[1], frame.linesize[1], picture.cb.data(), picture.chromaWidth(),
                      picture.chromaWidth(), picture.chromaHeight());
    libyuv::CopyPlane(frame.data[2], frame.linesize[2], picture.cr.data(), picture.chromaWidth(),
                      picture.chromaWidth(), picture.chromaHeight());
    return picture;
}

RawPicture scaled(const RawPicture &from, int width, int height)
{
    RawPicture to(width, height);
    libyuv::I420Scale(from.y.data(), from.width, from.cb.data(), from.chromaWidth(), from.cr.data(),
                      from.chromaWidth(), from.width, from.height, to.y.data(), to.width,
                      to.cb.data(), to.chromaWidth(), to.cr.data(), to.chromaWidth(), to.width,
                      to.height, libyuv::kFilterBilinear);
    return to;
}
} // namespace

void UnitDecoder::Free::operator()(AVCodecContext *context) const
{
    avcodec_free_context(&context);
}

void UnitDecoder::Free::operator()(AVFrame *frame) const
{
    av_frame_free(&frame);
}

void UnitDecoder::Free::operator()(AVPacket *packet) const
{
    av_packet_free(&packet);
}

UnitDecoder::UnitDecoder(CodecType type)
    : UnitDecoder(std::string(decoderName(type)))
{
}

UnitDecoder::UnitDecoder(const std::string &name)
    : m_frame(av_frame_alloc())
    , m_packet(av_packet_alloc())
{
    const AVCodec *codec = avcodec_find_decoder_by_name(name.c_str());
    if (!codec)
        return;
    m_context.reset(avcodec_alloc_context3(codec));
    m_context->flags |= AV_CODEC_FLAG_LOW_DELAY;
    m_context->thread_count = 1;
    if (avcodec_open2(m_context.get(), codec, nullptr) != 0)
        m_context.reset();
}

UnitDecoder::~UnitDecoder() = default;

std::vector<RawPicture> UnitDecoder::decode(const std::vector<std::uint8_t> &unit)
{
    std::vector<std::uint8_t> padded(unit);
    padded.resize(unit.size() + AV_INPUT_BUFFER_PADDING_SIZE);
    m_packet->data = padded.data();
    m_packet->size = int(unit.size());
    std::vector<RawPicture> pictures = send(m_packet.get());
    m_packet->data = nullptr;
    m_packet->size = 0;
    return pictures;
}

std::vector<RawPicture> UnitDecoder::finish()
{
    return send(nullptr);
}

std::vector<RawPicture> UnitDecoder::send(AVPacket *packet)
{
    std::vector<RawPicture> pictures;
    if (!m_context || avcodec_send_packet(m_context.get(), packet) != 0)
        return pictures;
    while (avcodec_receive_frame(m_context.get(), m_frame.get()) == 0)
        pictures.push_back(pictureOf(*m_frame));
    return pictures;
}

std::vector<RawPicture> UnitDecoder::play(const std::string &path, int width, int height, int most)
{
    std::vector<RawPicture> pictures;
    AVFormatContext *file = nullptr;
    if (avformat_open_input(&file, path.c_str(), nullptr, nullptr) != 0)
        return pictures;
    const AVCodec *codec = nullptr;
    const int stream = av_find_best_stream(file, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (stream >= 0) {
        UnitDecoder decoder(codec->name);
        decoder.m_context.reset(avcodec_alloc_context3(codec));
        avcodec_parameters_to_context(decoder.m_context.get(), file->streams[stream]->codecpar);
        if (avcodec_open2(decoder.m_context.get(), codec, nullptr) != 0)
            decoder.m_context.reset();
        while (int(pictures.size()) < most && av_read_frame(file, decoder.m_packet.get()) == 0) {
            if (decoder.m_packet->stream_index == stream) {
                for (const RawPicture &picture : decoder.send(decoder.m_packet.get()))
                    pictures.push_back(scaled(picture, width, height));
            }
            av_packet_unref(decoder.m_packet.get());
        }
    }
    avformat_close_input(&file);
    return pictures;
}
