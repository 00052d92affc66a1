// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "encoderfactory.h"

#include <memory>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*! Every way to encode that this was built with, hardware before software. */
std::vector<std::shared_ptr<EncoderFactory>> localEncoderFactories();

} // namespace Ocelle
} // namespace Veltra
