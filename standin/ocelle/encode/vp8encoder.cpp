#include "vp8encoder.h"

namespace Veltra {
namespace Ocelle {

Vp8Encoder::Vp8Encoder(const VpxLibrary &library)
    : VpxEncoder(library, library.vp8)
{
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
