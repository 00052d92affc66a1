// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "pictureencoder.h"
#include "x264library.h"

#include <mutex>

namespace Veltra {
namespace Ocelle {

/*!
 * H.264 through x264: Annex B, parameter sets before every key frame, no picture later than its
 * own call. An odd size has to be made even: the format cannot crop half a chroma sample.
 *
 * Threads: one at a time. Opening and closing wait for other encoders that do so: the library's
 *          tables are shared.
 */
class H264Encoder final : public PictureEncoder
{
public:
    explicit H264Encoder(const X264Library &library = X264Library::instance());
    ~H264Encoder() override;

    bool takes(PictureLayout) const override { return true; }
    bool takesOddSizes() const override { return false; }
    bool open(const EncoderSettings &settings, std::string *error) override;
    bool encode(const PictureView &picture, std::int64_t index, bool keyFrame,
                const UnitFunction &onUnit, std::string *error) override;
    bool finish(const UnitFunction &, std::string *) override { return true; }
    BitrateChange setBitrate(int bitrate, std::string *error) override;

private:
    void close();
    void setRates(const EncoderSettings &settings);
    static void log(void *encoder, int level, const char *format, va_list arguments);
    std::string takeReason(const char *otherwise);

    const X264Library &m_library;
    x264_t *m_handle = nullptr;
    x264_param_t m_param;
    EncoderSettings m_settings;

    std::mutex m_reasonMutex; // guards m_reason: the library's threads write it
    std::string m_reason;
};

} // namespace Ocelle
} // namespace Veltra
