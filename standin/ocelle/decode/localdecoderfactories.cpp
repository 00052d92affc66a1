// SPDX-License-Identifier: BSD-3-Clause
#include "localdecoderfactories.h"

#include "hardwaredecoderfactory.h"
#include "softwaredecoderfactory.h"

namespace Veltra {
namespace Ocelle {

std::vector<std::shared_ptr<DecoderFactory>> localDecoderFactories(DecoderSettings settings)
{
    std::vector<std::shared_ptr<DecoderFactory>> factories = HardwareDecoderFactory::all(settings);
    for (const std::shared_ptr<DecoderFactory> &factory : SoftwareDecoderFactory::all(settings))
        factories.push_back(factory);
    return factories;
}

} // namespace Ocelle
} // namespace Veltra
