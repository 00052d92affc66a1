// SPDX-License-Identifier: BSD-3-Clause
#include "ocelleprovider.h"

#include "ocellecaptureservice.h"
#include "ocelledecodeservice.h"
#include "ocelleencodeservice.h"

#include <QMutexLocker>

using Veltra::Ocelle::CameraFacing;
using Veltra::Ocelle::CameraInfo;
using Veltra::Ocelle::CodecType;
using Veltra::Ocelle::VideoCodecInfo;

namespace {

const char CameraService[] = "veltra.palaver.camera";
const char DecoderService[] = "veltra.palaver.decoder";
const char EncoderService[] = "veltra.palaver.encoder";
const char QtCameraService[] = "org.qt-project.qt.camera"; // has features, but no service here

QByteArray toByteArray(const std::string &id)
{
    return QByteArray(id.data(), static_cast<int>(id.size()));
}

} // namespace

OcelleProvider::OcelleProvider()
    : OcelleProvider(OcelleManager(), OcelleCodecManager())
{
}

OcelleProvider::OcelleProvider(Veltra::Ocelle::CameraManager *cameraManager,
                               Veltra::Ocelle::CodecManager *codecManager)
    : m_cameraManager(cameraManager)
    , m_codecManager(codecManager)
{
    init();
}

OcelleProvider::~OcelleProvider()
{
    m_cameraManager->setListener(nullptr);
}

void OcelleProvider::init()
{
    m_cameraManager->setListener(this);
    updateCameraList();
    readCodecs();
}

Veltra::Ocelle::CameraManager *OcelleProvider::cameraManager() const
{
    return m_cameraManager;
}

Veltra::Ocelle::CodecManager *OcelleProvider::codecManager() const
{
    return m_codecManager;
}

void OcelleProvider::updateCameraList()
{
    quint64 refresh;
    {
        QMutexLocker locker(&m_registryMutex);
        refresh = ++m_refreshesBegun;
    }

    QList<QByteArray> ids;
    CameraInfos infos;
    for (int i = 0; i < m_cameraManager->getNumberOfCameras(); ++i) {
        CameraInfo info {};
        if (!m_cameraManager->getCameraInfo(i, info))
            continue;
        const QByteArray id = toByteArray(info.id);
        ids.append(id);
        infos.insert(id, info);
    }

    {
        // Refreshes on several threads may overtake each other: what a later one saw stays.
        QMutexLocker locker(&m_registryMutex);
        if (refresh > m_refreshShown) {
            m_refreshShown = refresh;
            m_cameraIds.swap(ids);
            m_cameraInfos.swap(infos);
        }
    }
    emit devicesChanged(CameraService);
}

QList<QByteArray> OcelleProvider::listCodecIds(bool encoders) const
{
    QList<QByteArray> ids;
    for (auto it = m_codecInfos.cbegin(); it != m_codecInfos.cend(); ++it) {
        if (it->isEncoder == encoders)
            ids.append(it.key());
    }
    return ids;
}

QMediaService *OcelleProvider::create(const QString &key)
{
    if (key == QLatin1String(CameraService))
        return new OcelleCaptureService(this, nullptr);
    if (key == QLatin1String(DecoderService))
        return new OcelleDecodeService(this, nullptr);
    if (key == QLatin1String(EncoderService))
        return new OcelleEncodeService(this, nullptr);
    return nullptr;
}

void OcelleProvider::release(QMediaService *service)
{
    delete service;
}

QList<QByteArray> OcelleProvider::devices(const QByteArray &service) const
{
    if (service == CameraService)
        return cameraIds();
    if (service == EncoderService)
        return listCodecIds(true);
    if (service == DecoderService)
        return listCodecIds(false);
    return QList<QByteArray>();
}

QByteArray OcelleProvider::defaultDevice(const QByteArray &) const
{
    const QList<QByteArray> ids = cameraIds();
    for (const QByteArray &id : ids) {
        if (cameraPosition(id) == QCamera::FrontFace)
            return id;
    }
    return ids.value(0);
}

QMediaServiceProviderHint::Features
OcelleProvider::supportedFeatures(const QByteArray &service) const
{
    if (service == QtCameraService || service == CameraService || service == DecoderService)
        return QMediaServiceProviderHint::VideoSurface;
    return QMediaServiceProviderHint::Features();
}

QString OcelleProvider::deviceDescription(const QByteArray &, const QByteArray &device)
{
    const CameraInfos infos = cameraInfos();
    const auto it = infos.constFind(device);
    return it == infos.cend() ? QString() : QString::fromStdString(it->name);
}

QCamera::Position OcelleProvider::cameraPosition(const QByteArray &device) const
{
    const CameraInfos infos = cameraInfos();
    const auto it = infos.constFind(device);
    if (it == infos.cend())
        return QCamera::UnspecifiedPosition;
    return it->facing == CameraFacing::Front ? QCamera::FrontFace : QCamera::BackFace;
}

int OcelleProvider::cameraOrientation(const QByteArray &device) const
{
    const CameraInfos infos = cameraInfos();
    const auto it = infos.constFind(device);
    return it == infos.cend() ? 0 : 360 - it->mountAngle;
}

QString OcelleProvider::codecType(const QByteArray &codec) const
{
    switch (m_codecInfos.value(codec).type) {
    case CodecType::VP8:
        return QStringLiteral("video/vp8");
    case CodecType::VP9:
        return QStringLiteral("video/vp9");
    case CodecType::H264:
        return QStringLiteral("video/h264");
    case CodecType::H265:
        return QStringLiteral("video/h265");
    case CodecType::Unknown:
        break;
    }
    return QString(); // a kind without a MIME type, or no such codec
}

bool OcelleProvider::codecIsEncoder(const QByteArray &codec) const
{
    return m_codecInfos.value(codec).isEncoder;
}

bool OcelleProvider::codecIsHardwareAccelerated(const QByteArray &codec) const
{
    return m_codecInfos.value(codec).isHardwareAccelerated;
}

int OcelleProvider::codecMaxInstances(const QByteArray &codec) const
{
    return m_codecInfos.value(codec).maxInstances;
}

void OcelleProvider::readCodecs()
{
    if (!m_codecManager)
        return;
    for (const VideoCodecInfo &info : m_codecManager->getVideoCodecs())
        m_codecInfos.insert(toByteArray(info.codecName), info);
}

QList<QByteArray> OcelleProvider::cameraIds() const
{
    QMutexLocker locker(&m_registryMutex);
    return m_cameraIds;
}

OcelleProvider::CameraInfos OcelleProvider::cameraInfos() const
{
    QMutexLocker locker(&m_registryMutex);
    return m_cameraInfos;
}

void OcelleProvider::onCameraAdded(const std::string &)
{
    updateCameraList();
}

void OcelleProvider::onCameraRemoved(const std::string &)
{
    updateCameraList();
}
