// SPDX-License-Identifier: BSD-3-Clause
#include "check.h"
#include "codecpromise.h"
#include "session.h"

#include <ocelle/codecmanager.h>
#include <ocelle/videodecoder.h>
#include <ocelle/videoencoder.h>

#include <algorithm>
#include <set>

namespace Compliance {
namespace {

using namespace Veltra::Ocelle;

constexpr int Listings = 3;

std::vector<VideoCodecInfo> listed(Session &session)
{
    CodecManager *const manager = OcelleCodecManager();
    return session.call(QStringLiteral("getVideoCodecs()"),
                        [&] { return manager->getVideoCodecs(); });
}

bool isSame(const VideoCodecInfo &one, const VideoCodecInfo &other)
{
    return one.type == other.type && one.isEncoder == other.isEncoder &&
           one.codecName == other.codecName && one.maxInstances == other.maxInstances &&
           one.isHardwareAccelerated == other.isHardwareAccelerated;
}

Outcome listing(Session &session, const Device &)
{
    CodecManager *const manager = OcelleCodecManager();
    const std::vector<VideoCodecInfo> first = listed(session);
    std::set<std::pair<bool, std::string>> names;
    for (const VideoCodecInfo &codec : first) {
        const QString name = QString::fromStdString(codec.codecName);
        if (name.isEmpty())
            return Outcome::fail(QStringLiteral("a codec has no name"));
        if (!names.insert({ codec.isEncoder, codec.codecName }).second)
            return Outcome::fail(QStringLiteral("%1 is listed twice").arg(name));
        if (codec.maxInstances < 1)
            return Outcome::fail(QStringLiteral("%1 is to be had %2 times")
                                         .arg(name, QString::number(codec.maxInstances)));
    }
    for (int turn = 1; turn < Listings; ++turn) {
        session.call(QStringLiteral("prepare()"), [&] { return manager->prepare(); });
        const std::vector<VideoCodecInfo> again = listed(session);
        if (!std::equal(first.begin(), first.end(), again.begin(), again.end(), isSame))
            return Outcome::fail(QStringLiteral("after prepare() other codecs are listed"));
    }
    return Outcome::pass(QStringLiteral("codecs: %1").arg(first.size()));
}

// One kind that is not listed: nobody may promise or hand out what nobody lists.
QString problemWith(Session &session, CodecType type, bool encoder)
{
    CodecManager *const manager = OcelleCodecManager();
    const QString what =
            (encoder ? QStringLiteral("an encoder of ") : QStringLiteral("a decoder of ")) +
            codecKindName(type) + QStringLiteral(", which is not listed, is ");
    if (isPromised(session, type, encoder))
        return what + QStringLiteral("said to be supported");
    const bool isGiven = session.call(QStringLiteral("createVideo…()"), [&] {
        return encoder ? bool(manager->createVideoEncoder(type, 0))
                       : bool(manager->createVideoDecoder(type, 0));
    });
    return isGiven ? what + QStringLiteral("handed out") : QString();
}

Outcome others(Session &session, const Device &)
{
    constexpr CodecType unknown[] = { CodecType::VP8,  CodecType::VP9,     CodecType::H264,
                                      CodecType::H265, CodecType::Unknown, CodecType(99) };
    int asked = 0;
    for (const CodecType type : unknown) {
        for (const bool encoder : { true, false }) {
            if (isListed(session, type, encoder))
                continue;
            ++asked;
            const QString problem = problemWith(session, type, encoder);
            if (!problem.isEmpty())
                return Outcome::fail(problem);
        }
    }
    return Outcome::pass(QStringLiteral("kinds: %1").arg(asked));
}

} // namespace

std::vector<Check> codecListChecks()
{
    return {
        { "codecs.listing", "codecs are listed with names of their own that stay the same",
          Device::Kind::Codecs, listing },
        { "codecs.others", "what is not listed is neither promised nor handed out",
          Device::Kind::Codecs, others },
    };
}

} // namespace Compliance
