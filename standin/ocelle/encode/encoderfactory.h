// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "codecfactory.h"
#include "pictureencoder.h"

#include <memory>

namespace Veltra {
namespace Ocelle {

/*!
 * One way to encode.
 *
 * Threads: any, several at a time.
 */
class EncoderFactory : public CodecFactory
{
public:
    using CodecFactory::CodecFactory;

    /*! A codec, to be opened. Never null. */
    virtual std::unique_ptr<PictureEncoder> create() = 0;
};

} // namespace Ocelle
} // namespace Veltra
