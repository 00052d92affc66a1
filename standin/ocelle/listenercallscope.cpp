// SPDX-License-Identifier: BSD-3-Clause
#include "listenercallscope.h"

namespace Veltra {
namespace Ocelle {

namespace {
thread_local const ListenerCallScope *innermost = nullptr;
}

ListenerCallScope::ListenerCallScope(const void *owner)
    : m_owner(owner)
    , m_outer(innermost)
{
    innermost = this;
}

ListenerCallScope::~ListenerCallScope()
{
    innermost = m_outer;
}

bool ListenerCallScope::isActive(const void *owner)
{
    for (const ListenerCallScope *scope = innermost; scope; scope = scope->m_outer) {
        if (scope->m_owner == owner)
            return true;
    }
    return false;
}

} // namespace Ocelle
} // namespace Veltra
