// SPDX-License-Identifier: BSD-3-Clause
#include "filecamera.h"

#include "capabilities.h"
#include "fileproducer.h"
#include "log.h"
#include "videofile.h"
#include "videofileshelf.h"

#include <utility>

namespace Veltra {
namespace Ocelle {

std::string FileCamera::idOf(const std::string &path)
{
    // Qt takes the bytes of an id for Latin-1 in one place and for UTF-8 in another, so that only
    // ASCII finds its way back; see QCamera's constructor.
    constexpr char Digits[] = "0123456789ABCDEF";
    std::string id = "file:";
    for (const char character : path) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte >= ' ' && byte < 0x7f && byte != '%')
            id += character;
        else
            id += { '%', Digits[byte >> 4], Digits[byte & 15] };
    }
    return id;
}

std::string FileCamera::nameOf(const std::string &path)
{
    return path.substr(path.rfind('/') + 1);
}

std::optional<CameraDescription> FileCamera::describe(const std::string &path, std::string &error)
{
    const std::unique_ptr<VideoFile> file = VideoFile::open(path, error);
    if (!file)
        return {};
    const VideoFile::Properties &properties = file->properties();
    CameraDescription camera;
    camera.info.id = idOf(path);
    camera.info.name = nameOf(path);
    camera.formats = { properties.format };
    const auto rate = std::uint32_t(properties.frameRate);
    const CameraCapability own { properties.width, properties.height, rate };
    camera.capabilities.push_back(own);
    for (const CameraCapability &scaled :
         { CameraCapability { 640, 480, rate }, CameraCapability { 320, 240, rate } }) {
        if (!isSame(scaled, own))
            camera.capabilities.push_back(scaled);
    }
    return camera;
}

std::shared_ptr<CaptureControl> FileCamera::open(const CameraDescription &camera,
                                                 const std::string &path, std::string &error)
{
    std::unique_ptr<VideoFile> file = VideoFile::open(path, error);
    if (!file)
        return {};
    const auto shelf = std::make_shared<VideoFileShelf>(path, std::move(file));
    const std::string name = camera.info.name;
    const auto makeProducer = [shelf, path, name](const CameraCapability &capability) {
        std::string why;
        std::unique_ptr<VideoFile> taken = shelf->take(why);
        if (taken)
            return std::make_unique<FileProducer>(std::move(taken), shelf, capability, name);
        printLine("camera \"" + name + "\" does not start: \"" + path + "\" " + why);
        return std::unique_ptr<FileProducer>();
    };
    return std::make_shared<CaptureControl>(camera, makeProducer);
}

} // namespace Ocelle
} // namespace Veltra
