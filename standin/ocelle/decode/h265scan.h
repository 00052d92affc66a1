// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "streamscan.h"

namespace Veltra {
namespace Ocelle {

/*!
 * Reads the headers of H.265 with start codes. That a picture is missing does not show.
 *
 * Threads: one at a time.
 */
class H265Scan final : public StreamScan
{
public:
    UnitReport examine(const std::uint8_t *data, std::size_t size) override;

private:
    void examineNal(const std::uint8_t *data, std::size_t size, UnitReport *report);

    bool m_hasSequenceParameters = false;
    bool m_hasPictureParameters = false;
    bool m_isKnown = false; // something of the frame at hand belongs to H.265
};

} // namespace Ocelle
} // namespace Veltra
