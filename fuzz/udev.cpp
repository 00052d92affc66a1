// SPDX-License-Identifier: BSD-3-Clause
// What udev and sysfs tell of a device, as lines NAME=VALUE, to its ids and name.
#include "deviceidentity.h"
#include "nodekind.h"

#include <cstdlib>
#include <sstream>

using namespace Veltra::Ocelle;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    std::istringstream lines(std::string(reinterpret_cast<const char *>(data), size));
    VideoNode node;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t equals = line.find('=');
        const std::string name = line.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : line.substr(equals + 1);
        node.properties[name] = value;
        node.attributes[name] = value;
        if (name == "syspath")
            node.sysPath = value;
    }
    const std::string path = pathId(node);
    const std::string serial = serialId(node);
    const std::string name = displayName(node);
    if (path.compare(0, 5, "v4l2:") != 0 || name.empty() || name.find('\n') != std::string::npos)
        std::abort();
    if (!serial.empty() && serial.compare(0, 5, "v4l2:") != 0)
        std::abort();
    nodeKind(node.property("ID_V4L_CAPABILITIES"));
    mayTellMounting(node);
    return 0;
}
