// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "avencoder.h"
#include "encoderfactory.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * Encoders of one device through libavcodec. It is available where the device opens and turns a
 * few pictures into a compressed one.
 *
 * Threads: any.
 */
class HardwareEncoderFactory final : public EncoderFactory
{
public:
    /*! \a name is part of the codec's id, as "vaapi.h264". */
    HardwareEncoderFactory(CodecType type, const std::string &name, AvEncoderKind kind);

    bool isAvailable() override;
    std::unique_ptr<PictureEncoder> create() override;

    /*! One for each kind of codec and device of this machine that may have an encoder. */
    static std::vector<std::shared_ptr<EncoderFactory>> all();

private:
    bool encodesTrialPictures() const;

    const AvEncoderKind m_kind;
    std::once_flag m_tried;
    bool m_isAvailable = false; // written once, while m_tried is being set
};

} // namespace Ocelle
} // namespace Veltra
