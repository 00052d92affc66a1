// SPDX-License-Identifier: BSD-3-Clause
#include "avdecoder.h"

#include "libavlog.h"

#include <algorithm>
#include <cstring>
#include <thread>
#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/hwcontext.h>
}

namespace Veltra {
namespace Ocelle {

namespace {
std::string avError(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof(text));
    return text;
}

int processors()
{
    constexpr int most = 4;
    return std::clamp(int(std::thread::hardware_concurrency()), 1, most);
}

// One where handing over costs more than it brings.
int sliceThreads(int width, int height)
{
    constexpr std::int64_t largePicture = 1280 * 720; // pixels
    return std::int64_t(width) * height > largePicture ? processors() : 1;
}

// The device, unless it cannot do the stream at hand.
AVPixelFormat chooseFormat(AVCodecContext *context, const AVPixelFormat *formats)
{
    for (const AVPixelFormat *format = formats; *format != AV_PIX_FMT_NONE; ++format) {
        if (*format == AV_PIX_FMT_VAAPI)
            return *format;
    }
    return avcodec_default_get_format(context, formats);
}
} // namespace

void AvDecoder::Free::operator()(AVBufferRef *buffer) const
{
    av_buffer_unref(&buffer);
}

void AvDecoder::Free::operator()(AVCodecContext *context) const
{
    avcodec_free_context(&context);
}

void AvDecoder::Free::operator()(AVFrame *frame) const
{
    av_frame_free(&frame);
}

void AvDecoder::Free::operator()(AVPacket *packet) const
{
    av_packet_free(&packet);
}

AvDecoder::AvDecoder(AvDecoderKind kind)
    : m_kind(std::move(kind))
{
}

AvDecoder::~AvDecoder() = default;

bool AvDecoder::open(const DecoderSettings &settings, int width, int height, std::string *error)
{
    m_settings = settings;
    m_width = width;
    m_height = height;
    return openCodec(error);
}

bool AvDecoder::openCodec(std::string *error)
{
    quietLibav();
    close();
    const AVCodec *codec = avcodec_find_decoder_by_name(m_kind.codecName.c_str());
    if (!codec) {
        *error = "libavcodec has no " + m_kind.codecName;
        return false;
    }
    if (!m_kind.devicePath.empty() && !m_device && !openDevice(error))
        return false;
    m_context.reset(avcodec_alloc_context3(codec));
    m_frame.reset(av_frame_alloc());
    m_deviceFrame.reset(av_frame_alloc());
    m_packet.reset(av_packet_alloc());
    if (!m_context || !m_frame || !m_deviceFrame || !m_packet) {
        close();
        *error = "out of memory";
        return false;
    }
    configure();
    const int result = avcodec_open2(m_context.get(), codec, nullptr);
    if (result < 0) {
        close();
        *error = m_kind.codecName + ": " + avError(result);
    }
    return result >= 0;
}

void AvDecoder::close()
{
    m_context.reset();
    m_hasPicture = false;
    m_usesDevice = false;
}

bool AvDecoder::openDevice(std::string *error)
{
    AVBufferRef *device = nullptr;
    const int result = av_hwdevice_ctx_create(&device, AV_HWDEVICE_TYPE_VAAPI,
                                              m_kind.devicePath.c_str(), nullptr, 0);
    m_device.reset(device);
    if (result < 0)
        *error = m_kind.devicePath + ": " + avError(result);
    return result >= 0;
}

void AvDecoder::configure()
{
    constexpr int microseconds = 1000000;
    AVCodecContext &context = *m_context;
    const bool isLowDelay = m_settings.threads == DecoderThreads::LowDelay;
    context.thread_type = isLowDelay ? FF_THREAD_SLICE : FF_THREAD_FRAME;
    context.thread_count = isLowDelay ? sliceThreads(m_width, m_height) : std::max(processors(), 2);
    context.strict_std_compliance = FF_COMPLIANCE_STRICT; // keeps back what may have to come later
    context.pkt_timebase = { 1, microseconds };
    context.apply_cropping = 0;
    context.max_pixels = m_settings.maxPixels;
    if (context.codec_id == AV_CODEC_ID_HEVC) // it tells of damage in no other way
        context.err_recognition |= AV_EF_EXPLODE;
    if (m_device) {
        context.thread_count = 1;
        context.hw_device_ctx = av_buffer_ref(m_device.get());
        context.get_format = chooseFormat;
    }
}

// With pictures in order the codec need not wait for later ones. It cannot tell by itself, and
// several threads have to be told before.
void AvDecoder::setReordering(bool reorders)
{
    if (m_context->thread_type & FF_THREAD_FRAME)
        return;
    if (reorders) {
        m_context->flags &= ~AV_CODEC_FLAG_LOW_DELAY;
        m_context->strict_std_compliance = FF_COMPLIANCE_STRICT;
    } else {
        m_context->flags |= AV_CODEC_FLAG_LOW_DELAY;
        m_context->strict_std_compliance = FF_COMPLIANCE_NORMAL;
    }
}

bool AvDecoder::load(const unsigned char *data, std::size_t size, std::string *error)
{
    constexpr std::size_t most = std::size_t(1) << 30;
    av_packet_unref(m_packet.get());
    if (size > most || av_new_packet(m_packet.get(), int(size)) < 0) {
        *error = "a frame of " + std::to_string(size) + " bytes is too large";
        return false;
    }
    std::memcpy(m_packet->data, data, size);
    return true;
}

bool AvDecoder::prepend(const std::vector<std::uint8_t> &head, std::string *error)
{
    const auto size = std::size_t(m_packet->size);
    if (av_grow_packet(m_packet.get(), int(head.size())) < 0) {
        *error = "out of memory";
        return false;
    }
    std::memmove(m_packet->data + head.size(), m_packet->data, size);
    std::memcpy(m_packet->data, head.data(), head.size());
    return true;
}

bool AvDecoder::decode(std::int64_t index, bool reorders, const PictureFunction &onPicture,
                       std::string *error)
{
    m_index = index;
    m_packet->pts = index;
    setReordering(reorders);
    const bool works = send(m_packet.get(), onPicture, error);
    av_packet_unref(m_packet.get());
    return works;
}

bool AvDecoder::drain(const PictureFunction &onPicture, std::string *error)
{
    const bool works = !m_context || send(nullptr, onPicture, error);
    flush();
    return works;
}

void AvDecoder::flush()
{
    if (m_kind.isReopened || isStuck()) {
        std::string ignored; // the next frame fails where this does
        openCodec(&ignored);
    } else if (m_context) {
        avcodec_flush_buffers(m_context.get());
    }
}

// libavcodec's VP9 drops its size over one that it refuses, and does not take it up again.
bool AvDecoder::isStuck() const
{
    return m_hasPicture && m_context->width == 0;
}

bool AvDecoder::send(const AVPacket *packet, const PictureFunction &onPicture, std::string *error)
{
    int result = avcodec_send_packet(m_context.get(), packet);
    if (result == AVERROR(EAGAIN)) { // full: it takes more once something is out
        if (!receive(onPicture, error))
            return false;
        result = avcodec_send_packet(m_context.get(), packet);
    }
    if (result < 0 && result != AVERROR_EOF) {
        *error = avError(result);
        receive(onPicture, error);
        return false;
    }
    return receive(onPicture, error);
}

bool AvDecoder::receive(const PictureFunction &onPicture, std::string *error)
{
    constexpr int mostErrors = 100; // one for each picture inside, at the utmost
    int errors = 0;
    while (errors < mostErrors) {
        const int result = avcodec_receive_frame(m_context.get(), m_frame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            break;
        if (result < 0) {
            *error = avError(result);
            ++errors;
        } else if (!put(onPicture, error)) {
            ++errors;
        }
        av_frame_unref(m_frame.get());
    }
    return errors == 0;
}

bool AvDecoder::put(const PictureFunction &onPicture, std::string *error)
{
    AVFrame *frame = m_frame.get();
    m_hasPicture = true;
    m_usesDevice = frame->hw_frames_ctx != nullptr;
    if (m_usesDevice) {
        frame = m_deviceFrame.get();
        av_frame_unref(frame);
        int result = av_hwframe_transfer_data(frame, m_frame.get(), 0);
        if (result >= 0)
            result = av_frame_copy_props(frame, m_frame.get());
        if (result < 0) {
            *error = avError(result);
            return false;
        }
    }
    const bool isDamaged =
            frame->decode_error_flags != 0 || (frame->flags & AV_FRAME_FLAG_CORRUPT) != 0;
    onPicture({ frame, frame->pts == AV_NOPTS_VALUE ? m_index : frame->pts, isDamaged });
    return true;
}

} // namespace Ocelle
} // namespace Veltra
