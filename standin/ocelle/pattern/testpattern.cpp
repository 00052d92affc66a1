// SPDX-License-Identifier: BSD-3-Clause
#include "testpattern.h"

#include "patterncode.h"
#include "patternfont.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace Veltra {
namespace Ocelle {
namespace {

// In rows of the code's grid, from the top.
constexpr int RampRow = 4;
constexpr int LaneRow = 5;
constexpr int TextRow = 7;
constexpr int PanelEnd = 10; // the code begins here

constexpr std::uint8_t Black = 16;
constexpr std::uint8_t White = 235;
// What cells are darker than white, in turns of two columns and two rows. Where as much of a block of
// 64x64 grows brighter as grows darker, libvpx's VP9 encoder (1.12, constant bit rate) takes it for
// unchanged; no two of these add up to the same as the two others.
constexpr std::uint8_t CellShades[2][2] = { { 0, 3 }, { 9, 21 } };
constexpr std::uint8_t PanelLuma = 40;
constexpr std::uint8_t LaneLuma = 30;
constexpr std::uint8_t LaneCb = 152;
constexpr std::uint8_t LaneCr = 118;
constexpr std::uint8_t BallLuma = 170; // nothing else in the lane has it
constexpr std::uint8_t BallCb = 54;
constexpr std::uint8_t BallCr = 176;

constexpr std::int64_t BallPeriod = 4000000; // microseconds, to and fro
constexpr int ClockGlyphs = 8;
constexpr int LabelGlyphs = 7;

int even(int value)
{
    return value & ~1;
}

std::int64_t modulo(std::int64_t value, std::int64_t divisor)
{
    const std::int64_t rest = value % divisor;
    return rest < 0 ? rest + divisor : rest;
}

// count pairs of bytes; in steps of eight bytes, which the compiler turns into single stores.
void fillPairs(std::uint8_t *to, std::uint8_t first, std::uint8_t second, int count)
{
    const std::uint8_t block[8] = { first, second, first, second, first, second, first, second };
    for (; count >= 4; count -= 4, to += 8)
        std::memcpy(to, block, 8);
    std::memcpy(to, block, static_cast<std::size_t>(count) * 2);
}

std::uint8_t *at(const TestPattern::Plane &plane, int x, int y)
{
    return plane.data + static_cast<std::ptrdiff_t>(y) * plane.stride + x;
}

// Half widths of a disc, one for each two lines.
std::vector<int> disc(int diameter)
{
    std::vector<int> halves;
    const double radius = diameter / 2.0;
    for (int line = 1; line < diameter; line += 2) {
        const double up = line - radius;
        const double half = std::sqrt(radius * radius - up * up);
        halves.push_back(std::min(even(static_cast<int>(half + 1)), even(diameter / 2)));
    }
    return halves;
}

} // namespace

TestPattern::TestPattern(int width, int height, PixelFormat format, const std::string &caption)
    : m_width(std::max(width, 1))
    , m_height(std::max(height, 1))
    , m_interleaved(format == PixelFormat::NV12)
    , m_caption(caption.substr(0, LabelGlyphs))
    , m_module(std::max(std::min(width / 80, height / 45), 1))
    , m_labelModule(m_module / 2)
{
    const int diameter = std::min(even((row(TextRow) - row(LaneRow)) * 7 / 8), even(m_width / 2));
    if (diameter >= 4)
        m_ball = disc(diameter);
}

int TestPattern::column(int index) const
{
    return index >= PatternCode::GridColumns ? m_width
                                             : even(index * m_width / PatternCode::GridColumns);
}

int TestPattern::row(int index) const
{
    return index >= PatternCode::GridRows ? m_height
                                          : even(index * m_height / PatternCode::GridRows);
}

void TestPattern::fillLuma(const Planes &planes, Rect rect, std::uint8_t y) const
{
    if (rect.right <= rect.left)
        return;
    for (int line = rect.top; line < rect.bottom; ++line)
        std::memset(at(planes[0], rect.left, line), y,
                    static_cast<std::size_t>(rect.right - rect.left));
}

// Takes every chroma sample that the rectangle touches.
void TestPattern::fillChroma(const Planes &planes, Rect rect, Colour colour) const
{
    const int left = rect.left / 2;
    const int count = (rect.right + 1) / 2 - left;
    if (count <= 0)
        return;
    for (int line = rect.top / 2; line < (rect.bottom + 1) / 2; ++line) {
        if (m_interleaved) {
            fillPairs(at(planes[1], left * 2, line), colour.cb, colour.cr, count);
        } else {
            std::memset(at(planes[1], left, line), colour.cb, static_cast<std::size_t>(count));
            std::memset(at(planes[2], left, line), colour.cr, static_cast<std::size_t>(count));
        }
    }
}

void TestPattern::fill(const Planes &planes, Rect rect, Colour colour) const
{
    fillLuma(planes, rect, colour.y);
    fillChroma(planes, rect, colour);
}

void TestPattern::paintBackground(const Planes &planes) const
{
    fill(planes, { 0, 0, m_width, m_height }, { PanelLuma, 128, 128 });
    paintBars(planes);
    paintRamp(planes);
    fill(planes, { 0, row(LaneRow), m_width, row(TextRow) }, { LaneLuma, LaneCb, LaneCr });
    paintText(planes, m_caption.c_str(), captionRect(), m_labelModule);
    paintCells(planes, PatternCode::fixedCells());
}

void TestPattern::paintBars(const Planes &planes) const
{
    constexpr Colour Bars[] = { { 180, 128, 128 }, { 162, 44, 142 },   { 131, 156, 44 },
                                { 112, 72, 58 },   { 84, 184, 198 },   { 65, 100, 212 },
                                { 35, 212, 114 },  { Black, 128, 128 } };
    constexpr int Count = sizeof(Bars) / sizeof(Bars[0]);
    for (int i = 0; i < Count; ++i) {
        const int right = i + 1 == Count ? m_width : even((i + 1) * m_width / Count);
        fill(planes, { even(i * m_width / Count), 0, right, row(RampRow) }, Bars[i]);
    }
}

void TestPattern::paintRamp(const Planes &planes) const
{
    for (int line = row(RampRow); line < row(LaneRow); ++line) {
        std::uint8_t *to = at(planes[0], 0, line);
        for (int x = 0; x < m_width; ++x)
            to[x] = static_cast<std::uint8_t>(Black + x * (White - Black) / m_width);
    }
    fillChroma(planes, { 0, row(RampRow), m_width, row(LaneRow) }, { 0, 128, 128 });
}

void TestPattern::update(const Planes &planes, std::uint64_t sequence, std::int64_t timeUs) const
{
    paintCells(planes, PatternCode::encode(static_cast<std::uint32_t>(sequence)));
    moveBall(planes, timeUs);

    const auto hundredths = static_cast<unsigned>(modulo(timeUs / 10000, 100 * 60 * 100));
    char text[16];
    std::snprintf(text, sizeof text, "%02u:%02u.%02u", hundredths / 6000, hundredths / 100 % 60,
                  hundredths % 100);
    paintText(planes, text, clockRect(), m_module);
    std::snprintf(text, sizeof text, "#%06u", static_cast<unsigned>(sequence % 1000000));
    paintText(planes, text, numberRect(), m_labelModule);
}

void TestPattern::paintCells(const Planes &planes, std::uint64_t cells) const
{
    for (int cell = 0; cell < PatternCode::Cells; ++cell, cells >>= 1) {
        const int x = PatternCode::FirstColumn + cell % PatternCode::Columns;
        const int y = PatternCode::FirstRow + cell / PatternCode::Columns;
        const Rect rect { column(x), row(y), column(x + 1), row(y + 1) };
        const std::uint8_t white = White - CellShades[y % 2][x % 2];
        const std::uint8_t luma = (cells & 1) != 0 ? white : Black;
        if (rect.left < rect.right && rect.top < rect.bottom &&
            *at(planes[0], rect.left, rect.top) != luma)
            fillLuma(planes, rect, luma);
    }
}

void TestPattern::moveBall(const Planes &planes, std::int64_t timeUs) const
{
    if (m_ball.empty())
        return;
    const int diameter = static_cast<int>(m_ball.size()) * 2;
    const int top = even((row(LaneRow) + row(TextRow) - diameter) / 2);
    eraseBall(planes, top);

    const std::int64_t phase = modulo(timeUs, BallPeriod);
    const std::int64_t way = std::min(phase, BallPeriod - phase);
    const int centre =
            even(diameter / 2 + static_cast<int>(way * (m_width - diameter) / (BallPeriod / 2)));
    for (std::size_t i = 0; i < m_ball.size(); ++i) {
        const int line = top + static_cast<int>(i) * 2;
        const int left = std::max(centre - m_ball[i], 0);
        const int right = std::min(centre + m_ball[i], even(m_width));
        fill(planes, { left, line, right, line + 2 }, { BallLuma, BallCb, BallCr });
    }
}

// The ball is where its luma is on the line of its greatest width.
void TestPattern::eraseBall(const Planes &planes, int top) const
{
    const int lines = static_cast<int>(m_ball.size()) * 2;
    const std::size_t widest = m_ball.size() / 2;
    const std::uint8_t *line = at(planes[0], 0, top + static_cast<int>(widest) * 2);
    const void *found = std::memchr(line, BallLuma, static_cast<std::size_t>(m_width));
    if (found == nullptr)
        return;
    const int left = even(static_cast<int>(static_cast<const std::uint8_t *>(found) - line));
    const int right = std::min(left + 2 * m_ball[widest], m_width);
    fill(planes, { left, top, right, top + lines }, { LaneLuma, LaneCb, LaneCr });
}

TestPattern::Rect TestPattern::clockRect() const
{
    const int height = PatternFont::Height * m_module;
    const int top = (row(TextRow) + row(PanelEnd) - height) / 2;
    const int left = column(1);
    return { left, top, left + ClockGlyphs * PatternFont::Advance * m_module, top + height };
}

TestPattern::Rect TestPattern::captionRect() const
{
    const Rect clock = clockRect();
    const int left = clock.right + m_module;
    const int top = clock.top - m_labelModule; // leaves two modules above the number
    return { left, top, left + LabelGlyphs * PatternFont::Advance * m_labelModule,
             top + PatternFont::Height * m_labelModule };
}

TestPattern::Rect TestPattern::numberRect() const
{
    const Rect caption = captionRect();
    const int bottom = clockRect().bottom + m_labelModule;
    return { caption.left, bottom - (caption.bottom - caption.top), caption.right, bottom };
}

void TestPattern::paintText(const Planes &planes, const char *text, Rect rect, int module) const
{
    if (module < 1 || rect.top < row(TextRow) || rect.bottom > row(PanelEnd))
        return; // a picture too small for text
    for (int left = rect.left; *text != '\0'; ++text, left += PatternFont::Advance * module) {
        const int right = left + PatternFont::Width * module;
        if (right > m_width)
            return;
        paintGlyph(planes, *text, { left, rect.top, right, rect.bottom }, module);
    }
}

void TestPattern::paintGlyph(const Planes &planes, char character, Rect rect, int module) const
{
    const PatternFont::Glyph &glyph = PatternFont::glyph(character);
    for (int y = 0; y < PatternFont::Height; ++y) {
        for (int x = 0; x < PatternFont::Width; ++x) {
            const bool set =
                    ((glyph[static_cast<std::size_t>(y)] >> (PatternFont::Width - 1 - x)) & 1) != 0;
            const std::uint8_t luma = set ? White : PanelLuma;
            const int left = rect.left + x * module;
            const int top = rect.top + y * module;
            if (*at(planes[0], left, top) != luma)
                fillLuma(planes, { left, top, left + module, top + module }, luma);
        }
    }
}

} // namespace Ocelle
} // namespace Veltra
