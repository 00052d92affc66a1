// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "camerasource.h"
#include "capturecontrol.h"
#include "folderwatch.h"

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * Every video file of a folder as a camera, by name. A file that is added is plugged in once it is
 * completely written; one that is removed, renamed or replaced is unplugged, which ends a capture
 * of it with an error. Folders within the folder, hidden files and what is not a video do not count.
 *
 * Threads: any. Changes are seen on a thread of the source's own.
 * Errors:  a line on standard error for a folder that cannot be read, for one that goes, and for a
 *          file whose name promises a video that is not in it.
 */
class FolderSource final : public CameraSource
{
public:
    /*! \a path is absolute. Looks into every file of the folder. */
    explicit FolderSource(std::string path);

    std::vector<CameraDescription> cameras() override;
    void watch(std::function<void()> changed) override;
    std::shared_ptr<Camera> open(const std::string &id) override;

private:
    /*! Tells one state of a file from another without reading it. */
    struct Stamp
    {
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = 0;
        std::int64_t modified = 0; // nanoseconds

        bool operator==(const Stamp &other) const
        {
            return device == other.device && inode == other.inode && size == other.size &&
                   modified == other.modified;
        }
    };
    struct File
    {
        Stamp stamp;
        CameraDescription camera;
        std::vector<std::weak_ptr<CaptureControl>> opened;
    };

    static std::optional<Stamp> stampOf(const std::string &path);
    std::string pathOf(const std::string &name) const;
    std::vector<std::string> namesInFolder() const;
    void scan();
    void look(const std::string &name);
    void remove(const std::string &name);
    void removeAll();
    void compareAll();
    void replace(const std::string &name, std::optional<File> file);
    void onFolderGone();

    const std::string m_path;
    std::function<void()> m_changed; // set before the watch starts

    std::mutex m_mutex; // guards what follows; never held while looking into a file or calling out
    std::map<std::string, File> m_files; // by name
    std::uint64_t m_revision = 0;

    FolderWatch m_watch; // last, so that it ends before the rest goes
};

} // namespace Ocelle
} // namespace Veltra
