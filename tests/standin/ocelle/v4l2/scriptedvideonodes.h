// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "v4l2system.h"
#include "videonodes.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/*! The nodes that a test plugs in. Any thread. */
class PluggedNodes
{
public:
    using VideoNode = Veltra::Ocelle::VideoNode;

    /*! With an event, as udev sends. */
    void set(std::vector<VideoNode> nodes)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_nodes = std::move(nodes);
        }
        event.wake();
    }
    std::vector<VideoNode> get() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_nodes;
    }

    const Veltra::Ocelle::WakeUp event;
    std::atomic<int> listings { 0 };

private:
    mutable std::mutex m_mutex; // guards what follows
    std::vector<VideoNode> m_nodes;
};

/*! A source's view of them. */
class ScriptedVideoNodes final : public Veltra::Ocelle::VideoNodes
{
public:
    explicit ScriptedVideoNodes(std::shared_ptr<PluggedNodes> plugged)
        : m_plugged(std::move(plugged))
    {
    }

    std::vector<Veltra::Ocelle::VideoNode> list() override
    {
        ++m_plugged->listings;
        return m_plugged->get();
    }
    int descriptor() const override { return m_plugged->event.descriptor(); }
    void drain() override { m_plugged->event.drain(); }

private:
    const std::shared_ptr<PluggedNodes> m_plugged;
};

/*! The node of a webcam called "Test", as udev describes one. */
inline Veltra::Ocelle::VideoNode webcam(const std::string &node, const std::string &serial = "0001")
{
    Veltra::Ocelle::VideoNode webcam;
    webcam.node = node;
    webcam.sysPath = "/sys/devices/usb1/1-" + serial + "/video4linux/video";
    webcam.properties = { { "ID_V4L_CAPABILITIES", ":capture:" },
                          { "ID_BUS", "usb" },
                          { "ID_SERIAL", "Test_" + serial },
                          { "ID_SERIAL_SHORT", serial } };
    webcam.attributes = { { "name", "Test" } };
    return webcam;
}
