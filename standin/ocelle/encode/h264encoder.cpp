// SPDX-License-Identifier: BSD-3-Clause
#include "h264encoder.h"

#include "codecopening.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace Veltra {
namespace Ocelle {

H264Encoder::H264Encoder(const X264Library &library)
    : m_library(library)
{
}

H264Encoder::~H264Encoder()
{
    close();
}

bool H264Encoder::open(const EncoderSettings &settings, std::string *error)
{
    close();
    if (!m_library.isComplete()) {
        *error = m_library.error();
        return false;
    }
    m_settings = settings;
    if (m_library.paramDefaultPreset(&m_param, "veryfast", "zerolatency") != 0) {
        *error = "x264 does not know its presets";
        return false;
    }
    m_param.i_threads = settings.threads; // slices: the preset's tune keeps to one picture
    m_param.i_width = roundedUpToEven(settings.width);
    m_param.i_height = roundedUpToEven(settings.height);
    m_param.i_csp = X264_CSP_I420;
    m_param.i_fps_num = std::uint32_t(settings.frameRate);
    m_param.i_fps_den = 1;
    m_param.i_keyint_max = settings.frameRate * KeyFrameSeconds;
    m_param.i_scenecut_threshold = 0; // key frames come when asked for, not with the scene
    m_param.b_repeat_headers = 1;
    m_param.b_annexb = 1;
    m_param.i_log_level = X264_LOG_ERROR;
    m_param.pf_log = log;
    m_param.p_log_private = this;
    setRates(settings);

    const std::lock_guard<std::mutex> lock(codecOpening());
    m_handle = m_library.encoderOpen(&m_param);
    if (!m_handle)
        *error = takeReason("x264 does not open");
    return m_handle;
}

void H264Encoder::close()
{
    if (!m_handle)
        return;
    const std::lock_guard<std::mutex> lock(codecOpening());
    m_library.encoderClose(m_handle);
    m_handle = nullptr;
}

// The bit rate is what the buffer of the receiver is filled with; asked for more quality than fits,
// the library comes within one per cent of it, and a change shows at once. (As an average to reach
// it comes out up to a tenth too low, and a change takes effect through the buffer alone.)
void H264Encoder::setRates(const EncoderSettings &settings)
{
    const int rate = settings.bitrate / 1000; // kbit/s
    x264_param_t &param = m_param;
    param.rc.i_rc_method = X264_RC_CRF;
    param.rc.i_vbv_max_bitrate = rate;
    if (settings.constantBitrate) {
        param.rc.f_rf_constant = 10.0F;                          // more than a camera's picture has
        param.rc.i_vbv_buffer_size = std::max(1, rate * 6 / 10); // 0.6 s
        param.rc.f_vbv_buffer_init = 0.5F;
    } else {
        param.rc.f_rf_constant = 20.0F; // less than the bit rate where that is good enough
        param.rc.i_vbv_buffer_size = std::max(1, rate * 3 / 2); // 1.5 s
        param.rc.f_vbv_buffer_init = 0.7F;
    }
}

bool H264Encoder::encode(const PictureView &picture, std::int64_t index, bool keyFrame,
                         const UnitFunction &onUnit, std::string *error)
{
    if (!m_handle) {
        *error = "x264 is not open";
        return false;
    }
    x264_picture_t input;
    m_library.pictureInit(&input);
    input.i_type = keyFrame ? X264_TYPE_IDR : X264_TYPE_AUTO;
    input.i_pts = index;
    const bool planar = picture.layout == PictureLayout::Planar;
    input.img.i_csp = planar                                  ? X264_CSP_I420
                      : picture.layout == PictureLayout::NV12 ? X264_CSP_NV12
                                                              : X264_CSP_NV21;
    input.img.i_plane = planar ? 3 : 2;
    input.img.plane[0] = const_cast<std::uint8_t *>(picture.y); // only read
    input.img.plane[1] = const_cast<std::uint8_t *>(planar ? picture.cb : picture.pairs());
    input.img.plane[2] = planar ? const_cast<std::uint8_t *>(picture.cr) : nullptr;
    input.img.i_stride[0] = picture.yStride;
    input.img.i_stride[1] = picture.cStride;
    input.img.i_stride[2] = picture.cStride;

    x264_nal_t *nals = nullptr;
    int nalCount = 0;
    x264_picture_t output;
    const int size = m_library.encoderEncode(m_handle, &nals, &nalCount, &input, &output);
    if (size <= 0 || nalCount < 1) {
        *error = takeReason(size < 0 ? "x264 failed" : "x264 put nothing out");
        close();
        return false;
    }
    // The payloads of all of a picture's units follow each other in memory.
    onUnit({ nals[0].p_payload, std::size_t(size), output.i_pts, output.b_keyframe != 0 });
    return true;
}

PictureEncoder::BitrateChange H264Encoder::setBitrate(int bitrate, std::string *error)
{
    m_settings.bitrate = bitrate;
    setRates(m_settings);
    if (m_handle && m_library.encoderReconfig(m_handle, &m_param) != 0) {
        *error = takeReason("x264 refuses the bit rate");
        return BitrateChange::Failed;
    }
    return BitrateChange::Done;
}

void H264Encoder::log(void *encoder, int level, const char *format, va_list arguments)
{
    if (level != X264_LOG_ERROR)
        return;
    char text[256];
    std::vsnprintf(text, sizeof(text), format, arguments);
    std::string reason(text);
    while (!reason.empty() && reason.back() == '\n')
        reason.pop_back();
    auto *self = static_cast<H264Encoder *>(encoder);
    const std::lock_guard<std::mutex> lock(self->m_reasonMutex);
    self->m_reason = reason;
}

std::string H264Encoder::takeReason(const char *otherwise)
{
    const std::lock_guard<std::mutex> lock(m_reasonMutex);
    std::string reason = m_reason.empty() ? otherwise : "x264: " + m_reason;
    m_reason.clear();
    return reason;
}

} // namespace Ocelle
} // namespace Veltra
