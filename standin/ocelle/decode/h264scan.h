// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "h264parameters.h"
#include "streamscan.h"

#include <array>
#include <cstdint>

namespace Veltra {
namespace Ocelle {

class BitReader;

/*!
 * Reads the headers of H.264 with start codes.
 *
 * A frame number that does not follow on the one before tells of lost pictures, unless it is 1:
 * that follows on a picture which forgot all others, and what such a one looks like is not read.
 *
 * Threads: one at a time.
 */
class H264Scan final : public StreamScan
{
public:
    UnitReport examine(const std::uint8_t *data, std::size_t size) override;
    void restart() override { m_hasReference = false; }

private:
    struct PictureParameters
    {
        bool isValid = false;
        std::uint32_t sequenceId = 0;
    };

    void examineNal(const std::uint8_t *data, std::size_t size, UnitReport *report);
    void examineSlice(const std::uint8_t *data, std::size_t size, UnitReport *report);
    void readSequenceParameters(const std::uint8_t *data, std::size_t size, UnitReport *report);
    void readPictureParameters(const std::uint8_t *data, std::size_t size);
    void followFrameNumber(std::uint32_t number, const H264SequenceParameters &sequence,
                           bool isReference, UnitReport *report);

    std::array<H264SequenceParameters, H264SequenceParameters::MaxId + 1> m_sequences;
    std::array<PictureParameters, 256> m_pictures;
    bool m_isKnown = false;        // something of the frame at hand belongs to H.264
    bool m_isRecovery = false;     // it says that decoding can begin here
    bool m_hasReference = false;   // m_reference is valid
    std::uint32_t m_reference = 0; // frame number of the last picture that others refer to
};

} // namespace Ocelle
} // namespace Veltra
