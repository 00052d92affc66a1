// SPDX-License-Identifier: BSD-3-Clause
#include "vpxencoder.h"

namespace Veltra {
namespace Ocelle {

VpxEncoder::VpxEncoder(const VpxLibrary &library, decltype(&vpx_codec_vp8_cx) interface)
    : m_library(library)
    , m_interface(interface)
{
}

VpxEncoder::~VpxEncoder()
{
    close();
}

bool VpxEncoder::open(const EncoderSettings &settings, std::string *error)
{
    close();
    if (!m_library.isComplete() || !m_interface) {
        *error = m_library.isComplete() ? "libvpx was built without it" : m_library.error();
        return false;
    }
    vpx_codec_err_t code = m_library.encConfigDefault(m_interface(), &m_config, 0);
    if (code == VPX_CODEC_OK) {
        setConfig(settings);
        code = m_library.encInit(&m_codec, m_interface(), &m_config, 0, VPX_ENCODER_ABI_VERSION);
    }
    if (code != VPX_CODEC_OK) {
        *error = reason(code);
        return false;
    }
    m_isOpen = true;
    if (!configure(settings)) {
        *error = reason(VPX_CODEC_INVALID_PARAM);
        close();
        return false;
    }
    return true;
}

void VpxEncoder::close()
{
    if (m_isOpen)
        m_library.destroy(&m_codec);
    m_isOpen = false;
}

void VpxEncoder::setConfig(const EncoderSettings &settings)
{
    m_config.g_w = unsigned(settings.width);
    m_config.g_h = unsigned(settings.height);
    m_config.g_timebase = { 1, settings.frameRate };
    m_config.g_threads = unsigned(settings.threads);
    m_config.g_lag_in_frames = 0;
    m_config.g_error_resilient = VPX_ERROR_RESILIENT_DEFAULT;
    m_config.g_pass = VPX_RC_ONE_PASS;
    m_config.kf_mode = VPX_KF_AUTO;
    m_config.kf_max_dist = unsigned(settings.frameRate * KeyFrameSeconds);
    m_config.rc_target_bitrate = unsigned(settings.bitrate / 1000); // kbit/s
    m_config.rc_dropframe_thresh = 0;                               // one unit for each picture
    m_config.rc_resize_allowed = 0;
    // In its own variable mode the library follows a changed bit rate after many seconds only, so
    // it is the size of the receiver's buffer that differs, and what is in it at first.
    m_config.rc_end_usage = VPX_CBR;
    m_config.rc_undershoot_pct = 100;
    m_config.rc_overshoot_pct = 100;
    m_config.rc_buf_sz = settings.constantBitrate ? 400 : 1500; // ms, as these
    m_config.rc_buf_initial_sz = settings.constantBitrate ? 200 : 700;
    m_config.rc_buf_optimal_sz = 200;
}

bool VpxEncoder::control(int id, int value)
{
    return m_library.control(&m_codec, id, value) == VPX_CODEC_OK;
}

bool VpxEncoder::encode(const PictureView &picture, std::int64_t index, bool keyFrame,
                        const UnitFunction &onUnit, std::string *error)
{
    if (!m_isOpen) {
        *error = "libvpx is not open";
        return false;
    }
    const bool planar = picture.layout == PictureLayout::Planar;
    auto *luma = const_cast<std::uint8_t *>(picture.y); // only read, as the others
    m_library.imgWrap(&m_image, planar ? VPX_IMG_FMT_I420 : VPX_IMG_FMT_NV12,
                      unsigned(picture.width), unsigned(picture.height), 1, luma);
    m_image.planes[VPX_PLANE_U] = const_cast<std::uint8_t *>(picture.cb);
    m_image.planes[VPX_PLANE_V] = const_cast<std::uint8_t *>(picture.cr);
    m_image.stride[VPX_PLANE_Y] = picture.yStride;
    m_image.stride[VPX_PLANE_U] = picture.cStride;
    m_image.stride[VPX_PLANE_V] = picture.cStride;

    const vpx_codec_err_t code = m_library.encode(
            &m_codec, &m_image, index, 1, keyFrame ? VPX_EFLAG_FORCE_KF : 0, VPX_DL_REALTIME);
    bool any = false;
    vpx_codec_iter_t iterator = nullptr;
    while (code == VPX_CODEC_OK) {
        const vpx_codec_cx_pkt_t *packet = m_library.getCxData(&m_codec, &iterator);
        if (!packet)
            break;
        if (packet->kind != VPX_CODEC_CX_FRAME_PKT || any)
            continue;
        any = true;
        onUnit({ static_cast<unsigned char *>(packet->data.frame.buf), packet->data.frame.sz,
                 packet->data.frame.pts, (packet->data.frame.flags & VPX_FRAME_IS_KEY) != 0 });
    }
    if (!any) {
        *error = code == VPX_CODEC_OK ? "libvpx put nothing out" : reason(code);
        close();
    }
    return any;
}

PictureEncoder::BitrateChange VpxEncoder::setBitrate(int bitrate, std::string *error)
{
    m_config.rc_target_bitrate = unsigned(bitrate / 1000);
    const vpx_codec_err_t code =
            m_isOpen ? m_library.encConfigSet(&m_codec, &m_config) : VPX_CODEC_OK;
    if (code != VPX_CODEC_OK)
        *error = reason(code);
    return code == VPX_CODEC_OK ? BitrateChange::Done : BitrateChange::Failed;
}

std::string VpxEncoder::reason(vpx_codec_err_t code)
{
    const char *detail = m_library.errorDetail(&m_codec);
    return std::string("libvpx: ") + m_library.errToString(code) +
           (detail ? std::string(": ") + detail : std::string());
}

} // namespace Ocelle
} // namespace Veltra
