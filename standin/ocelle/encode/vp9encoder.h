// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "vpxencoder.h"

namespace Veltra {
namespace Ocelle {

/*!
 * VP9 through libvpx.
 *
 * Threads: one at a time.
 */
class Vp9Encoder final : public VpxEncoder
{
public:
    explicit Vp9Encoder(const VpxLibrary &library = VpxLibrary::instance());

private:
    bool configure(const EncoderSettings &settings) override;
};

} // namespace Ocelle
} // namespace Veltra
