// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "bufferpool.h"
#include "frameconverter.h"
#include "framepicture.h"
#include "pictureproducer.h"
#include "videofileshelf.h"

#include <ocelle/camera.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Veltra {
namespace Ocelle {

/*!
 * Plays a video file over and over. The next picture is decoded as soon as the last one is out; it
 * is handed on in the decoder's own memory where its size and format are the ones wanted, else
 * converted once.
 */
class FileProducer final : public PictureProducer
{
public:
    /*! \a file comes from \a shelf and goes back there. \a cameraName is for errors. */
    FileProducer(std::unique_ptr<VideoFile> file, std::shared_ptr<VideoFileShelf> shelf,
                 const CameraCapability &capability, std::string cameraName);
    ~FileProducer() override;

    std::chrono::nanoseconds period() const override;
    std::chrono::nanoseconds catchUp() const override;
    std::optional<std::chrono::nanoseconds> next(const std::atomic<bool> &stop) override;
    std::shared_ptr<GraphicBuffer> picture(std::uint64_t sequence, std::int64_t timestamp) override;
    std::string error() const override { return m_error; }

private:
    bool fill(FramePicture &picture);

    std::unique_ptr<VideoFile> m_file;
    const std::shared_ptr<VideoFileShelf> m_shelf;
    const CameraCapability m_capability;
    const std::string m_cameraName;
    const std::shared_ptr<BufferPool<FramePicture>> m_pool;
    FrameConverter m_converter;
    std::string m_error;
};

} // namespace Ocelle
} // namespace Veltra
