// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/cameramanager.h>
#include <ocelle/global.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

class GraphicBuffer;

/*! One size and rate that a camera can deliver. */
struct CameraCapability
{
    std::int32_t width;      // pixels
    std::int32_t height;     // pixels
    std::uint32_t frameRate; // frames per second
};

/*! Layout of a picture's samples. Other values may arrive; they name layouts unknown here. */
enum class PixelFormat : std::uint32_t {
    YUV420Planar = 1,
    YUV420SemiPlanar = 2,
    NV21 = 0x3132564E, // FourCC N, V, 2, 1
    YU12 = 0x32315559, // FourCC Y, U, 1, 2
    NV12 = 0x3231564E, // FourCC N, V, 1, 2
};

/*! What onCameraParameterChanged() reports; no value is used here. */
enum class CameraParameter : std::int32_t {
    UnknownParameter0 = 0,
};

/*!
 * Receives what an opened camera delivers.
 *
 * Threads: called on threads of the library, never on a Qt thread.
 */
class OCELLE_EXPORT CameraListener
{
public:
    virtual ~CameraListener();
    virtual void onCameraFrame(std::shared_ptr<GraphicBuffer> buffer) = 0;
    virtual void onCameraError(const std::string &message) = 0; // UTF-8
    virtual void onCameraParameterChanged(CameraParameter parameter, const std::string &value) = 0;
};

/*!
 * One opened camera.
 *
 * Owner:   whoever holds the shared pointer from CameraManager::openCamera().
 * Errors:  false; setListener() throws std::system_error if the mutex fails.
 *
 * The order of the virtual operations and of the data members is a binary contract.
 */
class OCELLE_EXPORT Camera
{
public:
    virtual ~Camera();

    /*! Fills \a info; false if it was not filled. */
    virtual bool getInfo(CameraInfo &info) = 0;
    virtual std::vector<PixelFormat> getSupportedPixelFormats() = 0;

    /*! Starts delivery at \a capability; \a flags is always 255 here. */
    virtual bool startCapture(const CameraCapability &capability, int flags) = 0;
    virtual void stopCapture() = 0;
    virtual bool captureStarted() = 0;

    virtual void reserved8();
    virtual void reserved9();
    virtual void reserved10();

    /*! Makes \a listener the one listener, not owned; null detaches. */
    virtual void setListener(CameraListener *listener)
    {
        std::lock_guard<std::mutex> lock(m_listenerMutex);
        m_listener = listener;
    }

protected:
    CameraListener *m_listener = nullptr;
    std::mutex m_listenerMutex; // guards m_listener
};

} // namespace Ocelle
} // namespace Veltra
