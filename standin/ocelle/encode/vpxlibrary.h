// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <vpx/vp8cx.h>
#include <vpx/vpx_encoder.h>

#include <string>

namespace Veltra {
namespace Ocelle {

/*!
 * The functions of the vpx library, found at run time. To be used only when complete; one of the
 * two codecs may be missing even then.
 *
 * Threads: any, after construction.
 */
class VpxLibrary
{
public:
    explicit VpxLibrary(const std::string &fileName);

    /*! The one of this machine, opened on first use. */
    static const VpxLibrary &instance();

    bool isComplete() const { return m_error.empty(); }
    const std::string &error() const { return m_error; }

    decltype(&vpx_codec_vp8_cx) vp8 = nullptr; // null where it was built without
    decltype(&vpx_codec_vp9_cx) vp9 = nullptr;
    decltype(&vpx_codec_enc_config_default) encConfigDefault = nullptr;
    decltype(&vpx_codec_enc_init_ver) encInit = nullptr;
    decltype(&vpx_codec_enc_config_set) encConfigSet = nullptr;
    decltype(&vpx_codec_control_) control = nullptr;
    decltype(&vpx_codec_encode) encode = nullptr;
    decltype(&vpx_codec_get_cx_data) getCxData = nullptr;
    decltype(&vpx_codec_destroy) destroy = nullptr;
    decltype(&vpx_codec_err_to_string) errToString = nullptr;
    decltype(&vpx_codec_error_detail) errorDetail = nullptr;
    decltype(&vpx_img_wrap) imgWrap = nullptr;

private:
    std::string m_error;
};

} // namespace Ocelle
} // namespace Veltra
