// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <stdint.h>
#include <x265.h>

#include <string>

namespace Veltra {
namespace Ocelle {

/*!
 * The x265 library, found at run time under the version that this was built against.
 *
 * Threads: any, after construction.
 */
class X265Library
{
public:
    explicit X265Library(const std::string &fileName);

    /*! The one of this machine, opened on first use. */
    static const X265Library &instance();

    bool isComplete() const { return m_api; }
    const std::string &error() const { return m_error; }
    /*! Its functions for 8-bit pictures; null unless it is complete. */
    const x265_api *api() const { return m_api; }

private:
    const x265_api *m_api = nullptr;
    std::string m_error;
};

} // namespace Ocelle
} // namespace Veltra
