// SPDX-License-Identifier: BSD-3-Clause
#include "x265library.h"

#include "sharedlibrary.h"

namespace Veltra {
namespace Ocelle {

X265Library::X265Library(const std::string &fileName)
{
    decltype(&x265_api_get) apiGet = nullptr;
    SharedLibrary library(fileName);
    library.resolve(apiGet, OCELLE_SYMBOL_NAME(x265_api_get));
    m_error = library.error();
    if (!apiGet)
        return;
    const x265_api *api = apiGet(8);
    if (!api)
        m_error = fileName + " does not do 8-bit pictures";
    else if (api->api_major_version != X265_MAJOR_VERSION ||
             api->sizeof_param != int(sizeof(x265_param)) ||
             api->sizeof_picture != int(sizeof(x265_picture)))
        m_error = fileName + " is of another version than it says";
    else
        m_api = api;
}

const X265Library &X265Library::instance()
{
    static const X265Library library("libx265.so." + std::to_string(X265_BUILD));
    return library;
}

} // namespace Ocelle
} // namespace Veltra
