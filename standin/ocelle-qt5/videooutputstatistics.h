// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QtGlobal>

#include <ocelle/global.h>

class QAbstractVideoSurface;

namespace Veltra {
namespace Ocelle {

/*!
 * What became of the pictures for one surface since it was set on its output.
 *
 * Once nothing is on its way, delivered = presented + dropped + refused.
 */
struct VideoOutputStatistics
{
    quint64 delivered = 0;  // pictures the output was given
    quint64 presented = 0;  // that the surface accepted
    quint64 dropped = 0;    // that never reached the surface
    quint64 refused = 0;    // for which the surface's present() returned false
    quint64 missing = 0;    // sequence numbers that were skipped: lost before they were delivered
    quint64 duplicated = 0; // pictures delivered with the sequence number of the one before
};

/*!
 * Fills \a statistics for the outputs that have \a surface set; with several of them, the sum.
 *
 * A source that leaves every sequence number at 0 has nothing missing and nothing duplicated.
 *
 * Threads: any; \a surface is compared, never touched.
 * Errors:  false, and \a statistics unchanged, if no output has that surface.
 */
OCELLE_EXPORT bool videoOutputStatistics(const QAbstractVideoSurface *surface,
                                         VideoOutputStatistics *statistics);

} // namespace Ocelle
} // namespace Veltra
