// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "camerasource.h"
#include "listenergate.h"

#include <ocelle/cameramanager.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * The cameras of this machine, from several sources. Where two sources have a camera of the same
 * id, that of the first one counts.
 *
 * Cameras that come and go are told on a thread of the manager's own, each one when the list
 * already shows it (or no longer does), removed ones first. What a listener does in its callbacks
 * is up to it: they may ask the manager anything and set another listener.
 *
 * Threads: any. setListener() waits for a callback that is under way, unless called from within it.
 * Owner:   the library, for the life of the process.
 * Errors:  false or an empty pointer, for opening with the reason on standard error.
 */
class LocalCameraManager final : public CameraManager
{
public:
    /*! Starts to watch \a sources, which are asked in this order. */
    explicit LocalCameraManager(std::vector<std::unique_ptr<CameraSource>> sources);
    /*! Waits for a callback that is under way; cameras that are open stay open. */
    ~LocalCameraManager() override;

    int getNumberOfCameras() override;
    bool getCameraInfo(int index, CameraInfo &info) override;
    bool getCameraCapabilities(const CameraInfo &info,
                               std::vector<CameraCapability> &caps) override;
    std::shared_ptr<Camera> openCamera(const std::string &id) override;
    void setListener(CameraManagerListener *listener) override;

private:
    struct Entry
    {
        CameraDescription camera;
        CameraSource *source; // not owned
    };
    using List = std::vector<Entry>;

    // Any thread
    List collect();
    static const Entry *find(const List &list, const std::string &id);
    static bool hasSame(const List &list, const Entry &entry);
    std::shared_ptr<const List> list() const;
    void onSourceChanged();
    void wakeHotplugThread(); // with m_changeMutex

    // Hot-plug thread
    void followChanges();
    void applyChanges();
    void setList(List list);

    ListenerGate<CameraManagerListener> m_gate;

    mutable std::mutex m_listMutex; // guards m_list; never held while calling out
    std::shared_ptr<const List> m_list;

    std::mutex m_changeMutex; // guards what follows
    std::condition_variable m_changeNoted;
    bool m_ready = false; // the first list is there
    bool m_changed = false;
    bool m_quitting = false;
    std::thread m_hotplugThread; // started with the first change

    const std::vector<std::unique_ptr<CameraSource>> m_sources; // last: they may call until they go
};

} // namespace Ocelle
} // namespace Veltra
