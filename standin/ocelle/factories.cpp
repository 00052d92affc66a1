#include "cameraselection.h"
#include "encode/localencoderfactories.h"
#include "localcameramanager.h"
#include "localcodecmanager.h"

#include <cstdlib>

// Both managers are made on first use and never destroyed: callers keep the pointers until the
// process ends, and so may threads of theirs that are still running then.

Veltra::Ocelle::CameraManager *OcelleManager()
{
    using namespace Veltra::Ocelle;
    static CameraManager *const manager = new LocalCameraManager(
            selectedSources(std::getenv("OCELLE_CAMERAS"), std::getenv("OCELLE_PATTERN_FORMAT")));
    return manager;
}

Veltra::Ocelle::CodecManager *OcelleCodecManager()
{
    using namespace Veltra::Ocelle;
    static CodecManager *const manager = new LocalCodecManager(localEncoderFactories(), {});
    return manager;
}
