// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "camerasource.h"
#include "capturecontrol.h"
#include "devicequery.h"
#include "v4l2producer.h"
#include "v4l2system.h"
#include "videonodes.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * The cameras that the kernel has a driver for.
 *
 * A camera's id is that of the device, from its serial number, where it has one that no other
 * device here has, else that of the place where it is plugged in. What comes back to its place gets
 * the id that it had there.
 *
 * Listing opens a device only for what udev does not know: whether it is a camera at all, where
 * udev's daemon has not looked, and where it is mounted, which only built-in cameras know. It is
 * asked once after it was plugged in, on this source's own thread. The capabilities of others are
 * asked for when the camera is opened, or by getCapabilities() before that. A camera that is plugged in
 * anew while it still is open is not asked again.
 *
 * Threads: any; its own one, named "OcelleV4l2", lists and watches.
 * Owner:   the camera manager.
 */
class V4l2Source final : public CameraSource
{
public:
    V4l2Source(std::shared_ptr<V4l2System> system, std::unique_ptr<VideoNodes> nodes,
               V4l2Producer::Patience patience = {});
    ~V4l2Source() override;

    // These wait for the first listing, but not for long
    std::vector<CameraDescription> cameras() override;
    void watch(std::function<void()> changed) override;
    std::shared_ptr<Camera> open(const std::string &id) override;
    bool getCapabilities(const std::string &id, std::vector<CameraCapability> &all) override;

private:
    struct Device
    {
        VideoNode node;
        std::string id;
        std::shared_ptr<const DeviceAnswers> answers; // empty while it was not asked
        std::vector<std::weak_ptr<CaptureControl>> opened;
    };
    using Devices = std::vector<Device>;

    // Any thread
    static CameraDescription describe(const Device &device);
    static Device *find(Devices &devices, const VideoNode &node);
    std::unique_lock<std::mutex> lockListed(); // m_mutex, once there is a list
    bool findCamera(const std::string &id, Device &found);
    std::shared_ptr<CaptureControl> findOpened(const std::string &id);
    bool ask(Device &device, const OpenDevice &opened);
    static void report(const Device &device, const V4l2Trouble &trouble, const OpenDevice &opened);
    std::shared_ptr<CaptureControl> makeControl(const Device &device) const;
    bool addOpened(const Device &device, const std::shared_ptr<CaptureControl> &control);

    // Its own thread
    void run();
    bool waitForChange();
    bool list();
    Devices collect(const Devices &before);
    bool isCamera(Device &device);
    void noteSharedSerials(const Devices &added, const Devices &others);
    std::string idFor(const VideoNode &node, const Devices &others);

    const std::shared_ptr<V4l2System> m_system;
    const std::unique_ptr<VideoNodes> m_nodes;
    const V4l2Producer::Patience m_patience;
    const WakeUp m_quit;
    std::function<void()> m_changed;
    std::vector<VideoNode> m_refused;      // that answered that they are no cameras; its own thread
    std::set<std::string> m_sharedSerials; // that several devices have; its own thread
    std::map<std::pair<std::string, std::string>, std::string>
            m_ids; // given so far, by serial number and place; its own thread

    std::mutex m_mutex; // guards what follows; never held while a device is asked
    std::condition_variable m_listedFirst;
    bool m_listed = false;
    bool m_isListedLate = false; // someone could not wait for it and has seen no camera
    Devices m_devices;           // those that are offered
    std::map<std::string, std::weak_ptr<CaptureControl>> m_opened; // the latest by id

    std::thread m_thread;
};

} // namespace Ocelle
} // namespace Veltra
