// SPDX-License-Identifier: BSD-3-Clause
#include "softwareencoderfactory.h"

#ifdef OCELLE_X264
#include "h264encoder.h"
#endif
#ifdef OCELLE_X265
#include "h265encoder.h"
#endif
#ifdef OCELLE_VPX
#include "vp8encoder.h"
#include "vp9encoder.h"
#endif

#include <algorithm>
#include <thread>

namespace Veltra {
namespace Ocelle {

namespace {
// More at once could not keep up with anything, and each keeps tens of megabytes.
int mostInstances()
{
    constexpr int perProcessor = 8;
    return perProcessor * std::max(1, int(std::thread::hardware_concurrency()));
}

#ifdef OCELLE_X264
bool hasX264()
{
    return X264Library::instance().isComplete();
}
#endif

#ifdef OCELLE_X265
bool hasX265()
{
    return X265Library::instance().isComplete();
}
#endif

#ifdef OCELLE_VPX
bool hasVp8()
{
    return VpxLibrary::instance().isComplete() && VpxLibrary::instance().vp8;
}

bool hasVp9()
{
    return VpxLibrary::instance().isComplete() && VpxLibrary::instance().vp9;
}
#endif

template <class Encoder>
[[maybe_unused]] std::unique_ptr<PictureEncoder> make()
{
    return std::make_unique<Encoder>();
}
} // namespace

SoftwareEncoderFactory::SoftwareEncoderFactory(CodecType type, const std::string &name,
                                               IsThere isThere, Create createEncoder)
    : EncoderFactory({ type, true, "software." + name + ".encoder", 0, mostInstances(), false })
    , m_isThere(isThere)
    , m_create(createEncoder)
{
}

std::vector<std::shared_ptr<EncoderFactory>> SoftwareEncoderFactory::all()
{
    return {
#ifdef OCELLE_X264
        std::make_shared<SoftwareEncoderFactory>(CodecType::H264, "h264", hasX264,
                                                 make<H264Encoder>),
#endif
#ifdef OCELLE_X265
        std::make_shared<SoftwareEncoderFactory>(CodecType::H265, "h265", hasX265,
                                                 make<H265Encoder>),
#endif
#ifdef OCELLE_VPX
        std::make_shared<SoftwareEncoderFactory>(CodecType::VP8, "vp8", hasVp8, make<Vp8Encoder>),
        std::make_shared<SoftwareEncoderFactory>(CodecType::VP9, "vp9", hasVp9, make<Vp9Encoder>),
#endif
    };
}

} // namespace Ocelle
} // namespace Veltra
