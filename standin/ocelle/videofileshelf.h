// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "videofile.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace Veltra {
namespace Ocelle {

/*!
 * Keeps an opened file between the captures of a camera, so that a start need not open it again.
 *
 * Threads: any.
 * Owner:   the camera and its captures together.
 */
class VideoFileShelf
{
public:
    /*! \a first is the file at \a path, opened. */
    VideoFileShelf(std::string path, std::unique_ptr<VideoFile> first)
        : m_path(std::move(path))
        , m_file(std::move(first))
    {
    }

    /*! A file at its first picture; empty with an \a error that goes after the file's name. */
    std::unique_ptr<VideoFile> take(std::string &error);
    /*! Gives one back that is still good. */
    void put(std::unique_ptr<VideoFile> file);

private:
    const std::string m_path;

    std::mutex m_mutex; // guards m_file
    std::unique_ptr<VideoFile> m_file;
};

} // namespace Ocelle
} // namespace Veltra
