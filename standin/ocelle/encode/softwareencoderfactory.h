// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "encoderfactory.h"

#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * Encoders of a codec library that runs on the processor.
 *
 * Threads: any.
 */
class SoftwareEncoderFactory final : public EncoderFactory
{
public:
    using IsThere = bool (*)();
    using Create = std::unique_ptr<PictureEncoder> (*)();

    /*! \a name is part of the codec's id; \a isThere tells whether the library could be opened. */
    SoftwareEncoderFactory(CodecType type, const std::string &name, IsThere isThere,
                           Create createEncoder);

    bool isAvailable() override { return m_isThere(); }
    std::unique_ptr<PictureEncoder> create() override { return m_create(); }

    /*! One for each codec library that this was built with. */
    static std::vector<std::shared_ptr<EncoderFactory>> all();

private:
    const IsThere m_isThere;
    const Create m_create;
};

} // namespace Ocelle
} // namespace Veltra
