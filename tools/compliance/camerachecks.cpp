// SPDX-License-Identifier: BSD-3-Clause
#include "cameraprobe.h"
#include "check.h"
#include "discovery.h"
#include "hotplugprobe.h"
#include "session.h"
#include "settingtrial.h"

#include <QStringList>

#include <algorithm>
#include <set>

namespace Compliance {
namespace {

using namespace Veltra::Ocelle;

constexpr int Listings = 5;
constexpr int Restarts = 20;
constexpr int SilenceRounds = 5;

QString text(const std::string &bytes)
{
    return QString::fromStdString(bytes);
}

Outcome listing(Session &session, const Device &)
{
    CameraManager *const manager = OcelleManager();
    if (manager != OcelleManager())
        return Outcome::fail(QStringLiteral("OcelleManager() gives another manager each time"));
    const std::vector<std::string> first = cameraIds(session);
    if (std::set<std::string>(first.begin(), first.end()).size() != first.size())
        return Outcome::fail(QStringLiteral("two cameras have the same id"));
    if (std::find(first.begin(), first.end(), std::string()) != first.end())
        return Outcome::fail(QStringLiteral("a camera has an empty id"));
    for (int turn = 1; turn < Listings; ++turn) {
        if (cameraIds(session) != first)
            return Outcome::fail(QStringLiteral("listed once more, ids or order are different"));
    }
    CameraInfo info {};
    const int count = session.call(QStringLiteral("getNumberOfCameras()"),
                                   [&] { return manager->getNumberOfCameras(); });
    for (int index = 0; index < count; ++index) {
        if (!session.call(QStringLiteral("getCameraInfo()"),
                          [&] { return manager->getCameraInfo(index, info); }))
            return Outcome::fail(
                    QStringLiteral("there is no information on camera number %1 of %2, "
                                   "counted from 0")
                            .arg(index)
                            .arg(count));
    }
    if (session.call(QStringLiteral("getCameraInfo(count)"),
                     [&] { return manager->getCameraInfo(count, info); }))
        return Outcome::fail(QStringLiteral("there is information on camera number %1 of %1, "
                                            "counted from 0")
                                     .arg(count));
    return Outcome::pass(QStringLiteral("cameras: %1").arg(first.size()));
}

Outcome unknownId(Session &session, const Device &)
{
    CameraManager *const manager = OcelleManager();
    for (const std::string &id : { std::string("no-such-camera"), std::string() }) {
        auto camera = session.call(QStringLiteral("openCamera()"),
                                   [&] { return manager->openCamera(id); });
        if (camera)
            return Outcome::fail(
                    QStringLiteral("a camera is opened by the id \"%1\", which none has")
                            .arg(text(id)));
    }
    CameraInfo info {};
    info.id = "no-such-camera";
    std::vector<CameraCapability> capabilities;
    if (session.call(QStringLiteral("getCameraCapabilities()"),
                     [&] { return manager->getCameraCapabilities(info, capabilities); }) &&
        !capabilities.empty())
        return Outcome::fail(QStringLiteral("settings are listed for an id that no camera has"));
    return Outcome::pass();
}

Outcome openAndClose(Session &session, const Device &device)
{
    for (int turn = 0; turn < 2; ++turn) {
        const QString when = turn == 0 ? QString() : QStringLiteral(", once it was closed");
        CameraRun run(&session, device.id);
        if (!run.open())
            return Outcome::fail(QStringLiteral("openCamera() gives no camera") + when);
        CameraInfo info {};
        const bool isFilled = session.call(QStringLiteral("Camera::getInfo()"),
                                           [&] { return run.camera().getInfo(info); });
        if (!isFilled || info.id != device.id)
            return Outcome::fail(QStringLiteral("the opened camera tells another id, \"%1\"")
                                         .arg(text(info.id)));
        const auto formats = session.call(QStringLiteral("getSupportedPixelFormats()"),
                                          [&] { return run.camera().getSupportedPixelFormats(); });
        if (formats.empty())
            return Outcome::fail(QStringLiteral("it lists no pixel format"));
        if (run.isStarted())
            return Outcome::fail(QStringLiteral("captureStarted() is true before startCapture()"));
    }
    return Outcome::pass();
}

Outcome settings(Session &session, const Device &device)
{
    const std::vector<CameraCapability> listed = capabilitiesOf(&session, device.id);
    if (listed.empty())
        return Outcome::fail(QStringLiteral("it lists no size and rate"));
    QStringList failures;
    for (const CameraCapability &capability : listed) {
        const QString failure = tryCapability(&session, device.id, capability);
        if (!failure.isEmpty())
            failures.append(describe(capability) + QStringLiteral(": ") + failure);
    }
    if (!failures.isEmpty())
        return Outcome::fail(failures.join(QStringLiteral("; ")));
    return Outcome::pass(QStringLiteral("settings: %1").arg(listed.size()));
}

Outcome restart(Session &session, const Device &device)
{
    const std::vector<CameraCapability> listed = capabilitiesOf(&session, device.id);
    CameraRun run(&session, device.id);
    if (listed.empty() || !run.open())
        return Outcome::fail(QStringLiteral("it lists no setting or does not open"));
    for (int turn = 1; turn <= Restarts; ++turn) {
        const QString when = QStringLiteral("at start %1 of %2 ").arg(turn).arg(Restarts);
        if (!run.start(listed.front()))
            return Outcome::fail(when + QStringLiteral("startCapture() is false") + run.trouble());
        if (!run.isStarted())
            return Outcome::fail(when + QStringLiteral("captureStarted() is false"));
        if (!run.waitForPictures(1))
            return Outcome::fail(when + QStringLiteral("no picture comes") + run.trouble());
        run.stop();
        if (run.isStarted())
            return Outcome::fail(when + QStringLiteral("captureStarted() is true once stopped"));
    }
    return Outcome::pass(QStringLiteral("starts: %1").arg(Restarts));
}

Outcome silence(Session &session, const Device &device)
{
    const std::vector<CameraCapability> listed = capabilitiesOf(&session, device.id);
    CameraRun run(&session, device.id);
    if (listed.empty() || !run.open())
        return Outcome::fail(QStringLiteral("it lists no setting or does not open"));
    const auto isBroken = [&] { return run.probe().forbidden() > 0; };
    for (int turn = 0; turn < SilenceRounds; ++turn) {
        if (!run.start(listed.front()) || !run.waitForPictures(2))
            return Outcome::fail(QStringLiteral("it does not deliver") + run.trouble());
        run.stop();
        if (!session.staysQuiet(isBroken))
            return Outcome::fail(QStringLiteral("a callback comes after stopCapture() returned"));
    }
    if (!run.start(listed.front()) || !run.waitForPictures(2))
        return Outcome::fail(QStringLiteral("it does not deliver") + run.trouble());
    run.detach();
    if (!session.staysQuiet(isBroken))
        return Outcome::fail(QStringLiteral("a callback comes after setListener(null) returned"));
    return Outcome::pass(QStringLiteral("stops: %1").arg(SilenceRounds));
}

Outcome second(Session &session, const Device &device)
{
    const std::vector<std::string> ids = cameraIds(session);
    const auto other = std::find_if(ids.begin(), ids.end(),
                                    [&](const std::string &id) { return id != device.id; });
    if (other == ids.end())
        return Outcome::skip(QStringLiteral("there is no second camera"));
    const auto own = capabilitiesOf(&session, device.id);
    const auto others = capabilitiesOf(&session, *other);
    CameraRun first(&session, device.id);
    CameraRun beside(&session, *other);
    if (own.empty() || !first.open() || !first.start(own.front()) || !first.waitForPictures(1))
        return Outcome::fail(QStringLiteral("it does not deliver alone") + first.trouble());
    const bool isBeside = !others.empty() && beside.open() && beside.start(others.front());
    if (isBeside && !beside.waitForPictures(2))
        return Outcome::fail(
                QStringLiteral("%1 starts beside it and delivers nothing").arg(text(*other)));
    const int before = first.probe().pictures();
    if (!first.waitForPictures(before + 2))
        return Outcome::fail(
                QStringLiteral("it delivers no more once %1 was opened").arg(text(*other)));
    if (!isBeside)
        return Outcome::skip(QStringLiteral("%1 is refused beside it").arg(text(*other)));
    beside.stop();
    if (!first.waitForPictures(first.probe().pictures() + 2))
        return Outcome::fail(
                QStringLiteral("it delivers no more once %1 was stopped").arg(text(*other)));
    return Outcome::pass(QStringLiteral("beside %1").arg(text(*other)));
}

} // namespace

std::vector<Check> cameraChecks()
{
    using Kind = Device::Kind;
    return {
        { "cameras.listing", "cameras are listed with ids of their own that stay the same",
          Kind::Cameras, listing },
        { "cameras.unknown", "an id that no camera has opens nothing", Kind::Cameras, unknownId },
        { "cameras.hotplug", "cameras that come and go are told of, and listed so", Kind::Cameras,
          hotPlug },
        { "camera.open", "it opens, tells what it is, closes and opens again", Kind::Camera,
          openAndClose },
        { "camera.settings", "each listed setting delivers pictures of its size and rate",
          Kind::Camera, settings },
        { "camera.restart", "it starts and stops 20 times", Kind::Camera, restart },
        { "camera.silence", "no callback comes once it is stopped or its listener is gone",
          Kind::Camera, silence },
        { "camera.second", "a second camera runs beside it", Kind::Camera, second },
    };
}

} // namespace Compliance
