// SPDX-License-Identifier: BSD-3-Clause
#include "doublecameramanager.h"

#include "doublecamera.h"
#include "doubleplatform.h"

#include <algorithm>

using namespace Veltra::Ocelle;

DoubleCameraManager::~DoubleCameraManager()
{
    if (m_plugging.joinable())
        m_plugging.join();
}

int DoubleCameraManager::getNumberOfCameras()
{
    DoublePlatform::hangWith(Fault::ManagerHangs);
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (DoublePlatform::has(Fault::ListingShuffles))
        std::reverse(m_ids.begin(), m_ids.end());
    return int(m_ids.size()) + (DoublePlatform::has(Fault::ListingCountsTooMany) ? 1 : 0);
}

bool DoubleCameraManager::getCameraInfo(int index, CameraInfo &info)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (DoublePlatform::has(Fault::ListingIsOpen))
        index = std::min(index, int(m_ids.size()) - 1);
    if (index < 0 || index >= int(m_ids.size()))
        return false;
    info = CameraInfo();
    info.id = m_ids[std::size_t(index)];
    info.name = "Camera " + info.id;
    return true;
}

bool DoubleCameraManager::isThere(const std::string &id) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::find(m_ids.begin(), m_ids.end(), id) != m_ids.end();
}

bool DoubleCameraManager::getCameraCapabilities(const CameraInfo &info,
                                                std::vector<CameraCapability> &caps)
{
    if (!isThere(info.id))
        return false;
    caps = { { 160, 120, 50 }, { 320, 240, 40 } };
    return true;
}

std::shared_ptr<Camera> DoubleCameraManager::openCamera(const std::string &id)
{
    if (!isThere(id) && !DoublePlatform::has(Fault::UnknownIdOpens))
        return {};
    return std::make_shared<DoubleCamera>(id);
}

void DoubleCameraManager::setListener(CameraManagerListener *listener)
{
    CameraManager::setListener(listener);
    if (m_plugging.joinable())
        m_plugging.join();
    if (listener)
        m_plugging = std::thread([this] { plugInAndOut(); });
}

void DoubleCameraManager::plugInAndOut()
{
    const std::string id = "three";
    if (!DoublePlatform::has(Fault::HotPlugIsNotListed)) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ids.push_back(id);
    }
    tell(id, true);
    if (DoublePlatform::has(Fault::HotPlugIsNotListed)) {
        tell("four", false); // which never was
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ids.erase(std::find(m_ids.begin(), m_ids.end(), id));
    }
    tell(id, false);
}

void DoubleCameraManager::tell(const std::string &id, bool added)
{
    const std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (!m_listener || DoublePlatform::has(Fault::HotPlugIsSilent))
        return;
    if (added)
        m_listener->onCameraAdded(id);
    else
        m_listener->onCameraRemoved(id);
}
