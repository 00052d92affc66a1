// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "streamscan.h"

namespace Veltra {
namespace Ocelle {

/*!
 * Reads the headers of VP9 frames.
 *
 * Threads: one at a time.
 */
class Vp9Scan final : public StreamScan
{
public:
    UnitReport examine(const std::uint8_t *data, std::size_t size) override;
};

} // namespace Ocelle
} // namespace Veltra
