// SPDX-License-Identifier: BSD-3-Clause
#include "x264library.h"

#include "sharedlibrary.h"

namespace Veltra {
namespace Ocelle {

X264Library::X264Library(const std::string &fileName)
{
    SharedLibrary library(fileName);
    library.resolve(paramDefaultPreset, OCELLE_SYMBOL_NAME(x264_param_default_preset));
    library.resolve(pictureInit, OCELLE_SYMBOL_NAME(x264_picture_init));
    library.resolve(encoderOpen, OCELLE_SYMBOL_NAME(x264_encoder_open));
    library.resolve(encoderReconfig, OCELLE_SYMBOL_NAME(x264_encoder_reconfig));
    library.resolve(encoderEncode, OCELLE_SYMBOL_NAME(x264_encoder_encode));
    library.resolve(encoderClose, OCELLE_SYMBOL_NAME(x264_encoder_close));
    m_error = library.error();
}

const X264Library &X264Library::instance()
{
    static const X264Library library("libx264.so." + std::to_string(X264_BUILD));
    return library;
}

} // namespace Ocelle
} // namespace Veltra
