// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "vpxencoder.h"

namespace Veltra {
namespace Ocelle {

/*!
 * VP8 through libvpx, on the calling thread alone. The library's threads for VP8 wait for each other
 * without ever sleeping: two take twice the processor time of one, and where other programs keep
 * the processors busy they come to a twentieth of its speed.
 *
 * Threads: one at a time.
 */
class Vp8Encoder final : public VpxEncoder
{
public:
    explicit Vp8Encoder(const VpxLibrary &library = VpxLibrary::instance());

    bool open(const EncoderSettings &settings, std::string *error) override;

private:
    bool configure(const EncoderSettings &settings) override;
};

} // namespace Ocelle
} // namespace Veltra
