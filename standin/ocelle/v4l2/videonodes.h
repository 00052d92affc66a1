// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "deviceidentity.h"

#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * The video nodes of this machine and when they change, all without opening any of them.
 *
 * Threads: the source's own.
 */
class VideoNodes
{
public:
    virtual ~VideoNodes() = default;

    virtual std::vector<VideoNode> list() = 0;
    /*! Readable after something changed; -1 where changes cannot be told. */
    virtual int descriptor() const = 0;
    /*! Takes what is there to read. */
    virtual void drain() = 0;
};

} // namespace Ocelle
} // namespace Veltra
