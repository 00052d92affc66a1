// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "encodersettings.h"
#include "pictureview.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace Veltra {
namespace Ocelle {

/*! One compressed picture. */
struct EncodedUnit
{
    unsigned char *data; // the codec's, until the call that brings it returns
    std::size_t size;
    std::int64_t index; // of the picture, as given to PictureEncoder::encode()
    bool isKeyFrame;
};

/*!
 * One codec: pictures in, compressed pictures out in the same order. Knows nothing of listeners,
 * timestamps, rotation or who owns the picture; LocalVideoEncoder does all that.
 *
 * Threads: one at a time.
 * Errors:  false and a text for people, without the codec's name.
 */
class PictureEncoder
{
public:
    using UnitFunction = std::function<void(const EncodedUnit &)>;
    enum class BitrateChange {
        Done,        // holds from the next picture on
        NeedsReopen, // only by open() with the new settings
        Failed,
    };

    virtual ~PictureEncoder() = default;

    /*! Whether encode() takes that layout; Planar always. */
    virtual bool takes(PictureLayout layout) const = 0;
    /*!
     * Whether it takes pictures with an odd number of pixels or lines. Else open() gets them as
     * they are and encode() rounded up.
     */
    virtual bool takesOddSizes() const = 0;

    /*! Starts or, where it was open, starts anew: the next picture becomes a key frame. */
    virtual bool open(const EncoderSettings &settings, std::string *error) = 0;

    /*!
     * Compresses \a picture, of the size and with a layout as agreed, and calls \a onUnit for what
     * comes out: this picture or, from hardware, earlier ones. \a index rises by one with each
     * picture since open(). With \a keyFrame the picture becomes a key frame.
     */
    virtual bool encode(const PictureView &picture, std::int64_t index, bool keyFrame,
                        const UnitFunction &onUnit, std::string *error) = 0;

    /*! Puts out what is still inside; open() follows, or nothing. */
    virtual bool finish(const UnitFunction &onUnit, std::string *error) = 0;

    virtual BitrateChange setBitrate(int bitrate, std::string *error) = 0; // bits per second
};

} // namespace Ocelle
} // namespace Veltra
