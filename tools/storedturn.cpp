// SPDX-License-Identifier: BSD-3-Clause
#include "storedturn.h"

extern "C" {
#include <libavutil/display.h>
}

#include <cmath>
#include <cstring>

namespace Tool {
namespace {

constexpr int QuarterTurn = 90; // degrees
constexpr int FullTurn = 360;
constexpr double Tolerance = 0.5; // degrees, of the file's own rounding

} // namespace

StoredTurn storedTurn(const AVStream &stream)
{
    std::int32_t matrix[9] = {};
    std::size_t size = 0;
    const std::uint8_t *const data =
            av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (!data || size < sizeof matrix)
        return {};
    std::memcpy(matrix, data, sizeof matrix);
    const double clockwise = -av_display_rotation_get(matrix);
    if (std::isnan(clockwise))
        return { 0, false };
    const int quarters = int(std::lround(clockwise / QuarterTurn));
    const double determinant =
            double(matrix[0]) * double(matrix[4]) - double(matrix[1]) * double(matrix[3]);
    const bool isExact =
            determinant > 0 && std::abs(clockwise - quarters * QuarterTurn) < Tolerance;
    return { isExact ? (quarters + 4) % 4 * QuarterTurn : 0, isExact };
}

QString turnNote(const QString &path, const StoredTurn &turn)
{
    return turn.isExact ? QString()
                        : QStringLiteral("%1: asks for its pictures to be mirrored or turned by "
                                         "other than right angles, which is not done")
                                  .arg(path);
}

int turnToEncode(const StoredTurn &stored, int wanted, bool mirrored)
{
    // Encoders mirror first, which has what comes before turn the other way round.
    const int before = mirrored ? FullTurn - stored.degrees : stored.degrees;
    return (before + wanted) % FullTurn;
}

} // namespace Tool
