// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "codecfactory.h"

#include <memory>
#include <string>

namespace Veltra {
namespace Ocelle {

class VideoDecoder;

/*!
 * One way to decode.
 *
 * Threads: any, several at a time.
 */
class DecoderFactory : public CodecFactory
{
public:
    using CodecFactory::CodecFactory;

    /*! A decoder, to be initialised; null and a reason where none can be had. */
    virtual std::shared_ptr<VideoDecoder> create(std::string *error) = 0;
};

} // namespace Ocelle
} // namespace Veltra
