// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/camera.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;

namespace Veltra {
namespace Ocelle {

/*!
 * The pictures of a video file, decoded one after the other and from the start again after the
 * last one, on a time line that goes on without a gap.
 *
 * Damage in the middle of a file costs the pictures concerned and nothing more.
 *
 * Threads: one at a time. The decoder has up to two threads of its own.
 * Units:   times in nanoseconds since the first picture.
 * Errors:  an empty pointer or Result::Failed, with a text for people that goes after the file's
 *          name ("has no video").
 */
class VideoFile
{
public:
    struct Properties
    {
        std::int32_t width = 0;                 // pixels
        std::int32_t height = 0;                // pixels
        std::int32_t frameRate = 0;             // pictures per second, rounded, at least 1
        PixelFormat format = PixelFormat::YU12; // of the decoded pictures, or the nearest one
    };
    enum class Result { Picture, Stopped, Failed };

    /*! \a path is absolute. Only what is in the file itself is ever read. */
    static std::unique_ptr<VideoFile> open(const std::string &path, std::string &error);
    ~VideoFile();

    const Properties &properties() const { return m_properties; }
    std::chrono::nanoseconds period() const { return m_period; }

    /*! Decodes the next picture; gives up once \a stop is true. */
    Result read(const std::atomic<bool> &stop);
    /*! The picture of the last read(), to take or to leave. */
    AVFrame *picture() { return m_frame; }
    /*! When it comes. */
    std::chrono::nanoseconds offset() const { return m_offset; }
    /*! How often the last picture of the file was passed. */
    int passes() const { return m_passes; }
    /*! Why read() failed. */
    const std::string &error() const { return m_error; }

    /*! Begins anew with the first picture, at time zero. */
    bool restart();

private:
    VideoFile() = default;

    bool openContainer(const std::string &path, std::string &error);
    bool openDecoder(std::string &error);
    bool isStillPicture() const;
    void readProperties();
    bool feedDecoder();
    bool beginNextPass();
    bool seekToStart();
    std::chrono::nanoseconds placeInTime();

    std::string m_path;
    AVFormatContext *m_container = nullptr; // owned
    AVCodecContext *m_decoder = nullptr;    // owned
    AVPacket *m_packet = nullptr;           // owned
    AVFrame *m_frame = nullptr;             // owned
    int m_stream = -1;
    Properties m_properties;
    std::chrono::nanoseconds m_period { 0 };
    std::string m_error;

    bool m_draining = false; // the decoder has had the last packet of this pass
    int m_badReads = 0;      // without a good one in between
    int m_passPictures = 0;  // of this pass so far
    int m_passes = 0;
    bool m_hasFirstStamp = false;
    std::int64_t m_firstStamp = 0;              // the file's time at zero of this pass
    std::chrono::nanoseconds m_passStart { 0 }; // where this pass begins
    std::chrono::nanoseconds m_inPass { 0 };    // the latest picture within it
    std::chrono::nanoseconds m_offset { 0 };
};

} // namespace Ocelle
} // namespace Veltra
