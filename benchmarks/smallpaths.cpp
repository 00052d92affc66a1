// SPDX-License-Identifier: BSD-3-Clause
// The small paths, one by one. Compare with BM_Slot, a shared pointer into a mutex-guarded slot and
// out again, in the same run.

#include "bufferpool.h"
#include "countingsurface.h"
#include "graphicbuffer.h"
#include "testpattern.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>
#include <ocelle/videooutputqt5.h>

#include <memory>
#include <mutex>
#include <vector>

using Veltra::Ocelle::GraphicBuffer;
using Veltra::Ocelle::PixelFormat;

namespace {

struct PooledBuffer : GraphicBuffer
{
    void release() {}
};

std::shared_ptr<GraphicBuffer> liveBuffer(const std::vector<std::uint8_t> &memory, int width,
                                          int height)
{
    auto buffer = std::make_shared<GraphicBuffer>();
    buffer->width = width;
    buffer->height = height;
    buffer->format = PixelFormat::NV12;
    buffer->planeCount = 2;
    buffer->planes[0] = { memory.data(), width, height };
    buffer->planes[1] = { memory.data() + width * height, width, height / 2 };
    buffer->live = true;
    return buffer;
}

void BM_Slot(benchmark::State &state)
{
    std::mutex mutex;
    std::shared_ptr<GraphicBuffer> slot;
    const auto buffer = std::make_shared<GraphicBuffer>();
    for (auto _ : state) {
        std::shared_ptr<GraphicBuffer> in = buffer;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            slot.swap(in);
        }
        std::shared_ptr<GraphicBuffer> out;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            out.swap(slot);
        }
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BM_Slot);

void BM_PoolTakeAndReturn(benchmark::State &state)
{
    const auto pool = std::make_shared<Veltra::Ocelle::BufferPool<PooledBuffer>>();
    for (auto _ : state)
        benchmark::DoNotOptimize(pool->take());
}
BENCHMARK(BM_PoolTakeAndReturn);

void BM_PublishToBusyOutput(benchmark::State &state)
{
    const std::vector<std::uint8_t> memory(640 * 480 * 3 / 2);
    CountingSurface surface([] {});
    Veltra::Ocelle::VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    const auto buffer = liveBuffer(memory, 640, 480);
    output.onGraphicBuffer(buffer); // its event is never served
    for (auto _ : state)
        output.onGraphicBuffer(buffer);
}
BENCHMARK(BM_PublishToBusyOutput);

void BM_PublishAndPresent(benchmark::State &state)
{
    const std::vector<std::uint8_t> memory(640 * 480 * 3 / 2);
    CountingSurface surface([] {});
    Veltra::Ocelle::VideoOutputQt5 output;
    output.setVideoSurface(&surface);
    const auto buffer = liveBuffer(memory, 640, 480);
    for (auto _ : state) {
        output.onGraphicBuffer(buffer);
        QCoreApplication::sendPostedEvents();
    }
    if (surface.pictures() < quint64(state.iterations()))
        state.SkipWithError("pictures were not presented");
}
BENCHMARK(BM_PublishAndPresent);

void BM_PatternUpdate(benchmark::State &state)
{
    const int width = int(state.range(0));
    const int height = int(state.range(1));
    std::vector<std::uint8_t> memory(std::size_t(width) * std::size_t(height) * 3 / 2);
    const Veltra::Ocelle::TestPattern pattern(width, height, PixelFormat::NV12);
    const Veltra::Ocelle::TestPattern::Planes planes { {
            { memory.data(), width },
            { memory.data() + std::size_t(width) * std::size_t(height), width },
            { nullptr, 0 },
    } };
    pattern.paintBackground(planes);
    std::uint64_t sequence = 0;
    for (auto _ : state) {
        pattern.update(planes, sequence, std::int64_t(sequence) * 33333);
        ++sequence;
    }
}
BENCHMARK(BM_PatternUpdate)->Args({ 640, 480 })->Args({ 1920, 1080 });

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
