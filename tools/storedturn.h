// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "avpointers.h"

namespace Tool {

/*! How a file wants its pictures shown. */
struct StoredTurn
{
    int degrees = 0;     // clockwise: 0, 90, 180 or 270
    bool isExact = true; // else they are to be mirrored, too, or turned by another angle
};

StoredTurn storedTurn(const AVStream &stream);

/*! What to say of one that is not exact; empty for any other. */
QString turnNote(const QString &path, const StoredTurn &turn);

/*! Degrees clockwise to encode at, where the user wants \a wanted of what is upright. */
int turnToEncode(const StoredTurn &stored, int wanted, bool mirrored);

} // namespace Tool
