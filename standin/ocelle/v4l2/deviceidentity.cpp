// SPDX-License-Identifier: BSD-3-Clause
#include "deviceidentity.h"

#include <linux/v4l2-controls.h>

namespace Veltra {
namespace Ocelle {

namespace {

const std::string Nothing;
const char Prefix[] = "v4l2:";

const std::string &valueOf(const std::map<std::string, std::string> &all, const std::string &name)
{
    const auto found = all.find(name);
    return found == all.end() ? Nothing : found->second;
}

/*! Several nodes of one device are told apart by their interface and index. */
std::string nodeSuffix(const VideoNode &node, bool withInterface)
{
    std::string suffix;
    const std::string &interface = node.property("ID_USB_INTERFACE_NUM");
    if (withInterface && !interface.empty() && interface != "00")
        suffix += ":if" + interface;
    const std::string &index = node.attribute("index");
    if (!index.empty() && index != "0")
        suffix += ":" + index;
    return suffix;
}

/*! The part of a sysfs path that stays: "pci0000:00/0000:00:14.0/usb1/1-2/1-2:1.0" */
std::string placeInSysfs(const std::string &sysPath)
{
    const std::string start = "/devices/";
    const std::size_t first = sysPath.find(start);
    const std::size_t begin = first == std::string::npos ? 0 : first + start.size();
    const std::size_t last = sysPath.find("/video4linux/", begin);
    return sysPath.substr(begin, last == std::string::npos ? last : last - begin);
}

/*! How many bytes the character at \a at has; 0 where it is not valid UTF-8. */
std::size_t characterLength(const std::string &text, std::size_t at)
{
    const auto byte = [&text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = byte(at);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80)
            return 0;
    }
    const unsigned second = byte(at + 1);
    const bool isOverlong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool isForbidden = (first == 0xED && second > 0x9F) || (first == 0xF4 && second > 0x8F);
    return isOverlong || isForbidden ? 0 : length;
}

/*! Valid UTF-8 without control characters and outer blanks. */
std::string cleaned(const std::string &text)
{
    std::string clean;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = characterLength(text, i);
        const bool isControl = static_cast<unsigned char>(text[i]) < ' ' || text[i] == 0x7f;
        if (length == 0)
            clean += "\xEF\xBF\xBD"; // the replacement character
        else
            clean += isControl ? std::string(1, ' ') : text.substr(i, length);
        i += length == 0 ? 1 : length;
    }
    const std::size_t first = clean.find_first_not_of(' ');
    return first == std::string::npos
                   ? Nothing
                   : clean.substr(first, clean.find_last_not_of(' ') - first + 1);
}

/*! udev's ID_V4L_PRODUCT with "\x20" and the like written out. */
std::string unescaped(const std::string &text)
{
    const auto digit = [&text](std::size_t i) {
        const char letter = i < text.size() ? text[i] : 'x';
        return letter >= '0' && letter <= '9'   ? letter - '0'
               : letter >= 'a' && letter <= 'f' ? letter - 'a' + 10
               : letter >= 'A' && letter <= 'F' ? letter - 'A' + 10
                                                : -1;
    };
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isEscape =
                text.compare(i, 2, "\\x") == 0 && digit(i + 2) >= 0 && digit(i + 3) >= 0;
        plain += isEscape ? char(digit(i + 2) * 16 + digit(i + 3)) : text[i];
        i += isEscape ? 3 : 0;
    }
    return plain;
}

} // namespace

const std::string &VideoNode::property(const std::string &name) const
{
    return valueOf(properties, name);
}

const std::string &VideoNode::attribute(const std::string &name) const
{
    return valueOf(attributes, name);
}

std::string serialId(const VideoNode &node)
{
    if (node.property("ID_SERIAL_SHORT").empty() || node.property("ID_SERIAL").empty())
        return {};
    return Prefix + cleaned(node.property("ID_SERIAL")) + nodeSuffix(node, true);
}

std::string sharedSerialId(const VideoNode &node)
{
    return serialId(node) + '@' + pathId(node).substr(sizeof Prefix - 1);
}

std::string pathId(const VideoNode &node)
{
    const std::string &path = node.property("ID_PATH");
    const std::string place = cleaned(path.empty() ? placeInSysfs(node.sysPath) : path);
    // A built-in device may have several equal cameras, which only their names tell apart.
    const std::string name = mayTellMounting(node) ? cleaned(node.attribute("name")) : Nothing;
    return Prefix + place + (name.empty() ? name : ':' + name) + nodeSuffix(node, false);
}

std::string displayName(const VideoNode &node)
{
    for (const std::string &name :
         { unescaped(node.property("ID_V4L_PRODUCT")), node.attribute("name"),
           unescaped(node.property("ID_MODEL_ENC")) }) {
        const std::string clean = cleaned(name);
        if (!clean.empty())
            return clean;
    }
    return "Camera";
}

bool mayTellMounting(const VideoNode &node)
{
    return node.property("ID_BUS") != "usb"; // a webcam does not know where it was put
}

CameraFacing facingFrom(std::optional<std::int32_t> orientation)
{
    return orientation == V4L2_CAMERA_ORIENTATION_FRONT ? CameraFacing::Front : CameraFacing::Back;
}

std::int32_t mountAngleFrom(std::optional<std::int32_t> rotation)
{
    const std::int32_t turned = rotation.value_or(0) % 360;
    return turned % 90 == 0 ? (360 - turned) % 360 : 0;
}

} // namespace Ocelle
} // namespace Veltra
