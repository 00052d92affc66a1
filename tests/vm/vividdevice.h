// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <linux/videodev2.h>

#include <cstdint>
#include <string>

/*! One of the virtual machine's cameras, as only its driver lets it be handled. */
class VividDevice
{
public:
    /*! The capture node of the \a instance th camera, wherever it is now. */
    explicit VividDevice(int instance = 0);
    ~VividDevice();
    VividDevice(const VividDevice &) = delete;
    VividDevice &operator=(const VividDevice &) = delete;

    bool isOpen() const { return m_device >= 0; }
    std::string node() const { return m_node; }
    /*! Sets the control called \a name; false, with a line, where there is none. */
    bool set(const std::string &name, std::int64_t value);
    /*! Controls that have an effect only at the next streaming keep it until then. */
    void setStillPicture();

    /*! Unplugs both cameras, or plugs them in again; does not wait for udev. */
    static bool unplug();
    static bool plug();
    /*! Loads the driver anew with \a options. */
    static bool reload(const std::string &options);
    /*! Waits until udev has dealt with all events. */
    static bool settle();
    /*! Has the kernel tell of all devices once more. */
    static bool announce();
    static std::string nodeOf(int instance);

private:
    std::string m_node;
    int m_device;
};
