// SPDX-License-Identifier: BSD-3-Clause
#include "fakegraphicbuffer.h"

namespace Veltra {
namespace Ocelle {

std::atomic<int> GraphicBuffer::s_alive { 0 };

GraphicBuffer::GraphicBuffer(int bufferNumber)
    : number(bufferNumber)
{
    ++s_alive;
}

GraphicBuffer::~GraphicBuffer()
{
    --s_alive;
}

std::shared_ptr<GraphicBuffer> GraphicBuffer::create(int number)
{
    return std::make_shared<GraphicBuffer>(number);
}

int GraphicBuffer::alive()
{
    return s_alive;
}

} // namespace Ocelle
} // namespace Veltra
