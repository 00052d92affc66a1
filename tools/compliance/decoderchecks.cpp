// SPDX-License-Identifier: BSD-3-Clause
#include "check.h"
#include "codecpromise.h"
#include "decoderrun.h"
#include "session.h"

#include <algorithm>
#include <list>
#include <random>
#include <set>

namespace Compliance {
namespace {

using namespace Veltra::Ocelle;

constexpr int Pictures = 15;

Outcome noDecoder(const DecoderRun &run)
{
    return Outcome::fail(QStringLiteral("it cannot be created and configured") + run.trouble());
}

Outcome noFrame(const DecoderRun &run)
{
    return Outcome::fail(QStringLiteral("it does not take a good stream") + run.trouble());
}

// A decoder that was handed a good stream, which is returned; without one, \a outcome says why.
std::vector<Unit> handOver(Session &session, const Device &device, DecoderRun *run,
                           Outcome *outcome)
{
    QString why;
    std::vector<Unit> units = makeStream(&session, device.type, Pictures, &why);
    if (units.empty())
        *outcome = Outcome::skip(why);
    else if (!run->start())
        *outcome = noDecoder(*run);
    else if (!run->decodeAll(units))
        *outcome = noFrame(*run);
    else
        return units;
    return {};
}

Outcome supported(Session &session, const Device &device)
{
    if (!isPromised(session, device.type, false))
        return Outcome::fail(QStringLiteral("isDecoderSupported() denies it, which is listed"));
    DecoderRun run(&session, device.type);
    if (!run.create())
        return Outcome::fail(QStringLiteral("createVideoDecoder() gives none"));
    if (!run.initialize())
        return Outcome::fail(QStringLiteral("initialize() is false") + run.trouble());
    return Outcome::pass();
}

Outcome drain(Session &session, const Device &device)
{
    DecoderRun run(&session, device.type);
    Outcome outcome;
    const std::vector<Unit> units = handOver(session, device, &run, &outcome);
    if (units.empty())
        return outcome;
    run.drain();
    run.stop(); // at once, as the back end does it
    run.probe().forbid();
    const int count = run.probe().pictures();
    if (count != int(units.size()))
        return Outcome::fail(QStringLiteral("of %1 pictures %2 are out when drain() returns")
                                     .arg(units.size())
                                     .arg(count));
    if (!session.staysQuiet([&] { return run.probe().forbidden() > 0; }))
        return Outcome::fail(QStringLiteral("a callback comes after drain() and stop() returned"));
    return Outcome::pass(QStringLiteral("pictures: %1").arg(count));
}

Outcome flush(Session &session, const Device &device)
{
    DecoderRun run(&session, device.type);
    Outcome outcome;
    const std::vector<Unit> units = handOver(session, device, &run, &outcome);
    if (units.empty())
        return outcome;
    run.flush();
    run.probe().forbid();
    const auto isBroken = [&] { return run.probe().forbidden() > 0; };
    if (!session.staysQuiet(isBroken))
        return Outcome::fail(QStringLiteral("a callback comes after flush() returned"));
    run.stop();
    if (!session.staysQuiet(isBroken))
        return Outcome::fail(QStringLiteral("stop() puts out what flush() should have discarded"));
    return Outcome::pass();
}

Outcome silence(Session &session, const Device &device)
{
    QString why;
    const std::vector<Unit> units = makeStream(&session, device.type, Pictures, &why);
    if (units.empty())
        return Outcome::skip(why);
    DecoderRun run(&session, device.type);
    if (!run.start())
        return noDecoder(run);
    const auto middle = units.begin() + std::ptrdiff_t(units.size() / 2);
    if (!run.decodeAll(std::vector<Unit>(units.begin(), middle)))
        return noFrame(run);
    run.detach();
    run.decodeAll(std::vector<Unit>(middle, units.end()));
    run.drain();
    run.drop();
    if (!session.staysQuiet([&] { return run.probe().forbidden() > 0; }))
        return Outcome::fail(
                QStringLiteral("a callback comes after lockAndSetListener(null) returned"));
    return Outcome::pass();
}

Unit garbage(std::uint64_t timestamp)
{
    constexpr int size = 500; // bytes
    std::minstd_rand random(1);
    Unit unit { std::string(), timestamp, FrameType::Key };
    for (int i = 0; i < size; ++i)
        unit.data.push_back(char(random() % 255 + 1));
    return unit;
}

Outcome release(Session &session, const Device &device)
{
    QString why;
    const std::vector<Unit> units = makeStream(&session, device.type, Pictures, &why);
    if (units.empty())
        return Outcome::skip(why);
    DecoderRun run(&session, device.type);
    if (!run.create())
        return noDecoder(run);
    run.decode(units.front()); // refused, before initialize()
    if (!run.initialize())
        return noDecoder(run);
    if (!run.decodeAll(units))
        return noFrame(run);
    run.decode(garbage(0));
    run.drop();
    const std::vector<Block *> &blocks = run.blocks();
    const auto back = [&] {
        return std::count_if(blocks.begin(), blocks.end(),
                             [](const Block *block) { return block->released > 0; });
    };
    if (!session.waitUntil([&] { return std::size_t(back()) == blocks.size(); },
                           session.patience().wait))
        return Outcome::fail(QStringLiteral("of %1 blocks %2 are given back, once it was dropped")
                                     .arg(blocks.size())
                                     .arg(back()));
    const auto isTwice = [&] {
        return std::any_of(blocks.begin(), blocks.end(),
                           [](const Block *block) { return block->released > 1; });
    };
    if (!session.staysQuiet(isTwice))
        return Outcome::fail(QStringLiteral("a block is given back more than once"));
    return Outcome::pass(QStringLiteral("blocks: %1").arg(blocks.size()));
}

Outcome instances(Session &session, const Device &device)
{
    std::list<DecoderRun> runs;
    const int tried = std::min(device.instances, MostInstances);
    for (int number = 1; number <= tried; ++number) {
        runs.emplace_back(&session, device.type);
        if (!runs.back().start())
            return Outcome::fail(QStringLiteral("of %1 instances number %2 is not to be had")
                                         .arg(device.instances)
                                         .arg(number) +
                                 runs.back().trouble());
    }
    return Outcome::pass(atOnce(tried, device.instances));
}

QString stampProblem(Session &session, CodecType type, const std::vector<Unit> &units)
{
    DecoderRun run(&session, type);
    if (!run.start() || !run.decodeAll(units))
        return QStringLiteral("it does not take a good stream") + run.trouble();
    run.drain();
    const std::vector<SeenPicture> seen = run.probe().seen();
    run.stop();
    std::multiset<std::uint64_t> left;
    for (const Unit &unit : units)
        left.insert(unit.timestamp);
    for (const SeenPicture &picture : seen) {
        const auto found = left.find(std::uint64_t(picture.timestamp));
        if (found == left.end())
            return QStringLiteral("time stamp %1 comes, which no frame had").arg(picture.timestamp);
        left.erase(found);
    }
    return left.empty() ? QString() : QStringLiteral("%1 time stamps do not come").arg(left.size());
}

Outcome timestamps(Session &session, const Device &device)
{
    QString why;
    std::vector<Unit> units = makeStream(&session, device.type, Pictures, &why);
    if (units.empty())
        return Outcome::skip(why);
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i].timestamp = (std::uint64_t(1) << 33) + i * 33333 + i % 3;
    const QString problem = stampProblem(session, device.type, units);
    if (!problem.isEmpty())
        return Outcome::fail(problem);
    for (Unit &unit : units)
        unit.timestamp = ~std::uint64_t(0); // as pictures without a start time have
    const QString noneProblem = stampProblem(session, device.type, units);
    return noneProblem.isEmpty() ? Outcome::pass() : Outcome::fail(noneProblem);
}

QString configurationProblem(Session &session, const Device &device, const Unit &unit)
{
    DecoderRun run(&session, device.type);
    if (!run.create())
        return QStringLiteral("it cannot be created");
    if (run.decode(unit))
        return QStringLiteral("it takes a frame before initialize()");
    DecoderConfig other = run.config();
    other.codecType = CodecType(99);
    return run.initialize(other)
                   ? QStringLiteral("it is configured for a codec of another kind, 99")
                   : QString();
}

// What is wrong with what comes of good frames, of which only those from \a bad until \a key may be
// missing.
QString lossProblem(const std::vector<Unit> &units, std::size_t bad, std::size_t key,
                    const std::vector<SeenPicture> &seen)
{
    std::multiset<std::uint64_t> due;
    std::multiset<std::uint64_t> other;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const bool isDue = i < bad || (i >= key && units[i].timestamp >= units[key].timestamp);
        (isDue ? due : other).insert(units[i].timestamp);
    }
    const std::size_t count = due.size();
    for (const SeenPicture &picture : seen) {
        const auto stamp = std::uint64_t(picture.timestamp);
        const auto found = due.find(stamp);
        if (found != due.end())
            due.erase(found);
        else if (const auto late = other.find(stamp); late != other.end())
            other.erase(late);
        else
            return QStringLiteral("bytes that are no frame give a picture");
    }
    return due.empty() ? QString()
                       : QStringLiteral("after bad input %1 of %2 good pictures do not come")
                                 .arg(due.size())
                                 .arg(count);
}

// What bytes that are no frame do before frame \a bad. Decoding may have to wait for the next key
// frame after them. All other pictures come: those before were taken, and drain() puts them out; the
// key frame needs nothing that was there before, nor do those that follow it in time.
QString harmProblem(Session &session, CodecType type, const std::vector<Unit> &units,
                    std::size_t bad)
{
    const auto from = units.begin() + std::ptrdiff_t(bad);
    const auto key = std::find_if(from, units.end(),
                                  [](const Unit &unit) { return unit.type == FrameType::Key; });
    DecoderRun run(&session, type);
    if (!run.start())
        return QStringLiteral("it cannot be created and configured") + run.trouble();
    if (!run.decodeAll(std::vector<Unit>(units.begin(), from)))
        return QStringLiteral("it does not take a good stream") + run.trouble();
    const int errors = run.probe().errors();
    constexpr std::uint64_t earlier = 1000; // microseconds; no other frame's time
    const bool isTaken = run.decode(garbage(bad > 0 ? from->timestamp - earlier : 0));
    if (isTaken &&
        !session.waitUntil([&] { return run.probe().errors() > errors; }, session.patience().wait))
        return QStringLiteral("bytes that are no frame are neither refused nor told of");
    for (auto unit = from; unit != key; ++unit)
        run.decode(*unit);
    if (!run.decodeAll(std::vector<Unit>(key, units.end())))
        return QStringLiteral("after bad input it takes no good stream") + run.trouble();
    run.drain();
    const std::vector<SeenPicture> seen = run.probe().seen();
    run.stop();
    return lossProblem(units, bad, std::size_t(key - units.begin()), seen);
}

Outcome badInput(Session &session, const Device &device)
{
    constexpr int bad = 4;
    constexpr int key = 8; // among those that leave any encoder
    QString why;
    const std::vector<Unit> units = makeStream(&session, device.type, Pictures, &why, { 0, key });
    if (units.empty())
        return Outcome::skip(why);
    QString problem = configurationProblem(session, device, units.front());
    for (const std::size_t place : { 0, bad }) {
        if (problem.isEmpty())
            problem = harmProblem(session, device.type, units, place);
    }
    return problem.isEmpty() ? Outcome::pass() : Outcome::fail(problem);
}

} // namespace

std::vector<Check> decoderChecks()
{
    constexpr auto kind = Device::Kind::Decoder;
    return {
        { "decoder.supported", "what is listed is also promised, handed out and configured", kind,
          supported },
        { "decoder.drain", "drain() puts out everything before it returns", kind, drain },
        { "decoder.flush", "flush() discards everything that is inside", kind, flush },
        { "decoder.silence", "no callback comes once its listener is gone", kind, silence },
        { "decoder.release", "each block of bytes is given back exactly once", kind, release },
        { "decoder.instances", "as many as listed run at once", kind, instances },
        { "decoder.timestamps", "time stamps stay as they are", kind, timestamps },
        { "decoder.badinput", "bad input is told of and does no lasting harm", kind, badInput },
    };
}

} // namespace Compliance
