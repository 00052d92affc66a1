// SPDX-License-Identifier: BSD-3-Clause
#include "vpxlibrary.h"

#include "sharedlibrary.h"

namespace Veltra {
namespace Ocelle {

VpxLibrary::VpxLibrary(const std::string &fileName)
{
    SharedLibrary library(fileName);
    library.resolve(encConfigDefault, "vpx_codec_enc_config_default");
    library.resolve(encInit, "vpx_codec_enc_init_ver");
    library.resolve(encConfigSet, "vpx_codec_enc_config_set");
    library.resolve(control, "vpx_codec_control_");
    library.resolve(encode, "vpx_codec_encode");
    library.resolve(getCxData, "vpx_codec_get_cx_data");
    library.resolve(destroy, "vpx_codec_destroy");
    library.resolve(errToString, "vpx_codec_err_to_string");
    library.resolve(errorDetail, "vpx_codec_error_detail");
    library.resolve(imgWrap, "vpx_img_wrap");
    m_error = library.error();

    library.resolve(vp8, "vpx_codec_vp8_cx");
    library.resolve(vp9, "vpx_codec_vp9_cx");
}

const VpxLibrary &VpxLibrary::instance()
{
    static const VpxLibrary library(OCELLE_VPX_FILE_NAME);
    return library;
}

} // namespace Ocelle
} // namespace Veltra
