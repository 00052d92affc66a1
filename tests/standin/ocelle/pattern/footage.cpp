// SPDX-License-Identifier: BSD-3-Clause
#include "footage.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <memory>

namespace {

int receive(AVCodecContext *decoder, AVFrame *frame, const Footage::Decoded &decoded)
{
    int pictures = 0;
    while (avcodec_receive_frame(decoder, frame) == 0) {
        decoded(frame->data[0], frame->linesize[0], frame->width, frame->height);
        ++pictures;
    }
    return pictures;
}

int decodeStream(AVFormatContext *file, int stream, AVCodecContext *decoder,
                 const Footage::Decoded &decoded)
{
    AVFrame *frame = av_frame_alloc();
    AVPacket *packet = av_packet_alloc();
    int pictures = 0;
    while (av_read_frame(file, packet) == 0) {
        if (packet->stream_index == stream && avcodec_send_packet(decoder, packet) == 0)
            pictures += receive(decoder, frame, decoded);
        av_packet_unref(packet);
    }
    avcodec_send_packet(decoder, nullptr);
    pictures += receive(decoder, frame, decoded);
    av_packet_free(&packet);
    av_frame_free(&frame);
    return pictures;
}

} // namespace

int Footage::play(const std::string &path, const Decoded &decoded)
{
    AVFormatContext *file = nullptr;
    if (avformat_open_input(&file, path.c_str(), nullptr, nullptr) != 0)
        return -1;
    int pictures = -1;
    const AVCodec *codec = nullptr;
    const int stream = av_find_best_stream(file, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (stream >= 0) {
        AVCodecContext *decoder = avcodec_alloc_context3(codec);
        if (avcodec_parameters_to_context(decoder, file->streams[stream]->codecpar) >= 0 &&
            avcodec_open2(decoder, codec, nullptr) == 0)
            pictures = decodeStream(file, stream, decoder, decoded);
        avcodec_free_context(&decoder);
    }
    avformat_close_input(&file);
    return pictures;
}
