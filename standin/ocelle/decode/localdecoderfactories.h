// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "decoderfactory.h"
#include "decodersettings.h"

#include <memory>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*! Every way to decode that this was built with, hardware before software. */
std::vector<std::shared_ptr<DecoderFactory>> localDecoderFactories(DecoderSettings settings);

} // namespace Ocelle
} // namespace Veltra
