// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "pictureencoder.h"
#include "x265library.h"

namespace Veltra {
namespace Ocelle {

/*!
 * H.265 through x265: Annex B, parameter sets before every key frame, no picture later than its
 * own call. An odd size has to be made even, as for H.264. The library's own way to change the bit
 * rate has no effect, so that takes a new open(). It writes why it fails to standard error only.
 *
 * Threads: one at a time. Opening and closing wait for other encoders that do so: the library's
 *          tables are shared.
 */
class H265Encoder final : public PictureEncoder
{
public:
    explicit H265Encoder(const X265Library &library = X265Library::instance());
    ~H265Encoder() override;

    bool takes(PictureLayout layout) const override { return layout == PictureLayout::Planar; }
    bool takesOddSizes() const override { return false; }
    bool open(const EncoderSettings &settings, std::string *error) override;
    bool encode(const PictureView &picture, std::int64_t index, bool keyFrame,
                const UnitFunction &onUnit, std::string *error) override;
    bool finish(const UnitFunction &, std::string *) override { return true; }
    BitrateChange setBitrate(int, std::string *) override { return BitrateChange::NeedsReopen; }

private:
    void close();
    void encodeLastKeyFrame();
    void setInput(const PictureView &picture, std::int64_t index, bool keyFrame);
    void configure(x265_param *param, const EncoderSettings &settings) const;

    const X265Library &m_library;
    x265_encoder *m_handle = nullptr;
    bool m_wasOpen = false; // before
    int m_lineLength = 0;   // pixels
    x265_picture m_input;
    x265_picture m_output;
};

} // namespace Ocelle
} // namespace Veltra
