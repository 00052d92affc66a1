// SPDX-License-Identifier: BSD-3-Clause
#include "localencoderfactories.h"

#include "hardwareencoderfactory.h"
#include "softwareencoderfactory.h"

namespace Veltra {
namespace Ocelle {

std::vector<std::shared_ptr<EncoderFactory>> localEncoderFactories()
{
    std::vector<std::shared_ptr<EncoderFactory>> factories = HardwareEncoderFactory::all();
    for (const std::shared_ptr<EncoderFactory> &factory : SoftwareEncoderFactory::all())
        factories.push_back(factory);
    return factories;
}

} // namespace Ocelle
} // namespace Veltra
