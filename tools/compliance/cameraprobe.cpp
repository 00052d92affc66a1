// SPDX-License-Identifier: BSD-3-Clause
#include "cameraprobe.h"

#include "session.h"

#include <utility>

namespace Compliance {

using namespace Veltra::Ocelle;

CameraProbe::CameraProbe(Session *session)
    : m_session(session)
{
}

void CameraProbe::onCameraFrame(std::shared_ptr<GraphicBuffer> buffer)
{
    note();
    bool isShown = false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_arrivals.push_back(Clock::now());
        isShown = std::exchange(m_showsNext, false);
    }
    if (isShown)
        m_session->viewer().show(std::move(buffer));
    m_session->wake();
}

void CameraProbe::onCameraError(const std::string &message)
{
    note();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_error = QString::fromStdString(message);
    }
    m_session->wake();
}

void CameraProbe::onCameraParameterChanged(CameraParameter, const std::string &)
{
    note();
}

void CameraProbe::note()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_isForbidden)
        ++m_forbidden;
}

void CameraProbe::welcome()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_arrivals.clear();
    m_isForbidden = false;
    m_error.clear();
}

void CameraProbe::forbid()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isForbidden = true;
}

int CameraProbe::pictures() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return int(m_arrivals.size());
}

int CameraProbe::forbidden() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_forbidden;
}

QString CameraProbe::error() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_error;
}

std::vector<CameraProbe::Clock::time_point> CameraProbe::arrivals() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_arrivals;
}

void CameraProbe::showNext()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_showsNext = true;
}

CameraRun::CameraRun(Session *session, std::string id)
    : m_session(session)
    , m_id(std::move(id))
    , m_probe(session->keep<CameraProbe>(session))
{
}

CameraRun::~CameraRun()
{
    m_session->guard([this] { close(); });
}

bool CameraRun::open()
{
    CameraManager *const manager = OcelleManager();
    m_camera = m_session->call(QStringLiteral("openCamera()"),
                               [&] { return manager->openCamera(m_id); });
    m_isAttached = bool(m_camera);
    if (m_camera)
        m_session->call(QStringLiteral("Camera::setListener()"),
                        [&] { m_camera->setListener(m_probe); });
    return bool(m_camera);
}

bool CameraRun::start(const CameraCapability &capability)
{
    constexpr int flags = 255; // what the back end passes
    m_probe->welcome();
    m_isStarted = m_session->call(QStringLiteral("startCapture()"),
                                  [&] { return m_camera->startCapture(capability, flags); });
    return m_isStarted;
}

void CameraRun::stop()
{
    m_isStarted = false; // first: what throws is not called again
    m_session->call(QStringLiteral("stopCapture()"), [&] { m_camera->stopCapture(); });
    m_probe->forbid();
}

void CameraRun::detach()
{
    m_isAttached = false;
    m_session->call(QStringLiteral("Camera::setListener()"),
                    [&] { m_camera->setListener(nullptr); });
    m_probe->forbid();
}

void CameraRun::close()
{
    if (!m_camera)
        return;
    if (m_isStarted)
        stop();
    if (m_isAttached)
        detach();
    m_session->call(QStringLiteral("dropping the camera"), [&] { m_camera.reset(); });
}

bool CameraRun::isStarted()
{
    return m_session->call(QStringLiteral("captureStarted()"),
                           [&] { return m_camera->captureStarted(); });
}

bool CameraRun::waitForPictures(int count)
{
    return m_session->waitUntil([&] { return m_probe->pictures() >= count; },
                                m_session->patience().wait);
}

QString CameraRun::trouble() const
{
    const QString error = m_probe->error();
    return error.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(error);
}

std::vector<CameraCapability> capabilitiesOf(Session *session, const std::string &id)
{
    CameraManager *const manager = OcelleManager();
    const int count = session->call(QStringLiteral("getNumberOfCameras()"),
                                    [&] { return manager->getNumberOfCameras(); });
    std::vector<CameraCapability> capabilities;
    for (int index = 0; index < count; ++index) {
        CameraInfo info {};
        const bool isFilled = session->call(QStringLiteral("getCameraInfo()"),
                                            [&] { return manager->getCameraInfo(index, info); });
        if (!isFilled || info.id != id)
            continue;
        const bool isListed = session->call(QStringLiteral("getCameraCapabilities()"), [&] {
            return manager->getCameraCapabilities(info, capabilities);
        });
        return isListed ? capabilities : std::vector<CameraCapability>();
    }
    return capabilities;
}

QString describe(const CameraCapability &capability)
{
    return QStringLiteral("%1x%2 at %3/s")
            .arg(capability.width)
            .arg(capability.height)
            .arg(capability.frameRate);
}

} // namespace Compliance
