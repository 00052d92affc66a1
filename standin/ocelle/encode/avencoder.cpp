// SPDX-License-Identifier: BSD-3-Clause
#include "avencoder.h"

#include <libyuv/convert.h>
#include <libyuv/convert_from.h>
#include <libyuv/planar_functions.h>

#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/hwcontext.h>
#include <libavutil/opt.h>
}

namespace Veltra {
namespace Ocelle {

namespace {
std::string avError(const std::string &what, int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof(text));
    return what + ": " + text;
}
} // namespace

void AvEncoder::Free::operator()(AVBufferRef *buffer) const
{
    av_buffer_unref(&buffer);
}

void AvEncoder::Free::operator()(AVCodecContext *context) const
{
    avcodec_free_context(&context);
}

void AvEncoder::Free::operator()(AVFrame *frame) const
{
    av_frame_free(&frame);
}

void AvEncoder::Free::operator()(AVPacket *packet) const
{
    av_packet_free(&packet);
}

AvEncoder::AvEncoder(AvEncoderKind kind)
    : m_kind(std::move(kind))
{
}

AvEncoder::~AvEncoder() = default;

bool AvEncoder::open(const EncoderSettings &settings, std::string *error)
{
    if (!m_kind.devicePath.empty())
        return (m_device || openDevice(error)) && openWith(AV_PIX_FMT_VAAPI, settings, error);
    return openWith(AV_PIX_FMT_NV12, settings, error) ||
           openWith(AV_PIX_FMT_YUV420P, settings, error);
}

bool AvEncoder::openDevice(std::string *error)
{
    AVBufferRef *device = nullptr;
    const int result = av_hwdevice_ctx_create(&device, AV_HWDEVICE_TYPE_VAAPI,
                                              m_kind.devicePath.c_str(), nullptr, 0);
    m_device.reset(device);
    if (result < 0)
        *error = avError(m_kind.devicePath, result);
    return result >= 0;
}

bool AvEncoder::openWith(int format, const EncoderSettings &settings, std::string *error)
{
    m_context.reset();
    const AVCodec *codec = avcodec_find_encoder_by_name(m_kind.codecName.c_str());
    if (!codec) {
        *error = "libavcodec has no " + m_kind.codecName;
        return false;
    }
    m_context.reset(avcodec_alloc_context3(codec));
    m_picture.reset(av_frame_alloc());
    m_packet.reset(av_packet_alloc());
    if (!m_context || !m_picture || !m_packet) {
        *error = "out of memory";
        return false;
    }
    AVCodecContext &context = *m_context;
    context.width = roundedUpToEven(settings.width);
    context.height = roundedUpToEven(settings.height);
    context.pix_fmt = AVPixelFormat(format);
    context.time_base = { 1, settings.frameRate };
    context.framerate = { settings.frameRate, 1 };
    context.gop_size = settings.frameRate * KeyFrameSeconds;
    context.max_b_frames = 0;
    context.bit_rate = settings.bitrate;
    context.rc_max_rate = settings.constantBitrate ? settings.bitrate : 2LL * settings.bitrate;
    context.rc_buffer_size = int(context.rc_max_rate * 6 / 10); // 0.6 s
    av_opt_set(context.priv_data, "async_depth", "1", 0);       // of some only, as are these
    av_opt_set(context.priv_data, "forced-idr", "1", 0);
    av_opt_set(context.priv_data, "rc_mode", settings.constantBitrate ? "CBR" : "VBR", 0);
    if (m_device && !makeDevicePictures(error))
        return false;

    const int result = avcodec_open2(&context, codec, nullptr);
    if (result < 0) {
        *error = avError(m_kind.codecName, result);
        m_context.reset();
        return false;
    }
    m_picture->format = m_device ? AV_PIX_FMT_NV12 : format;
    m_picture->width = context.width;
    m_picture->height = context.height;
    return true;
}

bool AvEncoder::makeDevicePictures(std::string *error)
{
    constexpr int pictures = 8;
    m_context->hw_frames_ctx = av_hwframe_ctx_alloc(m_device.get());
    m_devicePicture.reset(av_frame_alloc());
    if (!m_context->hw_frames_ctx || !m_devicePicture) {
        *error = "out of memory";
        return false;
    }
    auto *frames = reinterpret_cast<AVHWFramesContext *>(m_context->hw_frames_ctx->data);
    frames->format = AV_PIX_FMT_VAAPI;
    frames->sw_format = AV_PIX_FMT_NV12;
    frames->width = m_context->width;
    frames->height = m_context->height;
    frames->initial_pool_size = pictures;
    const int result = av_hwframe_ctx_init(m_context->hw_frames_ctx);
    if (result < 0)
        *error = avError("pictures on " + m_kind.devicePath, result);
    return result >= 0;
}

bool AvEncoder::encode(const PictureView &picture, std::int64_t index, bool keyFrame,
                       const UnitFunction &onUnit, std::string *error)
{
    if (!m_context) {
        *error = m_kind.codecName + " is not open";
        return false;
    }
    if (!fill(picture, error))
        return false;
    AVFrame *frame = m_picture.get();
    if (m_device) {
        av_frame_unref(m_devicePicture.get());
        int result = av_hwframe_get_buffer(m_context->hw_frames_ctx, m_devicePicture.get(), 0);
        if (result >= 0)
            result = av_hwframe_transfer_data(m_devicePicture.get(), frame, 0);
        if (result < 0) {
            *error = avError("pictures on " + m_kind.devicePath, result);
            return false;
        }
        frame = m_devicePicture.get();
    }
    frame->pts = index;
    frame->pict_type = keyFrame ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_NONE;
    frame->key_frame = keyFrame;
    return send(frame, onUnit, error);
}

// Copies a picture into m_picture, in memory that the encoder does not use.
bool AvEncoder::fill(const PictureView &picture, std::string *error)
{
    AVFrame &to = *m_picture;
    int result = 0;
    if (!to.buf[0]) {
        result = av_frame_get_buffer(&to, 0);
    } else {
        result = av_frame_make_writable(&to);
    }
    if (result < 0) {
        *error = avError("a picture", result);
        return false;
    }
    const bool planar = picture.layout == PictureLayout::Planar;
    if (to.format == AV_PIX_FMT_NV12 && planar)
        libyuv::I420ToNV12(picture.y, picture.yStride, picture.cb, picture.cStride, picture.cr,
                           picture.cStride, to.data[0], to.linesize[0], to.data[1], to.linesize[1],
                           to.width, to.height);
    else if (to.format == AV_PIX_FMT_NV12)
        libyuv::NV12Copy(picture.y, picture.yStride, picture.cb, picture.cStride, to.data[0],
                         to.linesize[0], to.data[1], to.linesize[1], to.width, to.height);
    else if (planar)
        libyuv::I420Copy(picture.y, picture.yStride, picture.cb, picture.cStride, picture.cr,
                         picture.cStride, to.data[0], to.linesize[0], to.data[1], to.linesize[1],
                         to.data[2], to.linesize[2], to.width, to.height);
    else
        libyuv::NV12ToI420(picture.y, picture.yStride, picture.cb, picture.cStride, to.data[0],
                           to.linesize[0], to.data[1], to.linesize[1], to.data[2], to.linesize[2],
                           to.width, to.height);
    return true;
}

bool AvEncoder::finish(const UnitFunction &onUnit, std::string *error)
{
    return !m_context || send(nullptr, onUnit, error);
}

bool AvEncoder::send(const AVFrame *frame, const UnitFunction &onUnit, std::string *error)
{
    int result = avcodec_send_frame(m_context.get(), frame);
    if (result == AVERROR(EAGAIN)) { // full: it takes more once something is out
        if (!receive(onUnit, error))
            return false;
        result = avcodec_send_frame(m_context.get(), frame);
    }
    if (result < 0) {
        *error = avError(m_kind.codecName, result);
        return false;
    }
    return receive(onUnit, error);
}

bool AvEncoder::receive(const UnitFunction &onUnit, std::string *error)
{
    for (;;) {
        const int result = avcodec_receive_packet(m_context.get(), m_packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return true;
        if (result < 0) {
            *error = avError(m_kind.codecName, result);
            return false;
        }
        onUnit({ m_packet->data, std::size_t(m_packet->size), m_packet->pts,
                 (m_packet->flags & AV_PKT_FLAG_KEY) != 0 });
        av_packet_unref(m_packet.get());
    }
}

} // namespace Ocelle
} // namespace Veltra
