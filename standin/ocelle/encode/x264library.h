// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <stdint.h>
#include <x264.h>

#include <string>

namespace Veltra {
namespace Ocelle {

/*!
 * The functions of the x264 library, found at run time under the version that this was built
 * against. To be used only when complete.
 *
 * Threads: any, after construction.
 */
class X264Library
{
public:
    explicit X264Library(const std::string &fileName);

    /*! The one of this machine, opened on first use. */
    static const X264Library &instance();

    bool isComplete() const { return m_error.empty(); }
    const std::string &error() const { return m_error; }

    decltype(&x264_param_default_preset) paramDefaultPreset = nullptr;
    decltype(&x264_picture_init) pictureInit = nullptr;
    decltype(&x264_encoder_open) encoderOpen = nullptr;
    decltype(&x264_encoder_reconfig) encoderReconfig = nullptr;
    decltype(&x264_encoder_encode) encoderEncode = nullptr;
    decltype(&x264_encoder_close) encoderClose = nullptr;

private:
    std::string m_error;
};

} // namespace Ocelle
} // namespace Veltra
