// SPDX-License-Identifier: BSD-3-Clause
#include "vp8encoder.h"

#include <algorithm>
#include <thread>

namespace Veltra {
namespace Ocelle {

Vp8Encoder::Vp8Encoder(const VpxLibrary &library)
    : VpxEncoder(library, library.vp8)
{
}

bool Vp8Encoder::open(const EncoderSettings &settings, std::string *error)
{
    EncoderSettings bounded = settings;
    bounded.threads = threads(settings.threads, int(std::thread::hardware_concurrency()));
    return VpxEncoder::open(bounded, error);
}

int Vp8Encoder::threads(int wanted, int processors)
{
    return std::clamp(processors / 2, 1, std::max(wanted, 1));
}

bool Vp8Encoder::configure(const EncoderSettings &settings)
{
    int partitions = 0; // log2
    while ((1 << partitions) < settings.threads && partitions < 3)
        ++partitions;
    // A negative speed is fixed; a positive one would follow the clock.
    return control(VP8E_SET_CPUUSED, -8) && control(VP8E_SET_TOKEN_PARTITIONS, partitions);
}

} // namespace Ocelle
} // namespace Veltra
