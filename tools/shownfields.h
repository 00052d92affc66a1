// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "videocodec.h"

#include <cstddef>
#include <cstdint>

namespace Tool {

/*! Whether a VP8 or VP9 frame, or one of a superframe, is to be shown, or only helps others. */
bool isShown(VideoCodec codec, const std::uint8_t *data, std::size_t size);

} // namespace Tool
