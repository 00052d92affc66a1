// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <ocelle/global.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Veltra {
namespace Ocelle {

class Camera;
struct CameraCapability;

/*! Which way a camera looks. Every value but Front is treated as back-facing. */
enum class CameraFacing : std::int32_t {
    Back = 0,
    Front = 1,
};

/*! Describes one camera; a value-initialised record stands for a missing one. */
struct CameraInfo
{
    std::string id;     // stable id, handed back to openCamera()
    std::string name;   // for people, UTF-8
    std::string extra1; // the library's own
    CameraFacing facing;
    std::int32_t mountAngle; // of the sensor, degrees
    std::string extra2;      // the library's own
};

/*!
 * Hears of cameras that come and go.
 *
 * Threads: called on a thread of the library's choosing.
 */
class OCELLE_EXPORT CameraManagerListener
{
public:
    virtual ~CameraManagerListener();
    virtual void onCameraAdded(const std::string &id) = 0;
    virtual void onCameraRemoved(const std::string &id) = 0;
};

/*!
 * The platform's cameras.
 *
 * Owner:   the library, one per process; callers never delete it.
 * Threads: any thread. setListener() and the library's own reads of the listener are serialised by
 *          the mutex below.
 * Errors:  false or an empty pointer; setListener() throws std::system_error if the mutex fails.
 *
 * The order of the virtual operations and of the data members is a binary contract.
 */
class OCELLE_EXPORT CameraManager
{
public:
    virtual ~CameraManager();
    virtual void reserved3();

    /*! How many cameras are present now. */
    virtual int getNumberOfCameras() = 0;

    /*! Fills \a info for \a index, 0 to count - 1; false if it was not filled. */
    virtual bool getCameraInfo(int index, CameraInfo &info) = 0;

    /*! Fills \a caps with what \a info's camera can deliver; false if that cannot be listed. */
    virtual bool getCameraCapabilities(const CameraInfo &info,
                                       std::vector<CameraCapability> &caps) = 0;

    /*! Opens the camera called \a id; empty if it cannot be opened. */
    virtual std::shared_ptr<Camera> openCamera(const std::string &id) = 0;

    virtual void reserved8();
    virtual void reserved9();
    virtual void reserved10();

    /*! Makes \a listener the one listener, not owned; null detaches. */
    virtual void setListener(CameraManagerListener *listener)
    {
        std::lock_guard<std::mutex> lock(m_listenerMutex);
        m_listener = listener;
    }

protected:
    CameraManagerListener *m_listener = nullptr;
    std::mutex m_listenerMutex; // guards m_listener
};

} // namespace Ocelle
} // namespace Veltra

/*! The process-wide camera manager, owned by the library. */
extern "C" OCELLE_EXPORT Veltra::Ocelle::CameraManager *OcelleManager();
