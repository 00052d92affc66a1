#include "localdecoderfactories.h"

#include "softwaredecoderfactory.h"

namespace Veltra {
namespace Ocelle {

std::vector<std::shared_ptr<DecoderFactory>> localDecoderFactories(DecoderSettings settings)
{
    return SoftwareDecoderFactory::all(settings);
}

} // namespace Ocelle
} // namespace Veltra
