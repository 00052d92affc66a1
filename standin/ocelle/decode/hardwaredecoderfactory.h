// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "avdecoder.h"
#include "decoderfactory.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * Decoders of one device through libavcodec. It is available where the device opens and turns a
 * key frame into a picture. A stream that the device cannot do is decoded by the processor.
 *
 * Threads: any.
 */
class HardwareDecoderFactory final : public DecoderFactory
{
public:
    /*! \a name is part of the codec's id, as "vaapi.h264". */
    HardwareDecoderFactory(CodecType type, const std::string &name, AvDecoderKind kind,
                           DecoderSettings settings);

    bool isAvailable() override;
    std::shared_ptr<VideoDecoder> create(std::string *error) override;

    /*! One for each kind of codec and device of this machine that may have a decoder. */
    static std::vector<std::shared_ptr<DecoderFactory>> all(DecoderSettings settings);

private:
    bool decodesTrialFrame() const;

    const AvDecoderKind m_kind;
    const DecoderSettings m_settings;
    std::once_flag m_tried;
    bool m_isAvailable = false; // written once, while m_tried is being set
};

} // namespace Ocelle
} // namespace Veltra
