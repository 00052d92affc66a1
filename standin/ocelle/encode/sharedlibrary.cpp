// SPDX-License-Identifier: BSD-3-Clause
#include "sharedlibrary.h"

#include <dlfcn.h>

namespace Veltra {
namespace Ocelle {

namespace {
std::string lastError()
{
    const char *text = dlerror();
    return text ? text : "unknown error";
}
} // namespace

SharedLibrary::SharedLibrary(const std::string &fileName)
    : m_handle(dlopen(fileName.c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (!m_handle)
        m_error = lastError();
}

void *SharedLibrary::find(const char *symbol)
{
    void *address = m_handle ? dlsym(m_handle, symbol) : nullptr;
    if (!address && m_error.empty())
        m_error = lastError();
    return address;
}

} // namespace Ocelle
} // namespace Veltra
