// SPDX-License-Identifier: BSD-3-Clause
#include "udevvideonodes.h"

#include <libudev.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Veltra {
namespace Ocelle {

namespace {

const char Subsystem[] = "video4linux";

struct EnumerateUnref
{
    void operator()(udev_enumerate *enumerate) const { udev_enumerate_unref(enumerate); }
};

/*!
 * Differs each time a device appears: the kernel makes its folder anew and hands out the numbers of
 * these in turn. (The folder's times change whenever the kernel's caches are dropped.)
 */
std::uint64_t birthOf(const std::string &sysPath)
{
    struct stat status;
    return ::stat(sysPath.c_str(), &status) == 0 ? std::uint64_t(status.st_ino) : 0;
}

VideoNode describe(udev_device *device, const std::string &sysPath, const std::string &node)
{
    VideoNode described;
    described.sysPath = sysPath;
    described.node = node;
    described.plugged = birthOf(sysPath);
    for (udev_list_entry *entry = udev_device_get_properties_list_entry(device); entry;
         entry = udev_list_entry_get_next(entry)) {
        const char *const value = udev_list_entry_get_value(entry);
        described.properties[udev_list_entry_get_name(entry)] = value ? value : "";
    }
    for (const char *const name : { "name", "index" }) {
        if (const char *const value = udev_device_get_sysattr_value(device, name))
            described.attributes[name] = value;
    }
    return described;
}

} // namespace

UdevVideoNodes::UdevVideoNodes()
    : m_hasDaemon(::access("/run/udev/control", F_OK) == 0)
    , m_udev(udev_new())
{
    if (!m_udev)
        return;
    m_monitor.reset(udev_monitor_new_from_netlink(m_udev.get(), m_hasDaemon ? "udev" : "kernel"));
    if (!m_monitor)
        return;
    udev_monitor_filter_add_match_subsystem_devtype(m_monitor.get(), Subsystem, nullptr);
    if (udev_monitor_enable_receiving(m_monitor.get()) < 0)
        m_monitor.reset();
}

std::vector<VideoNode> UdevVideoNodes::list()
{
    std::vector<VideoNode> all;
    const std::unique_ptr<udev_enumerate, EnumerateUnref> enumerate(
            m_udev ? udev_enumerate_new(m_udev.get()) : nullptr);
    if (!enumerate)
        return all;
    udev_enumerate_add_match_subsystem(enumerate.get(), Subsystem);
    udev_enumerate_scan_devices(enumerate.get());
    for (udev_list_entry *entry = udev_enumerate_get_list_entry(enumerate.get()); entry;
         entry = udev_list_entry_get_next(entry)) {
        const std::string sysPath = udev_list_entry_get_name(entry);
        const auto found = device(sysPath);
        const char *const node = found ? udev_device_get_devnode(found.get()) : nullptr;
        // The daemon tells of a device again when it is done with it.
        if (!node || (m_hasDaemon && !udev_device_get_is_initialized(found.get())))
            continue;
        const std::string name = node;
        if (name.find("/video") != std::string::npos) // no radio, teletext or touch sensor
            all.push_back(describe(found.get(), sysPath, name));
    }
    return all;
}

int UdevVideoNodes::descriptor() const
{
    return m_monitor ? udev_monitor_get_fd(m_monitor.get()) : -1;
}

void UdevVideoNodes::drain()
{
    while (const std::unique_ptr<udev_device, Unref> gone {
            m_monitor ? udev_monitor_receive_device(m_monitor.get()) : nullptr }) {
    }
}

std::unique_ptr<udev_device, UdevVideoNodes::Unref>
UdevVideoNodes::device(const std::string &sysPath) const
{
    return std::unique_ptr<udev_device, Unref>(
            udev_device_new_from_syspath(m_udev.get(), sysPath.c_str()));
}

void UdevVideoNodes::Unref::operator()(udev *context) const
{
    udev_unref(context);
}

void UdevVideoNodes::Unref::operator()(udev_device *device) const
{
    udev_device_unref(device);
}

void UdevVideoNodes::Unref::operator()(udev_monitor *monitor) const
{
    udev_monitor_unref(monitor);
}

} // namespace Ocelle
} // namespace Veltra
