// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "graphicbuffer.h"
#include "jpegdecoder.h"
#include "picturememory.h"

#include <linux/videodev2.h>

#include <cstddef>
#include <cstdint>

namespace Veltra {
namespace Ocelle {

/*!
 * Where the planes of an uncopied format are in the \a size bytes of a driver's picture; also sets
 * \a picture's size and format. False where they do not fit, which an incomplete picture's do not.
 */
bool layOut(const v4l2_pix_format &format, const std::uint8_t *data, std::size_t size,
            GraphicBuffer &picture);

/*! Converts one of the other formats into \a picture; false where the data is not a whole picture. */
bool convert(const v4l2_pix_format &format, const std::uint8_t *data, std::size_t size,
             JpegDecoder &decoder, PictureMemory &picture);

} // namespace Ocelle
} // namespace Veltra
