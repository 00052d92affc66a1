// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "decoderfactory.h"
#include "decodersettings.h"

#include <memory>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * Decoders of libavcodec that run on the processor.
 *
 * Threads: any.
 */
class SoftwareDecoderFactory final : public DecoderFactory
{
public:
    /*! \a name is part of the codec's id, \a avName is libavcodec's. */
    SoftwareDecoderFactory(CodecType type, const std::string &name, std::string avName,
                           DecoderSettings settings);

    bool isAvailable() override;
    std::shared_ptr<VideoDecoder> create(std::string *error) override;

    /*! One for each kind of codec. */
    static std::vector<std::shared_ptr<DecoderFactory>> all(DecoderSettings settings);

private:
    const std::string m_avName;
    const DecoderSettings m_settings;
};

} // namespace Ocelle
} // namespace Veltra
