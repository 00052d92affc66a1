// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/*!
 * Pictures of a file of raw I420 video, in memory, to be used again and again.
 *
 * Threads: any, once made.
 */
class RawPictures
{
public:
    /*! All of \a file; isEmpty() where it holds none of that size. */
    RawPictures(const std::string &file, int width, int height);

    bool isEmpty() const { return count() == 0; }
    int width() const { return m_width; }   // pixels
    int height() const { return m_height; } // lines
    std::size_t count() const { return m_memory.size() / size(); }
    std::size_t size() const; // bytes of one
    const std::uint8_t *luma(std::size_t index) const;
    const std::uint8_t *cb(std::size_t index) const;
    const std::uint8_t *cr(std::size_t index) const;

private:
    const int m_width;
    const int m_height;
    std::vector<std::uint8_t> m_memory;
};
