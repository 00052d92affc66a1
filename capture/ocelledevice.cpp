// SPDX-License-Identifier: BSD-3-Clause
#include "ocelledevice.h"

#include <QMutexLocker>

#include <utility>

using Veltra::Ocelle::Camera;
using Veltra::Ocelle::CameraCapability;
using Veltra::Ocelle::CameraFacing;
using Veltra::Ocelle::CameraInfo;
using Veltra::Ocelle::PixelFormat;

namespace {

constexpr int CaptureFlags = 255; // the one value that the library is ever given

} // namespace

/*! Keeps the device's camera in place while a thread calls it. */
class OcelleDevice::CameraUse
{
public:
    explicit CameraUse(const OcelleDevice *device)
        : m_device(device)
    {
        QMutexLocker locker(&m_device->m_cameraMutex);
        m_camera = m_device->m_camera.get();
        ++m_device->m_cameraUsers;
    }
    ~CameraUse()
    {
        QMutexLocker locker(&m_device->m_cameraMutex);
        if (--m_device->m_cameraUsers == 0)
            m_device->m_cameraUnused.wakeAll();
    }

    explicit operator bool() const { return m_camera; }
    Camera *operator->() const { return m_camera; }

private:
    Q_DISABLE_COPY(CameraUse)

    const OcelleDevice *const m_device;
    Camera *m_camera;
};

OcelleDevice::OcelleDevice(Veltra::Ocelle::CameraManager *manager)
    : m_cameraManager(manager)
{
}

OcelleDevice::~OcelleDevice()
{
    if (m_camera)
        m_camera->stopCapture();
}

bool OcelleDevice::load(const QString &id, Veltra::Ocelle::CameraListener *listener)
{
    if (status() != QCamera::UnloadedStatus) {
        setStatus(QCamera::UnloadedStatus);
        return false;
    }
    setStatus(QCamera::LoadingStatus);
    replaceCamera(m_cameraManager->openCamera(id.toUtf8().toStdString()));
    if (!m_camera) {
        setStatus(QCamera::UnloadedStatus);
        return false;
    }
    m_camera->setListener(listener);
    setStatus(QCamera::LoadedStatus);
    return true;
}

bool OcelleDevice::start(const QCameraViewfinderSettings &settings)
{
    if (status() == QCamera::LoadedStatus || status() == QCamera::StandbyStatus) {
        setStatus(QCamera::StartingStatus);
        m_capability.width = settings.resolution().width();
        m_capability.height = settings.resolution().height();
        // By way of 64 bits: a rate is any unsigned 32-bit number, and is cut off towards zero.
        m_capability.frameRate =
                static_cast<std::uint32_t>(static_cast<qint64>(settings.minimumFrameRate()));
        if (m_camera && m_camera->startCapture(m_capability, CaptureFlags)) {
            setStatus(QCamera::ActiveStatus);
            return true;
        }
    }
    setStatus(QCamera::LoadedStatus);
    return false;
}

void OcelleDevice::stop()
{
    if (status() <= QCamera::StandbyStatus)
        return;
    if (m_camera) {
        setStatus(QCamera::StoppingStatus);
        m_camera->stopCapture();
    }
    setStatus(QCamera::StandbyStatus);
}

void OcelleDevice::close()
{
    if (m_camera && status() > QCamera::StandbyStatus) {
        setStatus(QCamera::StoppingStatus);
        m_camera->stopCapture();
    }
    setStatus(QCamera::UnloadingStatus);
    replaceCamera(nullptr);
    setStatus(QCamera::UnloadedStatus);
}

bool OcelleDevice::captureStarted()
{
    return m_camera && m_camera->captureStarted();
}

QCamera::Status OcelleDevice::status() const
{
    return m_status;
}

void OcelleDevice::setStatus(QCamera::Status status)
{
    if (m_status.exchange(status) != status)
        emit statusChanged(status);
}

QCamera::Position OcelleDevice::facing() const
{
    const CameraUse camera(this);
    CameraInfo info {};
    if (!camera || !camera->getInfo(info))
        return QCamera::UnspecifiedPosition;
    return info.facing == CameraFacing::Front ? QCamera::FrontFace : QCamera::BackFace;
}

QList<QCameraViewfinderSettings> OcelleDevice::supportedViewfinderSettings() const
{
    QList<QCameraViewfinderSettings> list;
    const CameraUse camera(this);
    CameraInfo info {};
    if (!camera || !camera->getInfo(info))
        return list;
    const std::vector<PixelFormat> formats = camera->getSupportedPixelFormats();
    std::vector<CameraCapability> capabilities;
    if (!m_cameraManager->getCameraCapabilities(info, capabilities))
        return list;

    for (const PixelFormat format : formats) {
        for (const CameraCapability &capability : capabilities) {
            QCameraViewfinderSettings settings;
            settings.setResolution(capability.width, capability.height);
            // The list carries the resolution in this field too; choosing compares it as it stands.
            settings.setPixelAspectRatio(capability.width, capability.height);
            settings.setPixelFormat(toQtPixelFormat(format));
            settings.setMinimumFrameRate(static_cast<float>(capability.frameRate));
            settings.setMaximumFrameRate(static_cast<float>(capability.frameRate));
            list.append(settings);
        }
    }
    return list;
}

QVideoFrame::PixelFormat OcelleDevice::toQtPixelFormat(PixelFormat format) const
{
    switch (format) {
    case PixelFormat::YUV420Planar:
    case PixelFormat::YU12:
        return QVideoFrame::Format_YUV420P;
    case PixelFormat::YUV420SemiPlanar:
    case PixelFormat::NV12:
        return QVideoFrame::Format_NV12;
    case PixelFormat::NV21:
        return QVideoFrame::Format_NV21;
    }
    return QVideoFrame::Format_Invalid; // a layout that only the library knows
}

void OcelleDevice::replaceCamera(std::shared_ptr<Camera> camera)
{
    QMutexLocker locker(&m_cameraMutex);
    while (m_cameraUsers > 0)
        m_cameraUnused.wait(&m_cameraMutex);
    m_camera.swap(camera);
    locker.unlock(); // the old camera goes with no lock held
}
