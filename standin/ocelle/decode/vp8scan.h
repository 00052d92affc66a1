// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "streamscan.h"

namespace Veltra {
namespace Ocelle {

/*!
 * Reads the headers of VP8 frames.
 *
 * Threads: one at a time.
 */
class Vp8Scan final : public StreamScan
{
public:
    UnitReport examine(const std::uint8_t *data, std::size_t size) override;
};

} // namespace Ocelle
} // namespace Veltra
