// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/camera.h>

#include <cstdint>
#include <string>

namespace Veltra {
namespace Ocelle {

/*! One of the driver's picture formats that this platform can make pictures of. */
struct V4l2Format
{
    std::uint32_t fourcc;  // the driver's
    PixelFormat delivered; // what it becomes
    bool isCopied; // converted into memory of our own; otherwise the driver's memory is used
    bool isCompressed;

    /*! Null for a format that cannot be used. */
    static const V4l2Format *find(std::uint32_t fourcc);
    /*! Lower is better: what costs nothing before what is converted before what is compressed. */
    static int rank(std::uint32_t fourcc);
    /*! "YUYV"; what is not printable is shown as a dot. */
    static std::string name(std::uint32_t fourcc);
};

} // namespace Ocelle
} // namespace Veltra
