// SPDX-License-Identifier: BSD-3-Clause
#include "recordedvideo.h"

#include <patternreader.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace {

constexpr AVRational Microseconds { 1, 1000000 };

RawPicture pictureOf(const AVFrame &frame)
{
    RawPicture picture(frame.width, frame.height);
    const auto copy = [&frame](int plane, int width, int height, std::vector<std::uint8_t> &to) {
        for (int line = 0; line < height; ++line) {
            const std::uint8_t *const from = frame.data[plane] + line * frame.linesize[plane];
            std::copy(from, from + width, to.begin() + line * width);
        }
    };
    copy(0, picture.width, picture.height, picture.y);
    copy(1, picture.chromaWidth(), picture.chromaHeight(), picture.cb);
    copy(2, picture.chromaWidth(), picture.chromaHeight(), picture.cr);
    return picture;
}

/*! Hands \a packet, or the end, to \a decoder and takes what comes out. */
void decode(AVCodecContext *decoder, const AVPacket *packet, RecordedVideo *video)
{
    avcodec_send_packet(decoder, packet);
    AVFrame *frame = av_frame_alloc();
    while (avcodec_receive_frame(decoder, frame) == 0) {
        const auto reading = Veltra::Ocelle::readPattern(frame->data[0], frame->linesize[0],
                                                         frame->width, frame->height);
        video->numbers.append(reading ? int(reading->sequence) : -1);
        video->rotations.append(reading ? reading->rotation : -1);
        video->mirrored.append(reading && reading->mirrored);
        video->pictures.push_back(pictureOf(*frame));
    }
    av_frame_free(&frame);
}

void readStream(AVFormatContext *file, int index, const AVCodec *codec, RecordedVideo *video)
{
    const AVStream *const stream = file->streams[index];
    video->codec = QString::fromLatin1(codec->name);
    video->size = QSize(stream->codecpar->width, stream->codecpar->height);
    video->rate = av_q2d(stream->avg_frame_rate);
    video->duration = double(file->duration) / 1e6;
    AVCodecContext *decoder = avcodec_alloc_context3(codec);
    avcodec_parameters_to_context(decoder, stream->codecpar);
    avcodec_open2(decoder, codec, nullptr);
    AVPacket *packet = av_packet_alloc();
    while (av_read_frame(file, packet) == 0) {
        if (packet->stream_index == index) {
            ++video->packets;
            video->keyFrames.append(packet->flags & AV_PKT_FLAG_KEY);
            video->times.append(av_rescale_q(packet->pts, stream->time_base, Microseconds));
            decode(decoder, packet, video);
        }
        av_packet_unref(packet);
    }
    decode(decoder, nullptr, video);
    av_packet_free(&packet);
    avcodec_free_context(&decoder);
}

} // namespace

RecordedVideo RecordedVideo::read(const QString &path)
{
    RecordedVideo video;
    AVFormatContext *file = nullptr;
    if (avformat_open_input(&file, path.toUtf8().constData(), nullptr, nullptr) != 0)
        return video;
    const AVCodec *codec = nullptr;
    if (avformat_find_stream_info(file, nullptr) >= 0) {
        const int stream = av_find_best_stream(file, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
        if (stream >= 0)
            readStream(file, stream, codec, &video);
    }
    avformat_close_input(&file);
    return video;
}
