// SPDX-License-Identifier: BSD-3-Clause
#include "codecroundtrip.h"

#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/dict.h>
#include <libavutil/imgutils.h>
}

void CodecRoundTrip::Free::operator()(AVCodecContext *context) const
{
    avcodec_free_context(&context);
}

void CodecRoundTrip::Free::operator()(AVFrame *frame) const
{
    av_frame_free(&frame);
}

void CodecRoundTrip::Free::operator()(AVPacket *packet) const
{
    av_packet_free(&packet);
}

CodecRoundTrip::CodecRoundTrip(const Settings &settings, Decoded decoded)
    : m_decoded(std::move(decoded))
    , m_input(av_frame_alloc())
    , m_output(av_frame_alloc())
    , m_packet(av_packet_alloc())
{
    const AVCodec *encoder = avcodec_find_encoder_by_name(settings.encoder.c_str());
    const AVCodec *decoder = avcodec_find_decoder_by_name(settings.decoder.c_str());
    if (encoder == nullptr || decoder == nullptr)
        return;
    m_encoder.reset(avcodec_alloc_context3(encoder));
    m_encoder->width = settings.width;
    m_encoder->height = settings.height;
    m_encoder->pix_fmt = AV_PIX_FMT_YUV420P;
    m_encoder->bit_rate = settings.bitRate;
    m_encoder->time_base = { 1, settings.frameRate };
    m_encoder->framerate = { settings.frameRate, 1 };
    m_encoder->max_b_frames = 0;
    AVDictionary *options = nullptr;
    av_dict_parse_string(&options, settings.options.c_str(), "=", ":", 0);
    const bool opened = avcodec_open2(m_encoder.get(), encoder, &options) == 0;
    const bool allKnown = av_dict_count(options) == 0;
    av_dict_free(&options);
    m_decoder.reset(avcodec_alloc_context3(decoder));
    m_valid = opened && allKnown && avcodec_open2(m_decoder.get(), decoder, nullptr) == 0;
}

CodecRoundTrip::~CodecRoundTrip() = default;

bool CodecRoundTrip::put(const Picture &picture, std::int64_t index)
{
    m_input->format = AV_PIX_FMT_YUV420P;
    m_input->width = m_encoder->width;
    m_input->height = m_encoder->height;
    m_input->pts = index;
    if (av_frame_get_buffer(m_input.get(), 0) != 0)
        return false;
    for (int i = 0; i < 3; ++i) {
        const auto &plane = picture.planes()[static_cast<std::size_t>(i)];
        const int shift = i == 0 ? 0 : 1;
        av_image_copy_plane(m_input->data[i], m_input->linesize[i], plane.data, plane.stride,
                            picture.width() >> shift, picture.height() >> shift);
    }
    const bool done = encode(m_input.get());
    av_frame_unref(m_input.get());
    return done;
}

bool CodecRoundTrip::finish()
{
    return encode(nullptr) && decode(nullptr);
}

bool CodecRoundTrip::encode(const AVFrame *frame)
{
    if (avcodec_send_frame(m_encoder.get(), frame) != 0)
        return false;
    int result = 0;
    while ((result = avcodec_receive_packet(m_encoder.get(), m_packet.get())) == 0) {
        m_bytes += m_packet->size;
        const bool decoded = decode(m_packet.get());
        av_packet_unref(m_packet.get());
        if (!decoded)
            return false;
    }
    return result == AVERROR(EAGAIN) || result == AVERROR_EOF;
}

bool CodecRoundTrip::decode(const AVPacket *packet)
{
    if (avcodec_send_packet(m_decoder.get(), packet) != 0)
        return false;
    int result = 0;
    while ((result = avcodec_receive_frame(m_decoder.get(), m_output.get())) == 0) {
        m_decoded(m_output->data[0], m_output->linesize[0], m_output->pts);
        av_frame_unref(m_output.get());
    }
    return result == AVERROR(EAGAIN) || result == AVERROR_EOF;
}
