// SPDX-License-Identifier: BSD-3-Clause
#include "codecdevices.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

namespace Veltra {
namespace Ocelle {

namespace {
// The nodes of a device folder whose names begin so; none where there is no such folder.
std::vector<std::string> nodes(const char *folder, const std::string &beginning)
{
    std::vector<std::string> paths;
    std::error_code ignored;
    for (const auto &entry : std::filesystem::directory_iterator(folder, ignored)) {
        if (entry.path().filename().string().compare(0, beginning.size(), beginning) == 0)
            paths.push_back(entry.path().string());
    }
    return paths;
}

bool isMemoryToMemory(const std::string &path)
{
    const int file = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return false;
    v4l2_capability capability {};
    const bool answers = ::ioctl(file, VIDIOC_QUERYCAP, &capability) == 0;
    ::close(file);
    const auto flags = capability.capabilities & V4L2_CAP_DEVICE_CAPS ? capability.device_caps
                                                                      : capability.capabilities;
    return answers && (flags & (V4L2_CAP_VIDEO_M2M | V4L2_CAP_VIDEO_M2M_MPLANE));
}

} // namespace

std::vector<std::string> vaapiDevices()
{
    return nodes("/dev/dri", "renderD");
}

bool hasMemoryToMemoryDevice()
{
    for (const std::string &path : nodes("/dev", "video")) {
        if (isMemoryToMemory(path))
            return true;
    }
    return false;
}

} // namespace Ocelle
} // namespace Veltra
