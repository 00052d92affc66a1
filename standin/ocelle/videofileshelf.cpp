// SPDX-License-Identifier: BSD-3-Clause
#include "videofileshelf.h"

namespace Veltra {
namespace Ocelle {

std::unique_ptr<VideoFile> VideoFileShelf::take(std::string &error)
{
    std::unique_ptr<VideoFile> file;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        file = std::move(m_file);
    }
    if (file && file->restart())
        return file;
    return VideoFile::open(m_path, error);
}

void VideoFileShelf::put(std::unique_ptr<VideoFile> file)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_file.swap(file); // what was there goes after the lock
}

} // namespace Ocelle
} // namespace Veltra
