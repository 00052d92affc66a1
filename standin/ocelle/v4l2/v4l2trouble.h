// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

namespace Veltra {
namespace Ocelle {

/*! What of a device did not work, and which error the system gave. */
struct V4l2Trouble
{
    std::string operation; // the middle of a sentence, as "does not open"
    int error = 0;         // errno; 0 where the reason is a text
    std::string reason;    // instead of the error's own text

    /*!
     * A sentence that names the camera, the operation, the reason and, where there is one, the
     * remedy. \a holder tells who has the device, empty where that is not known.
     */
    std::string sentence(const std::string &name, const std::string &node,
                         const std::string &holder) const;
    bool isBusy() const;
    bool isGone() const;
};

/*!
 * The processes that have \a node open, as "cheese" (process 4711), as far as this user may see
 * that; \a asking is the descriptor of this process that was refused, which does not count. Looks
 * at all processes, which takes its time.
 */
std::string holdersOf(const std::string &node, int asking);

/*!
 * Which group's members may open \a node, or what rule would let a group's, as the end of a sentence;
 * empty where there is no such node.
 */
std::string groupRemedy(const std::string &node);

} // namespace Ocelle
} // namespace Veltra
