// SPDX-License-Identifier: BSD-3-Clause
#include "v4l2system.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>

namespace Veltra {
namespace Ocelle {

int KernelV4l2System::open(const std::string &node)
{
    int device;
    do
        device = ::open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    while (device < 0 && errno == EINTR);
    return device;
}

void KernelV4l2System::close(int device)
{
    ::close(device);
}

int KernelV4l2System::ioctl(int device, unsigned long request, void *argument)
{
    int result;
    do
        result = ::ioctl(device, request, argument);
    while (result < 0 && errno == EINTR);
    return result;
}

void *KernelV4l2System::map(int device, std::size_t length, std::int64_t offset)
{
    void *const memory =
            ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, device, off_t(offset));
    return memory == MAP_FAILED ? nullptr : memory;
}

void KernelV4l2System::unmap(void *memory, std::size_t length)
{
    ::munmap(memory, length);
}

V4l2System::Wait KernelV4l2System::wait(int device, int wakeUp, std::chrono::milliseconds timeout)
{
    pollfd waited[] = { { device, POLLIN, 0 }, { wakeUp, POLLIN, 0 } };
    const int count = ::poll(waited, 2, int(timeout.count()));
    if (count < 0)
        return errno == EINTR ? Wait::Woken : Wait::Broken;
    if (waited[1].revents)
        return Wait::Woken;
    if (waited[0].revents & (POLLERR | POLLHUP | POLLNVAL))
        return Wait::Broken;
    return waited[0].revents ? Wait::Ready : Wait::TimedOut;
}

WakeUp::WakeUp()
    : m_descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

WakeUp::~WakeUp()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

void WakeUp::wake() const
{
    const std::uint64_t one = 1;
    // It fails only where it is far beyond being read, and then it wakes all the same.
    [[maybe_unused]] const ssize_t written = ::write(m_descriptor, &one, sizeof one);
}

void WakeUp::drain() const
{
    std::uint64_t count;
    [[maybe_unused]] const ssize_t got = ::read(m_descriptor, &count, sizeof count);
}

} // namespace Ocelle
} // namespace Veltra
