// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "videonodes.h"

#include <memory>
#include <string>
#include <vector>

struct udev;
struct udev_device;
struct udev_monitor;

namespace Veltra {
namespace Ocelle {

/*!
 * Lists and watches through libudev: from its daemon where one runs, which then has set the nodes'
 * permissions and properties before it tells of them, else from the kernel.
 */
class UdevVideoNodes final : public VideoNodes
{
public:
    UdevVideoNodes();

    std::vector<VideoNode> list() override;
    int descriptor() const override;
    void drain() override;

private:
    struct Unref
    {
        void operator()(udev *context) const;
        void operator()(udev_device *device) const;
        void operator()(udev_monitor *monitor) const;
    };
    std::unique_ptr<udev_device, Unref> device(const std::string &sysPath) const;

    const bool m_hasDaemon;
    const std::unique_ptr<udev, Unref> m_udev;
    std::unique_ptr<udev_monitor, Unref> m_monitor; // empty where there is none to have
};

} // namespace Ocelle
} // namespace Veltra
