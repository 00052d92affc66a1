// SPDX-License-Identifier: BSD-3-Clause
#include "vividdevice.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

bool run(const std::string &command)
{
    return std::system(command.c_str()) == 0;
}

bool writeDriver(const char *file)
{
    std::ofstream out(std::string("/sys/bus/platform/drivers/vivid/") + file);
    out << "vivid.0" << std::flush;
    return out.good();
}

} // namespace

VividDevice::VividDevice(int instance)
    : m_node(nodeOf(instance))
    , m_device(::open(m_node.c_str(), O_RDWR | O_CLOEXEC))
{
}

VividDevice::~VividDevice()
{
    if (isOpen())
        ::close(m_device);
}

bool VividDevice::set(const std::string &name, std::int64_t value)
{
    v4l2_query_ext_ctrl query {};
    query.id = V4L2_CTRL_FLAG_NEXT_CTRL;
    std::string known;
    for (; ::ioctl(m_device, VIDIOC_QUERY_EXT_CTRL, &query) == 0;
         query.id |= V4L2_CTRL_FLAG_NEXT_CTRL) {
        known += std::string(" \"") + query.name + '"';
        if (name != query.name)
            continue;
        v4l2_control control {};
        control.id = query.id;
        control.value = std::int32_t(value);
        return ::ioctl(m_device, VIDIOC_S_CTRL, &control) == 0;
    }
    std::fprintf(stderr, "there is no control \"%s\"; there are%s\n", name.c_str(), known.c_str());
    return false;
}

void VividDevice::setStillPicture()
{
    set("OSD Text Mode", 2); // none
}

bool VividDevice::unplug()
{
    return writeDriver("unbind");
}

bool VividDevice::plug()
{
    return writeDriver("bind"); // who needs the camera waits for it anyway
}

bool VividDevice::reload(const std::string &options)
{
    const char *const module = std::getenv("OCELLE_VIVID_MODULE");
    return module && run("rmmod vivid") && run("insmod " + std::string(module) + ' ' + options) &&
           settle();
}

bool VividDevice::settle()
{
    return run("SYSTEMD_IGNORE_CHROOT=1 udevadm settle --timeout=30");
}

bool VividDevice::announce()
{
    return run("SYSTEMD_IGNORE_CHROOT=1 udevadm trigger --subsystem-match=video4linux") && settle();
}

std::string VividDevice::nodeOf(int instance)
{
    char wanted[64];
    std::snprintf(wanted, sizeof wanted, "vivid-%03d-vid-cap", instance);
    std::error_code error;
    for (const fs::directory_entry &entry :
         fs::directory_iterator("/sys/class/video4linux", error)) {
        std::string name;
        std::getline(std::ifstream(entry.path() / "name"), name);
        if (name == wanted)
            return "/dev/" + entry.path().filename().string();
    }
    return {};
}
