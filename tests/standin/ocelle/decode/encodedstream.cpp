// SPDX-License-Identifier: BSD-3-Clause
#include "encodedstream.h"

#include <QtTest>

#include <rawpicture.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/bsf.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

using namespace Veltra::Ocelle;

Q_DECLARE_METATYPE(Veltra::Ocelle::CodecType)

namespace {
const char *encoderName(CodecType type)
{
    switch (type) {
    case CodecType::VP8:
        return "libvpx";
    case CodecType::VP9:
        return "libvpx-vp9";
    case CodecType::H264:
        return "libx264";
    case CodecType::H265:
        return "libx265";
    case CodecType::Unknown:
        break;
    }
    return "";
}

AVCodecID codecId(CodecType type)
{
    return avcodec_find_encoder_by_name(encoderName(type))->id;
}

AVCodecContext *openedEncoder(const StreamWish &wish)
{
    const AVCodec *codec = avcodec_find_encoder_by_name(encoderName(wish.type));
    if (!codec)
        return nullptr;
    AVCodecContext *context = avcodec_alloc_context3(codec);
    context->width = wish.width;
    context->height = wish.height;
    context->pix_fmt = av_get_pix_fmt(wish.layout.c_str());
    context->time_base = { 1, 25 };
    context->gop_size = wish.keyDistance;
    context->max_b_frames = wish.bFrames;
    context->bit_rate = 2000000;
    context->thread_count = 1;
    context->log_level_offset = 100; // silent
    const bool isVpx = wish.type == CodecType::VP8 || wish.type == CodecType::VP9;
    av_opt_set(context->priv_data, isVpx ? "deadline" : "preset", isVpx ? "realtime" : "veryfast",
               0);
    av_opt_set(context->priv_data, "cpu-used", "8", 0);
    if (wish.type == CodecType::H265)
        av_opt_set(context->priv_data, "x265-params",
                   "log-level=none:pools=none:frame-threads=1:scenecut=0:open-gop=0", 0);
    for (const auto &option : wish.options) {
        if (av_opt_set(context, option.first.c_str(), option.second.c_str(),
                       AV_OPT_SEARCH_CHILDREN) < 0)
            qFatal("no option %s", option.first.c_str());
    }
    if (avcodec_open2(context, codec, nullptr) < 0)
        avcodec_free_context(&context);
    return context;
}

// The test picture with that number in the encoder's layout.
AVFrame *painted(const AVCodecContext &context, std::int64_t number)
{
    const RawPicture picture =
            RawPicture::pattern(context.width, context.height, std::uint32_t(number));
    AVFrame *frame = av_frame_alloc();
    frame->width = context.width;
    frame->height = context.height;
    frame->format = context.pix_fmt;
    av_frame_get_buffer(frame, 0);
    SwsContext *scaler = sws_getContext(context.width, context.height, AV_PIX_FMT_YUV420P,
                                        context.width, context.height, context.pix_fmt,
                                        SWS_BILINEAR, nullptr, nullptr, nullptr);
    const std::uint8_t *const data[] = { picture.y.data(), picture.cb.data(), picture.cr.data() };
    const int strides[] = { picture.width, picture.chromaWidth(), picture.chromaWidth() };
    sws_scale(scaler, data, strides, 0, context.height, frame->data, frame->linesize);
    sws_freeContext(scaler);
    return frame;
}

void receive(AVCodecContext *context, int firstNumber, std::vector<MediaUnit> *units)
{
    AVPacket *packet = av_packet_alloc();
    while (avcodec_receive_packet(context, packet) == 0) {
        units->push_back({ Bytes(packet->data, packet->data + packet->size),
                           packet->pts + firstNumber, (packet->flags & AV_PKT_FLAG_KEY) != 0 });
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
}
} // namespace

std::vector<MediaUnit> encodedStream(const StreamWish &wish)
{
    std::vector<MediaUnit> units;
    AVCodecContext *context = openedEncoder(wish);
    if (!context)
        return units;
    for (int index = 0; index < wish.pictures; ++index) {
        AVFrame *frame = painted(*context, wish.firstNumber + (wish.isStill ? 0 : index));
        frame->pts = index;
        if (wish.keyDistance > 0 && index % wish.keyDistance == 0)
            frame->pict_type = AV_PICTURE_TYPE_I;
        avcodec_send_frame(context, frame);
        av_frame_free(&frame);
        receive(context, wish.firstNumber, &units);
    }
    avcodec_send_frame(context, nullptr);
    receive(context, wish.firstNumber, &units);
    avcodec_free_context(&context);
    return units;
}

std::vector<MediaUnit> filtered(const std::vector<MediaUnit> &units, CodecType type,
                                const std::string &filter)
{
    AVBSFContext *context = nullptr;
    if (av_bsf_list_parse_str(filter.c_str(), &context) < 0)
        qFatal("no filter %s", filter.c_str());
    context->par_in->codec_id = codecId(type);
    context->par_in->codec_type = AVMEDIA_TYPE_VIDEO;
    if (av_bsf_init(context) < 0)
        qFatal("cannot start filter %s", filter.c_str());
    std::vector<MediaUnit> result;
    AVPacket *packet = av_packet_alloc();
    for (const MediaUnit &unit : units) {
        av_new_packet(packet, int(unit.data.size()));
        std::copy(unit.data.begin(), unit.data.end(), packet->data);
        packet->pts = unit.number;
        av_bsf_send_packet(context, packet);
        while (av_bsf_receive_packet(context, packet) == 0) {
            result.push_back(
                    { Bytes(packet->data, packet->data + packet->size), packet->pts, unit.isKey });
            av_packet_unref(packet);
        }
    }
    av_packet_free(&packet);
    av_bsf_free(&context);
    return result;
}

void addDecoderRows()
{
    QTest::addColumn<CodecType>("type");
    QTest::newRow("H.264") << CodecType::H264;
    QTest::newRow("H.265") << CodecType::H265;
    QTest::newRow("VP8") << CodecType::VP8;
    QTest::newRow("VP9") << CodecType::VP9;
}
