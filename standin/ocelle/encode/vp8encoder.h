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

private:
    bool configure(const EncoderSettings &settings) override;
};

} // namespace Ocelle
} // namespace Veltra
