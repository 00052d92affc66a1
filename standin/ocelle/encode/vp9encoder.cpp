// SPDX-License-Identifier: BSD-3-Clause
#include "vp9encoder.h"

namespace Veltra {
namespace Ocelle {

Vp9Encoder::Vp9Encoder(const VpxLibrary &library)
    : VpxEncoder(library, library.vp9)
{
}

bool Vp9Encoder::configure(const EncoderSettings &settings)
{
    constexpr int minTileWidth = 256; // pixels
    int columns = 0;                  // log2
    while ((1 << columns) < settings.threads && (settings.width >> (columns + 1)) >= minTileWidth)
        ++columns;
    return control(VP8E_SET_CPUUSED, 8) && control(VP9E_SET_TILE_COLUMNS, columns) &&
           control(VP9E_SET_ROW_MT, settings.threads > 1 ? 1 : 0);
}

} // namespace Ocelle
} // namespace Veltra
