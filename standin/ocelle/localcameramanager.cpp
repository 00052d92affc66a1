// SPDX-License-Identifier: BSD-3-Clause
#include "localcameramanager.h"

#include "librarythread.h"
#include "log.h"

#include <ocelle/camera.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace Veltra {
namespace Ocelle {

LocalCameraManager::LocalCameraManager(std::vector<std::unique_ptr<CameraSource>> sources)
    : m_sources(std::move(sources))
{
    for (const auto &source : m_sources)
        source->watch([this] { onSourceChanged(); });
    setList(collect());
    const std::lock_guard<std::mutex> lock(m_changeMutex);
    m_ready = true;
    if (m_changed)
        wakeHotplugThread();
}

LocalCameraManager::~LocalCameraManager()
{
    std::thread thread;
    {
        const std::lock_guard<std::mutex> lock(m_changeMutex);
        m_quitting = true;
        m_changeNoted.notify_all();
        thread = std::move(m_hotplugThread);
    }
    if (thread.joinable())
        thread.join();
}

int LocalCameraManager::getNumberOfCameras()
{
    return int(list()->size());
}

bool LocalCameraManager::getCameraInfo(int index, CameraInfo &info)
{
    const std::shared_ptr<const List> now = list();
    if (index < 0 || std::size_t(index) >= now->size())
        return false;
    info = (*now)[std::size_t(index)].camera.info;
    return true;
}

bool LocalCameraManager::getCameraCapabilities(const CameraInfo &info,
                                               std::vector<CameraCapability> &caps)
{
    const std::shared_ptr<const List> now = list();
    const Entry *const entry = find(*now, info.id);
    if (!entry)
        return false;
    caps = entry->camera.capabilities;
    return !caps.empty() || entry->source->getCapabilities(info.id, caps);
}

std::shared_ptr<Camera> LocalCameraManager::openCamera(const std::string &id)
{
    const std::shared_ptr<const List> now = list();
    const Entry *const entry = find(*now, id);
    if (!entry) {
        printLine("there is no camera \"" + id + "\" to open");
        return {};
    }
    return entry->source->open(id);
}

void LocalCameraManager::setListener(CameraManagerListener *listener)
{
    m_gate.set(listener);
}

LocalCameraManager::List LocalCameraManager::collect()
{
    List all;
    for (const auto &source : m_sources) {
        for (CameraDescription &camera : source->cameras()) {
            if (!find(all, camera.info.id))
                all.push_back({ std::move(camera), source.get() });
        }
    }
    return all;
}

const LocalCameraManager::Entry *LocalCameraManager::find(const List &list, const std::string &id)
{
    const auto found = std::find_if(list.begin(), list.end(), [&id](const Entry &entry) {
        return entry.camera.info.id == id;
    });
    return found == list.end() ? nullptr : &*found;
}

bool LocalCameraManager::hasSame(const List &list, const Entry &entry)
{
    const Entry *const other = find(list, entry.camera.info.id);
    return other && other->source == entry.source &&
           other->camera.revision == entry.camera.revision;
}

std::shared_ptr<const LocalCameraManager::List> LocalCameraManager::list() const
{
    const std::lock_guard<std::mutex> lock(m_listMutex);
    return m_list;
}

void LocalCameraManager::onSourceChanged()
{
    const std::lock_guard<std::mutex> lock(m_changeMutex);
    if (m_quitting)
        return;
    m_changed = true;
    if (m_ready)
        wakeHotplugThread();
}

void LocalCameraManager::wakeHotplugThread()
{
    m_changeNoted.notify_all();
    if (m_hotplugThread.joinable())
        return;
    try {
        m_hotplugThread = startThread("OcelleHotplug", [this] { followChanges(); });
    } catch (const std::system_error &) { // the next change tries again
        printLine("cameras that come and go are not noticed: the system has no thread left");
    }
}

void LocalCameraManager::followChanges()
{
    std::unique_lock<std::mutex> lock(m_changeMutex);
    while (true) {
        m_changeNoted.wait(lock, [this] { return m_changed || m_quitting; });
        if (m_quitting)
            return;
        m_changed = false;
        lock.unlock();
        applyChanges();
        lock.lock();
    }
}

void LocalCameraManager::applyChanges()
{
    const List now = collect();
    const std::shared_ptr<const List> before = list();
    List kept;
    std::vector<std::string> removed;
    std::vector<std::string> added;
    for (const Entry &entry : *before) {
        if (!hasSame(now, entry))
            removed.push_back(entry.camera.info.id);
    }
    for (const Entry &entry : now) {
        if (hasSame(*before, entry))
            kept.push_back(entry);
        else
            added.push_back(entry.camera.info.id);
    }

    setList(std::move(kept));
    for (const std::string &id : removed)
        m_gate.call([&id](CameraManagerListener &listener) { listener.onCameraRemoved(id); });
    setList(now);
    for (const std::string &id : added)
        m_gate.call([&id](CameraManagerListener &listener) { listener.onCameraAdded(id); });
}

void LocalCameraManager::setList(List list)
{
    auto shared = std::make_shared<const List>(std::move(list));
    const std::lock_guard<std::mutex> lock(m_listMutex);
    m_list.swap(shared);
}

} // namespace Ocelle
} // namespace Veltra
