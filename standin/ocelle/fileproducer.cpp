// SPDX-License-Identifier: BSD-3-Clause
#include "fileproducer.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <utility>

namespace Veltra {
namespace Ocelle {

FileProducer::FileProducer(std::unique_ptr<VideoFile> file, std::shared_ptr<VideoFileShelf> shelf,
                           const CameraCapability &capability, std::string cameraName)
    : m_file(std::move(file))
    , m_shelf(std::move(shelf))
    , m_capability(capability)
    , m_cameraName(std::move(cameraName))
    , m_pool(std::make_shared<BufferPool<FramePicture>>())
{
}

FileProducer::~FileProducer()
{
    if (m_error.empty())
        m_shelf->put(std::move(m_file));
}

std::chrono::nanoseconds FileProducer::period() const
{
    return m_file->period();
}

std::chrono::nanoseconds FileProducer::catchUp() const
{
    return std::chrono::seconds(1); // what is left out has to be decoded all the same
}

std::optional<std::chrono::nanoseconds> FileProducer::next(const std::atomic<bool> &stop)
{
    switch (m_file->read(stop)) {
    case VideoFile::Result::Picture:
        return m_file->offset();
    case VideoFile::Result::Failed:
        m_error = "Camera \"" + m_cameraName + "\" stopped: its file " + m_file->error();
        return {};
    case VideoFile::Result::Stopped:
        break;
    }
    return {};
}

std::shared_ptr<GraphicBuffer> FileProducer::picture(std::uint64_t sequence, std::int64_t timestamp)
{
    std::shared_ptr<FramePicture> picture = m_pool->take();
    if (!picture)
        return {};
    if (!fill(*picture)) {
        m_error = "Camera \"" + m_cameraName +
                  "\" stopped: its file has pictures of a format that cannot be converted";
        return {};
    }
    picture->timestamp = timestamp;
    picture->sequence = sequence;
    picture->live = true;
    return picture;
}

bool FileProducer::fill(FramePicture &picture)
{
    AVFrame *const frame = m_file->picture();
    const PixelFormat format = m_file->properties().format;
    const bool hasSize = frame->width == m_capability.width && frame->height == m_capability.height;
    if (hasSize && FramePicture::isDirect(*frame, format)) {
        picture.take(frame);
        return true;
    }
    picture.allocate(m_capability.width, m_capability.height, format);
    return m_converter.convert(*frame, picture);
}

} // namespace Ocelle
} // namespace Veltra
