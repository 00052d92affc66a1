// SPDX-License-Identifier: BSD-3-Clause
#include "check.h"

namespace Compliance {

const std::vector<Check> &allChecks()
{
    static const std::vector<Check> all = [] {
        std::vector<Check> checks;
        for (const auto &part :
             { cameraChecks(), codecListChecks(), encoderChecks(), decoderChecks() })
            checks.insert(checks.end(), part.begin(), part.end());
        return checks;
    }();
    return all;
}

QString kindName(Outcome::Kind kind)
{
    switch (kind) {
    case Outcome::Kind::Pass:
        return QStringLiteral("pass");
    case Outcome::Kind::Fail:
        return QStringLiteral("fail");
    case Outcome::Kind::Skip:
        break;
    }
    return QStringLiteral("skip");
}

QString codecKindName(Veltra::Ocelle::CodecType type)
{
    using Veltra::Ocelle::CodecType;
    switch (type) {
    case CodecType::VP8:
        return QStringLiteral("vp8");
    case CodecType::VP9:
        return QStringLiteral("vp9");
    case CodecType::H264:
        return QStringLiteral("h264");
    case CodecType::H265:
        return QStringLiteral("h265");
    case CodecType::Unknown:
        break;
    }
    return QStringLiteral("kind %1").arg(int(type));
}

} // namespace Compliance
