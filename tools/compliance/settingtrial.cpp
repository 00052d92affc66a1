// SPDX-License-Identifier: BSD-3-Clause
#include "settingtrial.h"

#include "cameraprobe.h"
#include "session.h"

#include <algorithm>
#include <cmath>

namespace Compliance {
namespace {

using namespace Veltra::Ocelle;

constexpr int FewestPictures = 8; // to tell a rate from
constexpr int Attempts = 3;       // each twice as long as the one before
constexpr double Tolerance = 0.2; // of the rate

// Pictures per second from now on; 0 where too few come.
double measuredRate(Session *session, CameraRun *run, int pictures, unsigned rate)
{
    const int first = run->probe().pictures();
    const int limit = session->patience().wait + 2000 * pictures / int(rate); // ms
    if (!session->waitUntil([&] { return run->probe().pictures() > first + pictures; }, limit))
        return 0;
    const auto arrivals = run->probe().arrivals();
    const auto from = arrivals[std::size_t(first)];
    const std::chrono::duration<double> time = arrivals.back() - from;
    return double(arrivals.size() - 1 - std::size_t(first)) / time.count();
}

QString rateProblem(Session *session, CameraRun *run, unsigned rate)
{
    const double window = session->patience().window / 1000.0;
    double measured = 0;
    for (int attempt = 0; attempt < Attempts; ++attempt) {
        const double longer = std::exp2(attempt);
        const int pictures = std::max(FewestPictures, int(rate * window)) * int(longer);
        measured = measuredRate(session, run, pictures, rate);
        if (std::abs(measured - rate) <= Tolerance * rate)
            return {};
    }
    return QStringLiteral("comes at %1/s").arg(measured, 0, 'f', 1) + run->trouble();
}

QString sizeProblem(Session *session, CameraRun *run, const CameraCapability &capability)
{
    PictureViewer &viewer = session->viewer();
    viewer.clear();
    run->probe().showNext();
    if (!session->waitUntil([&] { return viewer.count() > 0; }, session->patience().wait))
        return QStringLiteral("its picture is not shown");
    const QSize size = viewer.seen().front().size;
    if (size == QSize(capability.width, capability.height))
        return {};
    return QStringLiteral("is %1x%2").arg(size.width()).arg(size.height());
}

} // namespace

QString tryCapability(Session *session, const std::string &id, const CameraCapability &capability)
{
    if (capability.width <= 0 || capability.height <= 0 || capability.frameRate == 0)
        return QStringLiteral("is no setting");
    CameraRun run(session, id);
    if (!run.open())
        return QStringLiteral("does not open");
    if (!run.start(capability))
        return QStringLiteral("does not start") + run.trouble();
    if (!run.waitForPictures(1))
        return QStringLiteral("delivers nothing") + run.trouble();
    const QString problem = sizeProblem(session, &run, capability);
    return problem.isEmpty() ? rateProblem(session, &run, capability.frameRate) : problem;
}

} // namespace Compliance
