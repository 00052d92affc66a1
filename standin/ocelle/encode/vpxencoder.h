// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "pictureencoder.h"
#include "vpxlibrary.h"

namespace Veltra {
namespace Ocelle {

/*!
 * What VP8 and VP9 through libvpx have in common: real-time deadline, no picture later than its
 * own call, none dropped, any size.
 *
 * Threads: one at a time.
 */
class VpxEncoder : public PictureEncoder
{
public:
    ~VpxEncoder() override;

    bool takes(PictureLayout layout) const override { return layout != PictureLayout::NV21; }
    bool takesOddSizes() const override { return true; }
    bool open(const EncoderSettings &settings, std::string *error) override;
    bool encode(const PictureView &picture, std::int64_t index, bool keyFrame,
                const UnitFunction &onUnit, std::string *error) override;
    bool finish(const UnitFunction &, std::string *) override { return true; }
    BitrateChange setBitrate(int bitrate, std::string *error) override;

protected:
    /*! \a interface is null where the library was built without the codec. */
    VpxEncoder(const VpxLibrary &library, decltype(&vpx_codec_vp8_cx) interface);

    /*! The codec's own settings, right after opening. */
    virtual bool configure(const EncoderSettings &settings) = 0;
    bool control(int id, int value);

private:
    void close();
    void setConfig(const EncoderSettings &settings);
    std::string reason(vpx_codec_err_t code);

    const VpxLibrary &m_library;
    const decltype(&vpx_codec_vp8_cx) m_interface;
    bool m_isOpen = false;
    vpx_codec_ctx_t m_codec {};
    vpx_codec_enc_cfg_t m_config {};
    vpx_image_t m_image {};
};

} // namespace Ocelle
} // namespace Veltra
