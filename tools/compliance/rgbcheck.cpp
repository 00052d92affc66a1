// SPDX-License-Identifier: BSD-3-Clause
#include "rgbcheck.h"

#include "codecpromise.h"
#include "decoderrun.h"
#include "encoderrun.h"
#include "session.h"

#include <algorithm>
#include <set>

namespace Compliance {
namespace {

using namespace Veltra::Ocelle;

constexpr int Pictures = 12;
constexpr int KeyPicture = 6; // out before the last one is handed over

QString handingProblem(EncoderRun *run)
{
    EncoderConfig config = run->config(1000000);
    config.stride = 4 * PictureWidth; // bytes, as the back end says of such pictures
    if (!run->create() || !run->initialize(config))
        return QStringLiteral("it cannot be created and configured") + run->trouble();
    for (int number = 0; number < Pictures; ++number) {
        if (run->encodeRgb(std::uint32_t(number), stampOf(number),
                           number == 0 || number == KeyPicture))
            continue;
        const QString problem = run->taken() == number
                                        ? QStringLiteral("encodeRGB() refuses picture %1")
                                        : QStringLiteral("given picture %1, no more come out");
        return problem.arg(number) + run->trouble();
    }
    return {};
}

QString unitProblem(const std::vector<Unit> &units)
{
    std::set<std::uint64_t> due;
    for (int number = 0; number < Pictures; ++number)
        due.insert(std::uint64_t(stampOf(number)));
    for (const Unit &unit : units) {
        if (due.erase(unit.timestamp) == 0)
            return QStringLiteral("time stamp %1 comes, which no picture had").arg(unit.timestamp);
    }
    for (const int number : { 0, KeyPicture }) {
        const auto isIt = [&](const Unit &unit) {
            return unit.timestamp == std::uint64_t(stampOf(number)) && unit.type == FrameType::Key;
        };
        if (std::none_of(units.begin(), units.end(), isIt))
            return QStringLiteral("picture %1 does not come as the key frame that was wanted")
                    .arg(number);
    }
    return {};
}

QString pictureProblem(Session &session, CodecType type, const std::vector<Unit> &units)
{
    DecoderRun run(&session, type);
    if (!run.start() || !run.decodeAll(units))
        return QStringLiteral("its decoder does not take its stream") + run.trouble();
    run.drain();
    const std::vector<SeenPicture> seen = run.probe().seen();
    run.stop();
    const QString problem = numberProblem(seen);
    if (!problem.isEmpty())
        return problem;
    if (seen.size() != units.size())
        return QStringLiteral("of %1 encoded pictures %2 are decoded")
                .arg(units.size())
                .arg(seen.size());
    return colourProblem(seen);
}

} // namespace

Outcome checkRgb(Session &session, const Device &device)
{
    EncoderRun run(&session, device.type);
    QString problem = handingProblem(&run);
    if (!problem.isEmpty())
        return Outcome::fail(problem);
    session.waitUntil([&] { return run.probe().unitCount() >= Pictures; },
                      session.patience().quiet);
    const std::vector<Unit> units = run.probe().units();
    problem = unitProblem(units);
    if (!problem.isEmpty())
        return Outcome::fail(problem);
    problem = run.keepingProblem();
    if (!problem.isEmpty())
        return Outcome::fail(problem);
    const QString seen = QStringLiteral("pictures: %1").arg(units.size());
    if (!isListed(session, device.type, false))
        return Outcome::pass(seen + QStringLiteral(", whose colours no decoder shows"));
    problem = pictureProblem(session, device.type, units);
    return problem.isEmpty() ? Outcome::pass(seen) : Outcome::fail(problem);
}

} // namespace Compliance
