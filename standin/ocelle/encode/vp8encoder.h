// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "vpxencoder.h"

namespace Veltra {
namespace Ocelle {

/*!
 * VP8 through libvpx.
 *
 * Threads: one at a time.
 */
class Vp8Encoder final : public VpxEncoder
{
public:
    explicit Vp8Encoder(const VpxLibrary &library = VpxLibrary::instance());

    bool open(const EncoderSettings &settings, std::string *error) override;

    /*!
     * How many of the \a wanted threads it takes: on at most half of the processors, as the library's
     * threads for VP8 wait for each other without ever sleeping. On two processors, two threads
     * take twice the processor time of one, and where other programs keep these busy they come to a
     * twentieth of its speed.
     */
    static int threads(int wanted, int processors);

private:
    bool configure(const EncoderSettings &settings) override;
};

} // namespace Ocelle
} // namespace Veltra
