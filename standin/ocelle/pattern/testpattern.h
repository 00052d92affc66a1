// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/camera.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*!
 * Paints the test picture: colour bars, a ball that runs to and fro, a clock, the sequence number,
 * and that number once more in large luma cells, which readPattern() finds again in any copy of the
 * picture, whether compressed, scaled or mirrored.
 *
 * Threads: any; the object does not change after construction, so several threads may paint
 *          different buffers at once.
 * Owner:   planes are borrowed for the duration of a call.
 * Units:   pixels, bytes per line, microseconds.
 * Errors:  none. Any size is painted within its bounds; it can be read from 160x120 on.
 */
class TestPattern
{
public:
    struct Plane
    {
        std::uint8_t *data;
        std::int32_t stride; // bytes per line
    };
    /*! YU12: Y, Cb, Cr. NV12: Y and Cb, Cr interleaved, the third one unused. */
    using Planes = std::array<Plane, 3>;

    /*!
     * For pictures of \a width x \a height; \a format is NV12 or YU12, anything else is painted as
     * YU12. \a caption, a word of up to seven capital letters and digits, is written beside the
     * clock.
     */
    TestPattern(int width, int height, PixelFormat format, const std::string &caption = {});

    /*! Paints everything that stays, once per buffer. */
    void paintBackground(const Planes &planes) const;

    /*!
     * Turns a buffer that holds the background, or any picture of this pattern, into the picture
     * of \a sequence (modulo 2^32) and \a timeUs, which places the ball and sets the clock. Writes
     * only what differs, for which it looks at what the buffer holds; does not allocate.
     */
    void update(const Planes &planes, std::uint64_t sequence, std::int64_t timeUs) const;

    int width() const { return m_width; }
    int height() const { return m_height; }

private:
    struct Rect
    {
        int left, top, right, bottom; // right and bottom are the first pixels outside
    };
    struct Colour
    {
        std::uint8_t y, cb, cr;
    };

    int column(int index) const; // left edge of a grid column
    int row(int index) const;    // top edge of a grid row
    void fill(const Planes &planes, Rect rect, Colour colour) const;
    void fillLuma(const Planes &planes, Rect rect, std::uint8_t y) const;
    void fillChroma(const Planes &planes, Rect rect, Colour colour) const;
    void paintBars(const Planes &planes) const;
    void paintRamp(const Planes &planes) const;
    void paintCells(const Planes &planes, std::uint64_t cells) const;
    void moveBall(const Planes &planes, std::int64_t timeUs) const;
    void eraseBall(const Planes &planes, int top) const;
    void paintText(const Planes &planes, const char *text, Rect rect, int module) const;
    void paintGlyph(const Planes &planes, char character, Rect rect, int module) const;
    Rect clockRect() const;
    Rect captionRect() const;
    Rect numberRect() const;

    int m_width;
    int m_height;
    bool m_interleaved; // chroma
    std::string m_caption;
    int m_module;            // side of a module of the clock's glyphs
    int m_labelModule;       // the same of the number's and the caption's; 0 leaves them out
    std::vector<int> m_ball; // half the ball's width, for each two of its lines; all even
};

} // namespace Ocelle
} // namespace Veltra
