// SPDX-License-Identifier: BSD-3-Clause
#include "codecpromise.h"

#include "session.h"

#include <algorithm>

namespace Compliance {

using namespace Veltra::Ocelle;

bool isPromised(Session &session, CodecType type, bool encoder)
{
    CodecManager *const manager = OcelleCodecManager();
    const auto ask = [&](bool flag) {
        return encoder ? manager->isEncoderSupported(type, flag)
                       : manager->isDecoderSupported(type, flag);
    };
    const QString name = encoder ? QStringLiteral("isEncoderSupported()")
                                 : QStringLiteral("isDecoderSupported()");
    return session.call(name, [&] { return ask(false); }) ||
           session.call(name, [&] { return ask(true); });
}

bool isListed(Session &session, CodecType type, bool encoder)
{
    CodecManager *const manager = OcelleCodecManager();
    const auto codecs = session.call(QStringLiteral("getVideoCodecs()"),
                                     [&] { return manager->getVideoCodecs(); });
    return std::any_of(codecs.begin(), codecs.end(), [&](const VideoCodecInfo &codec) {
        return codec.type == type && codec.isEncoder == encoder;
    });
}

QString atOnce(int tried, int listed)
{
    return tried < listed ? QStringLiteral("at once: %1 of %2 tried").arg(tried).arg(listed)
                          : QStringLiteral("at once: %1").arg(tried);
}

} // namespace Compliance
