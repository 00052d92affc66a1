// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "capturemodes.h"
#include "nodekind.h"
#include "v4l2system.h"
#include "v4l2trouble.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*! A device that is open until this goes. */
class OpenDevice
{
public:
    OpenDevice(std::shared_ptr<V4l2System> system, const std::string &node);
    ~OpenDevice();
    OpenDevice(const OpenDevice &) = delete;
    OpenDevice &operator=(const OpenDevice &) = delete;

    bool isOpen() const { return m_device >= 0; }
    int error() const { return m_error; } // errno, where it is not open
    int descriptor() const { return m_device; }
    const std::shared_ptr<V4l2System> &sharedSystem() const { return m_system; }
    /*! 0 or errno. */
    int ioctl(unsigned long request, void *argument) const;
    std::optional<std::int32_t> control(std::uint32_t id) const;

private:
    const std::shared_ptr<V4l2System> m_system;
    const int m_device;
    const int m_error;
};

/*! What a device answers when asked once after it was plugged in. */
struct DeviceAnswers
{
    NodeKind kind = NodeKind::Other;
    std::vector<CaptureMode> modes;      // those with formats that can be used
    std::vector<std::uint32_t> unusable; // its other formats
    std::optional<std::int32_t> orientation;
    std::optional<std::int32_t> rotation;
};

/*! Asks \a device; what fails is told in \a trouble. */
std::optional<DeviceAnswers> queryDevice(const OpenDevice &device, V4l2Trouble &trouble);

/*! Whether someone has the device for streaming, which only then refuses; told in \a trouble. */
bool isFree(const OpenDevice &device, V4l2Trouble &trouble);

/*!
 * The name of the control that makes the camera take longer exposures than its rate allows; empty
 * where it has none or that is switched off.
 */
std::string rateLoweringControl(const OpenDevice &device);

} // namespace Ocelle
} // namespace Veltra
