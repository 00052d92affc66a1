// SPDX-License-Identifier: BSD-3-Clause
#include "check.h"
#include "codecpromise.h"
#include "decoderrun.h"
#include "encoderrun.h"
#include "rgbcheck.h"
#include "session.h"

#include <algorithm>
#include <list>
#include <set>

namespace Compliance {
namespace {

using namespace Veltra::Ocelle;

constexpr int MostInside = EncoderRun::MostInside;
constexpr int FewPictures = 12;
constexpr int RoundPictures = 30;

Outcome noEncoder(const EncoderRun &run)
{
    return Outcome::fail(QStringLiteral("it cannot be created and configured") + run.trouble());
}

Outcome noPicture(const EncoderRun &run, int number)
{
    return Outcome::fail(QStringLiteral("it does not encode picture %1").arg(number) +
                         run.trouble());
}

Outcome supported(Session &session, const Device &device)
{
    if (!isPromised(session, device.type, true))
        return Outcome::fail(QStringLiteral("isEncoderSupported() denies it, which is listed"));
    EncoderRun run(&session, device.type);
    if (!run.create())
        return Outcome::fail(QStringLiteral("createVideoEncoder() gives none"));
    if (!run.initialize())
        return Outcome::fail(QStringLiteral("initialize() is false") + run.trouble());
    return Outcome::pass();
}

Outcome roundTrip(Session &session, const Device &device)
{
    if (!isListed(session, device.type, false))
        return Outcome::skip(QStringLiteral("the platform has no decoder to read it with"));
    QString why;
    const std::vector<Unit> units = makeStream(&session, device.type, RoundPictures, &why);
    if (units.empty())
        return Outcome::fail(why);
    DecoderRun run(&session, device.type);
    if (!run.start() || !run.decodeAll(units))
        return Outcome::fail(QStringLiteral("its decoder does not take its stream") +
                             run.trouble());
    run.drain();
    const std::vector<SeenPicture> seen = run.probe().seen();
    run.stop();
    const QString problem = numberProblem(seen);
    if (!problem.isEmpty())
        return Outcome::fail(problem);
    if (seen.size() != units.size())
        return Outcome::fail(QStringLiteral("of %1 encoded pictures %2 are decoded")
                                     .arg(units.size())
                                     .arg(seen.size()));
    return Outcome::pass(QStringLiteral("pictures: %1").arg(seen.size()));
}

// Whether a decoder can begin there; true where there is none to try.
bool isEntry(Session &session, CodecType type, const std::vector<Unit> &units, std::uint64_t stamp)
{
    const auto from = std::find_if(units.begin(), units.end(),
                                   [&](const Unit &unit) { return unit.timestamp == stamp; });
    DecoderRun run(&session, type);
    if (!isListed(session, type, false) || !run.start())
        return true;
    run.decodeAll(std::vector<Unit>(from, units.end()));
    run.drain();
    const std::vector<SeenPicture> seen = run.probe().seen();
    run.stop();
    return !seen.empty() && std::uint64_t(seen.front().timestamp) == stamp;
}

Outcome keyFrames(Session &session, const Device &device)
{
    const std::set<int> wanted { 0, 9, 14 };
    EncoderRun run(&session, device.type);
    if (!run.create() || !run.initialize())
        return noEncoder(run);
    constexpr int pictures = 22; // all wanted ones are out then
    for (int number = 0; number < pictures; ++number) {
        if (!run.encode(std::uint32_t(number), stampOf(number), wanted.count(number) > 0))
            return noPicture(run, number);
    }
    const std::vector<Unit> units = run.probe().units();
    const auto isDelta = [](const Unit &unit) { return unit.type != FrameType::Key; };
    if (std::none_of(units.begin(), units.end(), isDelta))
        return Outcome::fail(QStringLiteral("every picture comes as a key frame"));
    for (const int number : wanted) {
        const auto stamp = std::uint64_t(stampOf(number));
        const auto isIt = [&](const Unit &unit) {
            return unit.timestamp == stamp && unit.type == FrameType::Key;
        };
        if (std::none_of(units.begin(), units.end(), isIt))
            return Outcome::fail(
                    QStringLiteral("picture %1 does not come as the key frame that was wanted")
                            .arg(number));
        if (!isEntry(session, device.type, units, stamp))
            return Outcome::fail(
                    QStringLiteral("no decoder can begin with the key frame of picture %1")
                            .arg(number));
    }
    return Outcome::pass(QStringLiteral("requests: %1").arg(wanted.size()));
}

// Bytes per picture at the end of a number of noisy ones; 0 where they are not encoded.
double bytesPerPicture(EncoderRun *run, int from, int pictures)
{
    constexpr int settling = 25;
    for (int i = 0; i < pictures; ++i) {
        if (!run->encode(std::uint32_t(from + i), stampOf(from + i), from + i == 0, true))
            return 0;
    }
    double bytes = 0;
    int count = 0;
    for (const Unit &unit : run->probe().units()) {
        if (unit.timestamp < std::uint64_t(stampOf(from + settling)))
            continue;
        bytes += double(unit.data.size());
        ++count;
    }
    return count > 0 ? bytes / count : 0;
}

Outcome bitRate(Session &session, const Device &device)
{
    constexpr int high = 2000000; // bits per second
    constexpr int low = 500000;
    constexpr int pictures = 45;
    constexpr double clearly = 1.5; // times as many bytes; four times would be exact
    EncoderRun run(&session, device.type);
    if (!run.create() || !run.initialize(high))
        return noEncoder(run);
    double bytes[3] = {};
    for (int phase = 0; phase < 3; ++phase) {
        if (phase > 0)
            run.setBitrate(phase == 1 ? low : high);
        bytes[phase] = bytesPerPicture(&run, phase * pictures, pictures);
        if (bytes[phase] <= 0)
            return noPicture(run, phase * pictures);
    }
    const QString seen = QStringLiteral("kbit/s at 2000, 500 and 2000: %1, %2 and %3")
                                 .arg(bytes[0] * PictureRate * 8 / 1000, 0, 'f', 0)
                                 .arg(bytes[1] * PictureRate * 8 / 1000, 0, 'f', 0)
                                 .arg(bytes[2] * PictureRate * 8 / 1000, 0, 'f', 0);
    if (bytes[0] < clearly * bytes[1] || bytes[2] < clearly * bytes[1])
        return Outcome::fail(QStringLiteral("it does not follow; ") + seen);
    return Outcome::pass(seen);
}

// What a decoder sees of a stream that was encoded with one parameter set; empty where that fails.
std::vector<SeenPicture> seenWith(Session &session, CodecType type, VideoEncoderParameter parameter,
                                  const std::string &value)
{
    EncoderRun run(&session, type);
    if (!run.create())
        return {};
    run.setParameter(parameter, value);
    if (!run.initialize())
        return {};
    for (int number = 0; number < FewPictures; ++number) {
        if (!run.encode(std::uint32_t(number), stampOf(number), number == 0))
            return {};
    }
    DecoderRun decoder(&session, type);
    if (!decoder.start() || !decoder.decodeAll(run.probe().units()))
        return {};
    decoder.drain();
    const auto seen = decoder.probe().seen();
    decoder.stop();
    return seen;
}

bool areTurned(const std::vector<SeenPicture> &seen, const QSize &size, bool mirrored, int rotation)
{
    const auto is = [&](const SeenPicture &picture) {
        return picture.size == size && picture.reading && picture.reading->mirrored == mirrored &&
               picture.reading->rotation == rotation;
    };
    return !seen.empty() && std::all_of(seen.begin(), seen.end(), is);
}

Outcome parameters(Session &session, const Device &device)
{
    if (!isListed(session, device.type, false))
        return Outcome::skip(QStringLiteral("the platform has no decoder to read it with"));
    const QSize upright(PictureWidth, PictureHeight);
    const auto rotation = VideoEncoderParameter::RotationParameter;
    if (!areTurned(seenWith(session, device.type, rotation, "90"), upright.transposed(), false, 90))
        return Outcome::fail(
                QStringLiteral("with rotation 90 the pictures are not turned clockwise"));
    if (!areTurned(seenWith(session, device.type, rotation, "180"), upright, false, 180))
        return Outcome::fail(QStringLiteral("with rotation 180 the pictures are not upside down"));
    // Top to bottom is the same as left to right and turned by half.
    if (!areTurned(seenWith(session, device.type, VideoEncoderParameter::MirrorVerticalParameter,
                            "true"),
                   upright, true, 180))
        return Outcome::fail(QStringLiteral("with mirroring the pictures are not top to bottom"));
    for (const char *mode : { "constant", "variable" }) {
        if (!areTurned(seenWith(session, device.type, VideoEncoderParameter::BitrateModeParameter,
                                mode),
                       upright, false, 0))
            return Outcome::fail(
                    QStringLiteral("with bit rate mode %1 the pictures do not come back")
                            .arg(QLatin1String(mode)));
    }
    return Outcome::pass();
}

Outcome silence(Session &session, const Device &device)
{
    EncoderRun run(&session, device.type);
    if (!run.create() || !run.initialize())
        return noEncoder(run);
    const auto ignored = std::make_shared<PictureCount>();
    for (int number = 0; number < FewPictures; ++number) {
        if (!run.encode(std::uint32_t(number), stampOf(number), number == 0))
            return noPicture(run, number);
    }
    const auto isBroken = [&] { return run.probe().forbidden() > 0; };
    run.detach();
    for (int number = FewPictures; number < 2 * FewPictures; ++number)
        run.encode(makePicture(std::uint32_t(number), stampOf(number), ignored));
    if (!session.staysQuiet(isBroken))
        return Outcome::fail(
                QStringLiteral("a callback comes after lockAndSetListener(null) returned"));
    run.drop();
    if (!session.staysQuiet(isBroken))
        return Outcome::fail(QStringLiteral("a callback comes after it was dropped"));
    return Outcome::pass();
}

Outcome release(Session &session, const Device &device)
{
    EncoderRun run(&session, device.type);
    if (!run.create() || !run.initialize())
        return noEncoder(run);
    for (int number = 0; number < FewPictures; ++number) {
        if (!run.encode(std::uint32_t(number), stampOf(number), number == 0))
            return noPicture(run, number);
    }
    const QString problem = run.keepingProblem();
    if (!problem.isEmpty())
        return Outcome::fail(problem);
    return Outcome::pass(QStringLiteral("pictures: %1").arg(run.pictures().made));
}

Outcome instances(Session &session, const Device &device)
{
    std::list<EncoderRun> runs;
    const int tried = std::min(device.instances, MostInstances);
    for (int number = 1; number <= tried; ++number) {
        runs.emplace_back(&session, device.type);
        EncoderRun &run = runs.back();
        if (!run.create() || !run.initialize() || !run.encode(0, 0, true))
            return Outcome::fail(QStringLiteral("of %1 instances number %2 is not to be had")
                                         .arg(device.instances)
                                         .arg(number) +
                                 run.trouble());
    }
    return Outcome::pass(atOnce(tried, device.instances));
}

QString stampProblem(EncoderRun *run, const std::vector<std::int64_t> &stamps)
{
    for (std::size_t i = 0; i < stamps.size(); ++i) {
        if (!run->encode(std::uint32_t(i), stamps[i], i == 0))
            return QStringLiteral("it does not encode picture %1").arg(i) + run->trouble();
    }
    std::multiset<std::uint64_t> left;
    for (const std::int64_t stamp : stamps)
        left.insert(std::uint64_t(stamp));
    for (const Unit &unit : run->probe().units()) {
        const auto found = left.find(unit.timestamp);
        if (found == left.end())
            return QStringLiteral("time stamp %1 comes, which no picture had").arg(unit.timestamp);
        left.erase(found);
    }
    return left.size() > MostInside ? QStringLiteral("%1 time stamps do not come").arg(left.size())
                                    : QString();
}

Outcome timestamps(Session &session, const Device &device)
{
    std::vector<std::int64_t> large;
    for (int i = 0; i < FewPictures; ++i)
        large.push_back((std::int64_t(1) << 33) + i * 33333 + i % 3);
    const std::vector<std::int64_t> none(FewPictures, -1); // as pictures without a start time have
    for (const auto &stamps : { large, none }) {
        EncoderRun run(&session, device.type);
        if (!run.create() || !run.initialize())
            return noEncoder(run);
        const QString problem = stampProblem(&run, stamps);
        if (!problem.isEmpty())
            return Outcome::fail(problem);
    }
    return Outcome::pass();
}

QString configurationProblem(Session &session, CodecType type)
{
    EncoderRun run(&session, type);
    if (!run.create())
        return QStringLiteral("it cannot be created");
    const auto ignored = std::make_shared<PictureCount>();
    if (run.encode(makePicture(0, 0, ignored)))
        return QStringLiteral("it takes a picture before initialize()");
    EncoderConfig empty = run.config(1000000);
    empty.width = 0;
    empty.height = 0;
    EncoderConfig other = run.config(1000000);
    other.codecType = 99;
    if (run.initialize(empty))
        return QStringLiteral("it is configured for pictures of 0x0");
    if (run.initialize(other))
        return QStringLiteral("it is configured for a codec of another kind, 99");
    return {};
}

Outcome badInput(Session &session, const Device &device)
{
    const QString problem = configurationProblem(session, device.type);
    if (!problem.isEmpty())
        return Outcome::fail(problem);
    EncoderRun run(&session, device.type);
    if (!run.create() || !run.initialize() || !run.encode(0, 0, true))
        return noEncoder(run);
    const auto ignored = std::make_shared<PictureCount>();
    const auto empty = makePicture(1, stampOf(1), ignored);
    empty->width = 0;
    empty->height = 0;
    if (run.encode(empty))
        return Outcome::fail(QStringLiteral("it takes a picture of 0x0"));
    run.setParameter(VideoEncoderParameter::RotationParameter, "up");
    run.setParameter(VideoEncoderParameter::MirrorVerticalParameter, "perhaps");
    run.setBitrate(0);
    run.setBitrate(-1);
    for (int number = 2; number < FewPictures; ++number) {
        if (!run.encode(std::uint32_t(number), stampOf(number)))
            return Outcome::fail(QStringLiteral("after bad input it encodes no good picture") +
                                 run.trouble());
    }
    return Outcome::pass();
}

} // namespace

std::vector<Check> encoderChecks()
{
    constexpr auto kind = Device::Kind::Encoder;
    return {
        { "encoder.supported", "what is listed is also promised, handed out and configured", kind,
          supported },
        { "encoder.roundtrip", "numbered pictures are decoded in order, none missing", kind,
          roundTrip },
        { "encoder.rgb", "RGB pictures are encoded in their colours", kind, checkRgb },
        { "encoder.keyframe", "a key frame comes where it was requested", kind, keyFrames },
        { "encoder.bitrate", "a change of the bit rate is followed", kind, bitRate },
        { "encoder.parameters", "rotation, mirroring and bit rate modes do what they say", kind,
          parameters },
        { "encoder.silence", "no callback comes once its listener is gone", kind, silence },
        { "encoder.release", "no picture is kept once it is dropped", kind, release },
        { "encoder.instances", "as many as listed run at once", kind, instances },
        { "encoder.timestamps", "time stamps stay as they are", kind, timestamps },
        { "encoder.badinput", "bad input is refused and does no lasting harm", kind, badInput },
    };
}

} // namespace Compliance
