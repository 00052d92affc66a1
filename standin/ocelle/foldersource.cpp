// SPDX-License-Identifier: BSD-3-Clause
#include "foldersource.h"

#include "filecamera.h"
#include "log.h"
#include "streamingcamera.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <system_error>
#include <utility>

namespace Veltra {
namespace Ocelle {

namespace {

bool isHidden(const std::string &name)
{
    return name.empty() || name.front() == '.';
}

/*! Whether the name of a file promises a video. */
bool promisesVideo(const std::string &name)
{
    static const char *const extensions[] = { ".264", ".3gp",  ".avi", ".flv", ".h264", ".ivf",
                                              ".m4v", ".mkv",  ".mov", ".mp4", ".mpeg", ".mpg",
                                              ".ogv", ".webm", ".wmv", ".y4m" };
    const std::size_t dot = name.rfind('.');
    std::string extension = dot == std::string::npos ? std::string() : name.substr(dot);
    for (char &letter : extension)
        letter = char(std::tolower(static_cast<unsigned char>(letter)));
    return std::find(std::begin(extensions), std::end(extensions), extension) !=
           std::end(extensions);
}

} // namespace

FolderSource::FolderSource(std::string path)
    : m_path(std::move(path))
    , m_watch(m_path)
{
    if (m_watch.isValid())
        scan();
    else
        printLine("OCELLE_CAMERAS: no cameras from \"" + m_path +
                  "\", which cannot be watched: " + m_watch.error() + "; dir:PATH needs a folder");
}

std::vector<CameraDescription> FolderSource::cameras()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<CameraDescription> all;
    for (const auto &[name, file] : m_files)
        all.push_back(file.camera);
    return all;
}

void FolderSource::watch(std::function<void()> changed)
{
    m_changed = std::move(changed);
    FolderWatch::Functions functions;
    functions.onComplete = [this](const std::string &name) { look(name); };
    functions.onGone = [this](const std::string &name) { remove(name); };
    functions.onOverflow = [this] { compareAll(); };
    functions.onFolderGone = [this] { onFolderGone(); };
    m_watch.start(std::move(functions));
}

std::shared_ptr<Camera> FolderSource::open(const std::string &id)
{
    std::string name;
    CameraDescription camera;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto &[fileName, file] : m_files) {
            if (file.camera.info.id != id)
                continue;
            name = fileName;
            camera = file.camera;
        }
    }
    if (name.empty()) {
        printLine("camera \"" + id + "\" does not open: its file is no longer there");
        return {};
    }
    std::string error;
    const std::shared_ptr<CaptureControl> control = FileCamera::open(camera, pathOf(name), error);
    if (!control) {
        printLine("camera \"" + name + "\" does not open: \"" + pathOf(name) + "\" " + error);
        return {};
    }
    bool isPresent = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_files.find(name);
        isPresent = found != m_files.end() && found->second.camera.revision == camera.revision;
        if (isPresent) {
            auto &opened = found->second.opened;
            opened.erase(std::remove_if(opened.begin(), opened.end(),
                                        [](const auto &other) { return other.expired(); }),
                         opened.end());
            opened.push_back(control);
        }
    }
    if (!isPresent)
        control->unplug(); // while it was being opened
    return std::make_shared<StreamingCamera>(control);
}

std::optional<FolderSource::Stamp> FolderSource::stampOf(const std::string &path)
{
    struct stat status
    {
    };
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return {};
    const std::int64_t modified =
            std::int64_t(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
    return Stamp { status.st_dev, status.st_ino, status.st_size, modified };
}

std::string FolderSource::pathOf(const std::string &name) const
{
    return (m_path == "/" ? m_path : m_path + '/') + name;
}

std::vector<std::string> FolderSource::namesInFolder() const
{
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(m_path, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        names.push_back(entry->path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

void FolderSource::scan()
{
    for (const std::string &name : namesInFolder())
        look(name);
}

void FolderSource::look(const std::string &name)
{
    if (isHidden(name))
        return;
    const std::string path = pathOf(name);
    const std::optional<Stamp> stamp = stampOf(path);
    if (!stamp)
        return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_files.find(name);
        if (found != m_files.end() && found->second.stamp == *stamp)
            return;
    }
    std::string error;
    std::optional<CameraDescription> camera = FileCamera::describe(path, error);
    if (!camera) {
        if (promisesVideo(name))
            printLine("no camera for \"" + path + "\", which " + error);
        remove(name);
        return;
    }
    replace(name, File { *stamp, std::move(*camera), {} });
}

void FolderSource::remove(const std::string &name)
{
    replace(name, {});
}

void FolderSource::removeAll()
{
    std::vector<std::string> names;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto &[name, file] : m_files)
            names.push_back(name);
    }
    for (const std::string &name : names)
        remove(name);
}

void FolderSource::compareAll()
{
    std::vector<std::string> gone;
    {
        const std::vector<std::string> names = namesInFolder();
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (const auto &[name, file] : m_files) {
            if (!std::binary_search(names.begin(), names.end(), name))
                gone.push_back(name);
        }
    }
    for (const std::string &name : gone)
        remove(name);
    scan();
}

/*! Puts \a file in the place of what was called \a name, either of which may be nothing. */
void FolderSource::replace(const std::string &name, std::optional<File> file)
{
    std::vector<std::weak_ptr<CaptureControl>> unplugged;
    bool isChange = file.has_value();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_files.find(name);
        if (found != m_files.end()) {
            isChange = true;
            unplugged = std::move(found->second.opened);
            m_files.erase(found);
        }
        if (file) {
            file->camera.revision = ++m_revision;
            m_files.emplace(name, std::move(*file));
        }
    }
    for (const std::weak_ptr<CaptureControl> &opened : unplugged) {
        if (const std::shared_ptr<CaptureControl> control = opened.lock())
            control->unplug();
    }
    if (isChange && m_changed)
        m_changed();
}

void FolderSource::onFolderGone()
{
    printLine("folder \"" + m_path + "\" is gone, and its cameras with it");
    removeAll();
}

} // namespace Ocelle
} // namespace Veltra
