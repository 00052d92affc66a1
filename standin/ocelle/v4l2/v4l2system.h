// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Veltra {
namespace Ocelle {

/*!
 * What is asked of the operating system about one video device; tests put a scripted one in place.
 *
 * Threads: any.
 * Errors:  as those of the system calls: -1, null or false, with errno set. Calls that a signal
 *          interrupts are made again.
 */
class V4l2System
{
public:
    enum class Wait { Ready, Broken, Woken, TimedOut };

    virtual ~V4l2System() = default;

    /*! Without blocking, for reading and writing. */
    virtual int open(const std::string &node) = 0;
    virtual void close(int device) = 0;
    virtual int ioctl(int device, unsigned long request, void *argument) = 0;
    virtual void *map(int device, std::size_t length, std::int64_t offset) = 0;
    virtual void unmap(void *memory, std::size_t length) = 0;

    /*!
     * Until \a device has a picture or is broken, or \a wakeUp, an event descriptor, is written. A
     * negative \a device is not waited for.
     */
    virtual Wait wait(int device, int wakeUp, std::chrono::milliseconds timeout) = 0;
};

/*! The real one. */
class KernelV4l2System final : public V4l2System
{
public:
    int open(const std::string &node) override;
    void close(int device) override;
    int ioctl(int device, unsigned long request, void *argument) override;
    void *map(int device, std::size_t length, std::int64_t offset) override;
    void unmap(void *memory, std::size_t length) override;
    Wait wait(int device, int wakeUp, std::chrono::milliseconds timeout) override;
};

/*! An event descriptor that any thread may write to end a wait. */
class WakeUp
{
public:
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp &) = delete;
    WakeUp &operator=(const WakeUp &) = delete;

    void wake() const;
    void drain() const;
    int descriptor() const { return m_descriptor; }

private:
    const int m_descriptor; // -1 where the system had none left
};

} // namespace Ocelle
} // namespace Veltra
