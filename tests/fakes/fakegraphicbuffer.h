// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/frames.h>

#include <atomic>
#include <memory>

namespace Veltra {
namespace Ocelle {

/*! A picture without pixels: a number, and a count of those alive. */
class GraphicBuffer
{
public:
    explicit GraphicBuffer(int bufferNumber);
    ~GraphicBuffer();
    GraphicBuffer(const GraphicBuffer &) = delete;
    GraphicBuffer &operator=(const GraphicBuffer &) = delete;

    static std::shared_ptr<GraphicBuffer> create(int number);
    static int alive();

    const int number;

private:
    static std::atomic<int> s_alive;
};

} // namespace Ocelle
} // namespace Veltra
