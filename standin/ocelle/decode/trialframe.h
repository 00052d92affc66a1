// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/codecmanager.h>

#include <cstddef>
#include <cstdint>

namespace Veltra {
namespace Ocelle {

struct TrialFrame
{
    const std::uint8_t *data;
    std::size_t size; // bytes
};

/*! A key frame of a grey picture, 320x240, to see whether a decoder works. Any thread. */
TrialFrame trialFrame(CodecType type);

} // namespace Ocelle
} // namespace Veltra
