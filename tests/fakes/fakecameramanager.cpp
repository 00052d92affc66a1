// SPDX-License-Identifier: BSD-3-Clause
#include "fakecameramanager.h"

#include "calllog.h"
#include "fakecamera.h"

#include <QString>

#include <algorithm>

using namespace Veltra::Ocelle;

namespace {

void log(const QString &what)
{
    CallLog::instance().add(QStringLiteral("manager"), what);
}

} // namespace

int FakeCameraManager::getNumberOfCameras()
{
    log(QStringLiteral("getNumberOfCameras()"));
    std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(m_cameras.size());
}

bool FakeCameraManager::getCameraInfo(int index, CameraInfo &info)
{
    const bool empty = info.id.empty() && info.name.empty() && info.extra1.empty() &&
                       info.extra2.empty() && info.facing == CameraFacing() && info.mountAngle == 0;
    log((empty ? QStringLiteral("getCameraInfo(%1)")
               : QStringLiteral("getCameraInfo(%1, not empty)"))
                .arg(index));
    std::lock_guard<std::mutex> lock(m_mutex);
    if (index < 0 || index >= static_cast<int>(m_cameras.size()))
        return false;
    const Script &script = m_cameras[static_cast<std::size_t>(index)];
    info = script->info(); // a failing answer leaves its traces in the record
    return !script->listInfoFails;
}

bool FakeCameraManager::getCameraCapabilities(const CameraInfo &info,
                                              std::vector<CameraCapability> &caps)
{
    log(QStringLiteral("getCameraCapabilities(%1%2)")
                .arg(QString::fromStdString(info.id),
                     caps.empty() ? QString() : QStringLiteral(", not empty")));
    const Script script = find(info.id);
    if (!script)
        return false;
    caps = script->capabilities(); // here too
    return !script->capabilitiesFail;
}

std::shared_ptr<Camera> FakeCameraManager::openCamera(const std::string &id)
{
    log(QStringLiteral("openCamera(%1)").arg(QString::fromStdString(id)));
    const Script script = find(id);
    if (!script)
        return nullptr;
    script->openGate.pass();
    if (script->openFails)
        return nullptr;
    auto camera = std::make_shared<FakeCamera>(script);
    std::lock_guard<std::mutex> lock(m_mutex);
    m_opened.push_back(camera);
    return camera;
}

void FakeCameraManager::setListener(CameraManagerListener *listener)
{
    log(listener ? QStringLiteral("setListener(listener)") : QStringLiteral("setListener(null)"));
    CameraManager::setListener(listener);
}

CameraManagerListener *FakeCameraManager::listener()
{
    std::lock_guard<std::mutex> lock(m_listenerMutex);
    return m_listener;
}

FakeCameraManager::Script FakeCameraManager::add(const std::string &id, CameraFacing facing,
                                                 int mountAngle, const std::string &name)
{
    auto script = std::make_shared<FakeCameraScript>(id, name.empty() ? "Camera " + id : name,
                                                     facing, mountAngle);
    std::lock_guard<std::mutex> lock(m_mutex);
    m_cameras.push_back(script);
    return script;
}

void FakeCameraManager::remove(const std::string &id)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found =
            std::find_if(m_cameras.begin(), m_cameras.end(),
                         [&id](const Script &script) { return script->info().id == id; });
    if (found != m_cameras.end())
        m_cameras.erase(found);
}

void FakeCameraManager::notifyAdded(const std::string &id)
{
    if (CameraManagerListener *receiver = listener())
        receiver->onCameraAdded(id);
}

void FakeCameraManager::notifyRemoved(const std::string &id)
{
    if (CameraManagerListener *receiver = listener())
        receiver->onCameraRemoved(id);
}

std::shared_ptr<FakeCamera> FakeCameraManager::openedCamera() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_opened.empty() ? nullptr : m_opened.back().lock();
}

int FakeCameraManager::heldCameras() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(std::count_if(m_opened.begin(), m_opened.end(),
                                          [](const auto &camera) { return !camera.expired(); }));
}

FakeCameraManager::Script FakeCameraManager::find(const std::string &id) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const Script &script : m_cameras) {
        if (script->info().id == id)
            return script;
    }
    return nullptr;
}
