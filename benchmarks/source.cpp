// SPDX-License-Identifier: BSD-3-Clause
// Runs a camera of the platform with nobody behind it, and tells what that took: CPU time per
// picture, pictures per second, and how long the first picture took after the start.

#include "cputime.h"

#include <ocelle/camera.h>
#include <semaphore.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr std::uint64_t WarmUp = 15; // pictures

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

class Counter : public Veltra::Ocelle::CameraListener
{
public:
    Counter(Clock::time_point start, std::uint64_t pictures)
        : m_start(start)
        , m_pictures(pictures)
    {
        sem_init(&m_done, 0, 0);
    }
    ~Counter() override { sem_destroy(&m_done); }

    void onCameraFrame(std::shared_ptr<Veltra::Ocelle::GraphicBuffer>) override
    {
        ++m_count;
        if (m_count == 1) {
            m_first = millisecondsSince(m_start);
        } else if (m_count == WarmUp) {
            m_cpu = cpuTime();
            m_warm = Clock::now();
        } else if (m_count == WarmUp + m_pictures) {
            m_cpu = cpuTime() - m_cpu;
            m_seconds = millisecondsSince(m_warm) / 1e3;
            sem_post(&m_done);
        }
    }
    void onCameraError(const std::string &message) override
    {
        std::fprintf(stderr, "%s\n", message.c_str());
        std::exit(1);
    }
    void onCameraParameterChanged(Veltra::Ocelle::CameraParameter, const std::string &) override {}

    void wait() { sem_wait(&m_done); }
    void print() const
    {
        std::printf("%.1f %.2f %.2f\n", m_cpu * 1e6 / double(m_pictures),
                    double(m_pictures) / m_seconds, m_first);
    }

private:
    const Clock::time_point m_start;
    const std::uint64_t m_pictures;
    std::uint64_t m_count = 0;
    double m_first = 0; // milliseconds
    double m_cpu = 0;   // seconds
    double m_seconds = 0;
    Clock::time_point m_warm;
    sem_t m_done;
};

} // namespace

int main(int argc, char *argv[])
{
    const std::uint64_t pictures = argc == 3 ? std::strtoull(argv[2], nullptr, 10) : 0;
    if (pictures == 0) {
        std::fprintf(stderr, "usage: bench-source CAMERA PICTURES\n");
        return 2;
    }
    const Clock::time_point start = Clock::now();
    const std::shared_ptr<Veltra::Ocelle::Camera> camera = OcelleManager()->openCamera(argv[1]);
    if (!camera) {
        std::fprintf(stderr, "there is no camera %s\n", argv[1]);
        return 1;
    }
    Counter counter(start, pictures);
    camera->setListener(&counter);
    if (!camera->startCapture({ 640, 480, 30 }, 255))
        return 1;
    counter.wait();
    camera->stopCapture();
    camera->setListener(nullptr);
    counter.print();
    return 0;
}
