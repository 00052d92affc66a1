// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <string>
#include <vector>

struct AVPacket;

/*!
 * The compressed pictures of a video file, all in memory, as decoders take them: H.264 and H.265
 * with start codes. Goes round from its first key frame on as often as need be.
 *
 * Threads: one, while it is made; any after that.
 * Errors:  it is empty, with a word on standard error.
 */
class EncodedStream
{
public:
    /*! Reads the video of the file at \a path. */
    explicit EncodedStream(const char *path);
    ~EncodedStream();
    EncodedStream(const EncodedStream &) = delete;
    EncodedStream &operator=(const EncodedStream &) = delete;

    bool isEmpty() const { return m_units.empty(); }
    int width() const { return m_width; }   // pixels
    int height() const { return m_height; } // lines

    /*! The unit number \a i, counted without end. */
    const AVPacket *unit(std::size_t i) const { return m_units[i % m_units.size()]; }

private:
    std::string read(const char *path); // why that did not work, else empty

    std::vector<AVPacket *> m_units; // owned; the first is a key frame
    int m_width = 0;
    int m_height = 0;
};
