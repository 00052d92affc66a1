// SPDX-License-Identifier: BSD-3-Clause
#include "nodeexamination.h"

#include "devicequery.h"
#include "udevvideonodes.h"
#include "v4l2format.h"

#include <algorithm>
#include <map>

namespace Veltra {
namespace Ocelle {

namespace {

std::string formatsOf(const DeviceAnswers &answers)
{
    std::vector<std::uint32_t> formats;
    for (const CaptureMode &mode : answers.modes) {
        if (std::find(formats.begin(), formats.end(), mode.fourcc) == formats.end())
            formats.push_back(mode.fourcc);
    }
    std::string text;
    for (const std::uint32_t fourcc : formats)
        text += (text.empty() ? "" : ", ") + V4l2Format::name(fourcc);
    return text;
}

std::string unusableFormats(const DeviceAnswers &answers)
{
    std::string text;
    for (const std::uint32_t fourcc : answers.unusable)
        text += (text.empty() ? "" : ", ") + V4l2Format::name(fourcc);
    return text.empty() ? "it has no format at all"
                        : "none of its formats can be used (" + text + ')';
}

} // namespace

void useSharedSerialIds(const std::vector<VideoNode> &nodes, std::vector<CameraNode> &all)
{
    std::map<std::string, int> counts;
    for (const CameraNode &node : all)
        ++counts[node.id];
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (all[i].isOffered && counts[all[i].id] > 1 && !serialId(nodes[i]).empty())
            all[i].id = sharedSerialId(nodes[i]);
    }
}

CameraNode examineNode(const std::shared_ptr<V4l2System> &system, const VideoNode &node)
{
    CameraNode result;
    result.node = node.node;
    result.name = displayName(node);
    const OpenDevice device(system, node.node);
    V4l2Trouble trouble;
    const auto sentence = [&] {
        return trouble.sentence(result.name, node.node,
                                trouble.isBusy() ? holdersOf(node.node, device.descriptor()) : "");
    };
    const std::optional<DeviceAnswers> answers = queryDevice(device, trouble);
    if (!answers) {
        result.finding = sentence();
    } else if (answers->kind != NodeKind::Capture) {
        result.finding = "not offered: " + whyNotOffered(answers->kind);
    } else if (answers->modes.empty()) {
        result.finding = "not offered: " + unusableFormats(*answers);
    } else {
        result.isOffered = true;
        const std::string serial = serialId(node);
        result.id = serial.empty() ? pathId(node) : serial;
        result.finding = "offered; captures " + formatsOf(*answers);
        if (!isFree(device, trouble))
            result.finding = sentence();
    }
    return result;
}

std::vector<CameraNode> examineCameraNodes()
{
    const auto system = std::make_shared<KernelV4l2System>();
    std::vector<CameraNode> all;
    const std::vector<VideoNode> nodes = UdevVideoNodes().list();
    for (const VideoNode &node : nodes)
        all.push_back(examineNode(system, node));
    useSharedSerialIds(nodes, all);
    return all;
}

} // namespace Ocelle
} // namespace Veltra
