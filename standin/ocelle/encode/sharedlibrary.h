// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <string>

namespace Veltra {
namespace Ocelle {

/*!
 * A shared library opened at run time, so that this one works without it. Never closed again:
 * codec libraries leave threads and tables behind.
 *
 * Threads: one; resolved functions may be called from any.
 */
class SharedLibrary
{
public:
    explicit SharedLibrary(const std::string &fileName);

    /*! True while the library is open and every symbol asked for was found. */
    bool isComplete() const { return m_error.empty(); }
    /*! Why it is not. */
    const std::string &error() const { return m_error; }

    /*! Points \a function, whose type comes from the library's header, at \a symbol. */
    template <class Function>
    void resolve(Function *&function, const char *symbol)
    {
        function = reinterpret_cast<Function *>(find(symbol));
    }

private:
    void *find(const char *symbol);

    void *m_handle;
    std::string m_error;
};

} // namespace Ocelle
} // namespace Veltra

// The name of a symbol as the compiler sees it: headers redefine some to carry a version.
#define OCELLE_SYMBOL_TEXT(name) #name
#define OCELLE_SYMBOL_NAME(name) OCELLE_SYMBOL_TEXT(name)
