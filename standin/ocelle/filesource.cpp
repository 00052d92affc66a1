// SPDX-License-Identifier: BSD-3-Clause
#include "filesource.h"

#include "filecamera.h"
#include "log.h"
#include "streamingcamera.h"

#include <utility>

namespace Veltra {
namespace Ocelle {

FileSource::FileSource(std::string path)
    : m_path(std::move(path))
{
    std::string error;
    m_camera = FileCamera::describe(m_path, error);
    if (!m_camera)
        printLine("OCELLE_CAMERAS: no camera for \"" + m_path + "\", which " + error +
                  "; file:PATH needs a video file");
}

std::vector<CameraDescription> FileSource::cameras()
{
    if (!m_camera)
        return {};
    return { *m_camera };
}

void FileSource::watch(std::function<void()>)
{
    // A file that was named stays a camera; opening tells if it is gone.
}

std::shared_ptr<Camera> FileSource::open(const std::string &id)
{
    if (!m_camera || m_camera->info.id != id)
        return {};
    std::string error;
    const std::shared_ptr<CaptureControl> control = FileCamera::open(*m_camera, m_path, error);
    if (control)
        return std::make_shared<StreamingCamera>(control);
    printLine("camera \"" + m_camera->info.name + "\" does not open: \"" + m_path + "\" " + error);
    return {};
}

} // namespace Ocelle
} // namespace Veltra
