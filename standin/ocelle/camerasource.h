// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/camera.h>
#include <ocelle/cameramanager.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

/*! What a source tells of one of its cameras, without opening it. */
struct CameraDescription
{
    CameraInfo info {};
    std::vector<CameraCapability> capabilities; // preferred first; empty while not known
    std::vector<PixelFormat> formats;           // the first one is what it delivers
    std::uint64_t revision = 0; // another one where a different camera has come behind the same id
};

/*!
 * One kind of camera: finds its cameras, tells when they come and go, and opens them.
 *
 * Threads: cameras() and open() from any thread, several at a time; the function given to watch()
 *          is called on a thread of the source's own, with no lock of the source held. It only
 *          takes a note and returns.
 * Owner:   the camera manager. Cameras that it opened may outlive it.
 * Errors:  an empty pointer from open(); the reason goes to standard error, one line.
 */
class CameraSource
{
public:
    virtual ~CameraSource() = default;

    /*! The cameras present now, in a stable order. */
    virtual std::vector<CameraDescription> cameras() = 0;

    /*!
     * What the camera called \a id can do, asked for where cameras() left it out, which it does
     * where telling takes opening the camera. False where it cannot be told.
     */
    virtual bool getCapabilities(const std::string &, std::vector<CameraCapability> &)
    {
        return true; // they are as cameras() told
    }

    /*! Has \a changed called after cameras() changed; called once, before anything else. */
    virtual void watch(std::function<void()> changed) = 0;

    /*! Opens the camera called \a id; empty where it is not one of this source's or does not open. */
    virtual std::shared_ptr<Camera> open(const std::string &id) = 0;
};

} // namespace Ocelle
} // namespace Veltra
