// SPDX-License-Identifier: BSD-3-Clause
#include "cameralist.h"

#include "backendplugin.h"

#include <QCamera>
#include <QDebug>
#include <QEventLoop>
#include <QSet>
#include <QTimer>

#include <ocelle/cameramanager.h>

#include <algorithm>

namespace Tool {
namespace {
constexpr int LoadTimeout = 10000; // ms

QSet<QString> platformIds()
{
    using namespace Veltra::Ocelle;
    CameraManager *const manager = OcelleManager();
    QSet<QString> ids;
    CameraInfo info;
    for (int index = 0; manager && manager->getCameraInfo(index, info); ++index)
        ids.insert(QString::fromStdString(info.id));
    return ids;
}

} // namespace

QList<QCameraInfo> availableCameras()
{
    QList<QCameraInfo> cameras = QCameraInfo::availableCameras();
    const QSet<QString> ours = platformIds();
    cameras.erase(std::remove_if(cameras.begin(), cameras.end(),
                                 [&ours](const QCameraInfo &camera) {
                                     return !ours.contains(camera.deviceName());
                                 }),
                  cameras.end());
    return cameras;
}

QCameraInfo findCamera(const QString &id)
{
    const QList<QCameraInfo> cameras = availableCameras();
    for (const QCameraInfo &camera : cameras) {
        if (camera.deviceName() == id)
            return camera;
    }
    for (const QCameraInfo &camera : cameras) {
        const QByteArray plain = QByteArray::fromPercentEncoding(camera.deviceName().toLatin1());
        if (plain == id.toUtf8())
            return camera;
    }
    return QCameraInfo();
}

QString noSuchCamera(const QString &id)
{
    QStringList ids;
    for (const QCameraInfo &camera : availableCameras())
        ids.append(camera.deviceName());
    const QString none = QStringLiteral("there is no camera \"%1\"; ").arg(id);
    QString reason;
    if (ids.isEmpty() && !backendPlugin(&reason))
        return none + reason;
    if (ids.isEmpty())
        return none + QStringLiteral("there are none at all");
    return none + (ids.size() == 1 ? QStringLiteral("there is ") : QStringLiteral("there are ")) +
           joined(ids);
}

QList<QCameraViewfinderSettings> offeredSettings(const QCameraInfo &info, QString *error)
{
    QCamera camera(info);
    QEventLoop loop;
    QTimer timeout;
    timeout.setSingleShot(true);
    QObject::connect(&timeout, &QTimer::timeout, &loop, &QEventLoop::quit);
    QObject::connect(&camera, &QCamera::statusChanged, &loop, [&loop](QCamera::Status status) {
        if (status == QCamera::LoadedStatus)
            loop.quit();
    });
    QObject::connect(&camera, &QCamera::errorOccurred, &loop, [&loop](QCamera::Error code) {
        if (code != QCamera::NoError)
            loop.quit();
    });
    camera.load();
    if (camera.status() != QCamera::LoadedStatus && camera.error() == QCamera::NoError) {
        timeout.start(LoadTimeout);
        loop.exec();
    }
    if (camera.status() == QCamera::LoadedStatus) {
        const QList<QCameraViewfinderSettings> offered = camera.supportedViewfinderSettings();
        if (offered.isEmpty())
            *error = QStringLiteral("it offers no pictures");
        return offered;
    }
    *error = camera.error() == QCamera::NoError ? QStringLiteral("it does not answer")
                                                : camera.errorString();
    return {};
}

QString joined(const QStringList &words)
{
    if (words.size() < 2)
        return words.join(QString());
    return words.mid(0, words.size() - 1).join(QLatin1String(", ")) + QLatin1String(" and ") +
           words.last();
}

QString formatName(QVideoFrame::PixelFormat format)
{
    QString name;
    QDebug(&name).nospace() << format;
    return name.remove(QLatin1String("Format_"));
}

} // namespace Tool
