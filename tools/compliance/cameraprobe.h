// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>

#include <ocelle/camera.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Compliance {

class Session;

/*!
 * Listens to a camera.
 *
 * Threads: the callbacks on threads of the library; the rest on any.
 * Owner:   the Session.
 */
class CameraProbe : public Veltra::Ocelle::CameraListener
{
public:
    using Clock = std::chrono::steady_clock;

    explicit CameraProbe(Session *session);

    void onCameraFrame(std::shared_ptr<Veltra::Ocelle::GraphicBuffer> buffer) override;
    void onCameraError(const std::string &message) override;
    void onCameraParameterChanged(Veltra::Ocelle::CameraParameter parameter,
                                  const std::string &value) override;

    /*! Forgets what came so far; callbacks are welcome from now on. */
    void welcome();
    /*! Callbacks are not to come any more. */
    void forbid();

    int pictures() const;
    int forbidden() const; // callbacks that came all the same
    QString error() const;
    /*! When the pictures came, oldest first. */
    std::vector<Clock::time_point> arrivals() const;
    /*! Has the next picture looked at by the session's viewer. */
    void showNext();

private:
    void note();

    Session *const m_session;
    mutable std::mutex m_mutex; // guards the members below
    std::vector<Clock::time_point> m_arrivals;
    bool m_isForbidden = false;
    int m_forbidden = 0;
    bool m_showsNext = false;
    QString m_error;
};

/*!
 * A camera that is opened, and closed at the end, whatever happens between.
 *
 * Threads: the check's.
 */
class CameraRun
{
public:
    CameraRun(Session *session, std::string id);
    ~CameraRun();
    CameraRun(const CameraRun &) = delete;
    CameraRun &operator=(const CameraRun &) = delete;

    bool open(); // and has the probe listen
    bool start(const Veltra::Ocelle::CameraCapability &capability);
    void stop();
    void detach(); // takes the listener away
    void close();
    bool isStarted(); // as the camera tells
    bool waitForPictures(int count);

    Veltra::Ocelle::Camera &camera() { return *m_camera; }
    CameraProbe &probe() { return *m_probe; }
    /*! Why there are no pictures, as far as the camera tells. */
    QString trouble() const;

private:
    Session *const m_session;
    const std::string m_id;
    CameraProbe *const m_probe;
    std::shared_ptr<Veltra::Ocelle::Camera> m_camera;
    bool m_isStarted = false;
    bool m_isAttached = false; // the probe
};

/*! What the camera lists; empty where it cannot be listed. */
std::vector<Veltra::Ocelle::CameraCapability> capabilitiesOf(Session *session,
                                                             const std::string &id);
/*! "640x480 at 30/s" */
QString describe(const Veltra::Ocelle::CameraCapability &capability);

} // namespace Compliance
