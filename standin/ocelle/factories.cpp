// SPDX-License-Identifier: BSD-3-Clause
#include "cameraselection.h"
#include "decode/localdecoderfactories.h"
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
            selectedSources(std::getenv("OCELLE_CAMERAS"), std::getenv("OCELLE_PATTERN_FORMAT"),
                            std::getenv("OCELLE_V4L2_WATCHDOG")));
    return manager;
}

Veltra::Ocelle::CodecManager *OcelleCodecManager()
{
    using namespace Veltra::Ocelle;
    static CodecManager *const manager = new LocalCodecManager(
            localEncoderFactories(),
            localDecoderFactories(DecoderSettings::fromTexts(
                    std::getenv("OCELLE_DECODER_OUTPUT"), std::getenv("OCELLE_DECODER_THREADS"))));
    return manager;
}
