// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "graphicbuffer.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Veltra {
namespace Ocelle {

/*!
 * Makes the pictures of one capture, from its start to its stop.
 *
 * Threads: made on any thread, then used and destroyed on the capture thread, but for wake().
 * Owner:   the capture.
 * Units:   time since the first picture in nanoseconds, timestamps in microseconds.
 * Errors:  error() tells in a sentence for people why next() or picture() came back empty.
 */
class PictureProducer
{
public:
    virtual ~PictureProducer() = default;

    virtual std::chrono::nanoseconds period() const = 0;
    /*! After a longer delay than this the beat moves instead of pictures being left out. */
    virtual std::chrono::nanoseconds catchUp() const = 0;

    /*!
     * Gets the next picture ready and tells when it comes. Looks at \a stop wherever it takes long,
     * and may return anything once that is true.
     */
    virtual std::optional<std::chrono::nanoseconds> next(const std::atomic<bool> &stop) = 0;

    /*! The picture that next() got ready; empty without an error() where no buffer is free. */
    virtual std::shared_ptr<GraphicBuffer> picture(std::uint64_t sequence,
                                                   std::int64_t timestamp) = 0;

    /*! Why it cannot go on; empty while it can. */
    virtual std::string error() const = 0;

    /*! Any thread: makes a next() that waits look at its \a stop now. It returns at once. */
    virtual void wake() {}
};

} // namespace Ocelle
} // namespace Veltra
