// SPDX-License-Identifier: BSD-3-Clause
#include "vp8encoder.h"

namespace Veltra {
namespace Ocelle {

Vp8Encoder::Vp8Encoder(const VpxLibrary &library)
    : VpxEncoder(library, library.vp8)
{
}

bool Vp8Encoder::open(const EncoderSettings &settings, std::string *error)
{
    EncoderSettings single = settings;
    single.threads = 1;
    return VpxEncoder::open(single, error);
}

bool Vp8Encoder::configure(const EncoderSettings &)
{
    return control(VP8E_SET_CPUUSED, -8); // fixed; a positive one would follow the clock
}

} // namespace Ocelle
} // namespace Veltra
