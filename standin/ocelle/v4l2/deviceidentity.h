// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/cameramanager.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace Veltra {
namespace Ocelle {

/*! What udev and sysfs tell of one video node. */
struct VideoNode
{
    std::string sysPath; // of the node, "/sys/devices/…/video4linux/video0"
    std::string node;    // "/dev/video0"
    std::map<std::string, std::string> properties; // udev's, as ID_SERIAL
    std::map<std::string, std::string> attributes; // sysfs', as "name" and "index"
    std::uint64_t plugged = 0; // differs where the same node was plugged in again

    const std::string &property(const std::string &name) const;
    const std::string &attribute(const std::string &name) const;
};

/*! The device's own id: stays the same on any port; empty for devices without a serial number. */
std::string serialId(const VideoNode &node);

/*! The id where several devices have that serial number: with the place. */
std::string sharedSerialId(const VideoNode &node);

/*! The id of the place where the device is plugged in. Never empty, never the node's number. */
std::string pathId(const VideoNode &node);

/*! The name for people, always valid UTF-8. */
std::string displayName(const VideoNode &node);

/*! Whether the node may have controls that tell where the camera is mounted. */
bool mayTellMounting(const VideoNode &node);

/*! From V4L2_CID_CAMERA_ORIENTATION; nothing where there is no such control. */
CameraFacing facingFrom(std::optional<std::int32_t> orientation);

/*!
 * From V4L2_CID_CAMERA_SENSOR_ROTATION, which is how far pictures are to be turned counter-clockwise
 * to be upright. 0 for what is not a multiple of 90.
 */
std::int32_t mountAngleFrom(std::optional<std::int32_t> rotation);

} // namespace Ocelle
} // namespace Veltra
