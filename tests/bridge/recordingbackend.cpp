// SPDX-License-Identifier: BSD-3-Clause
#include "recordingbackend.h"

#include <QFile>

RecordingBackend::~RecordingBackend()
{
    const QString farewell = qEnvironmentVariable("OCELLE_TEST_FAREWELL");
    if (!farewell.isEmpty() && m_alive == 0)
        QFile(farewell).open(QIODevice::WriteOnly);
}

QMediaService *RecordingBackend::create(const QString &key)
{
    record("create", key.toUtf8());
    if (key != QLatin1String("veltra.palaver.camera"))
        return nullptr;
    ++m_alive;
    return new RecordingService;
}

void RecordingBackend::release(QMediaService *service)
{
    record("release", service->metaObject()->className());
    --m_alive;
    delete service;
}

QList<QByteArray> RecordingBackend::devices(const QByteArray &service) const
{
    record("devices", service);
    return { "left", "right" };
}

QString RecordingBackend::deviceDescription(const QByteArray &service, const QByteArray &device)
{
    record("deviceDescription", service, device);
    return QStringLiteral("The %1 one").arg(QString::fromLatin1(device));
}

QByteArray RecordingBackend::defaultDevice(const QByteArray &service) const
{
    record("defaultDevice", service);
    return "right";
}

QMediaServiceProviderHint::Features
RecordingBackend::supportedFeatures(const QByteArray &service) const
{
    record("supportedFeatures", service);
    return QMediaServiceProviderHint::VideoSurface;
}

QCamera::Position RecordingBackend::cameraPosition(const QByteArray &device) const
{
    record("cameraPosition", device);
    return device == "left" ? QCamera::FrontFace : QCamera::BackFace;
}

int RecordingBackend::cameraOrientation(const QByteArray &device) const
{
    record("cameraOrientation", device);
    return device == "left" ? 90 : 0;
}

void RecordingBackend::record(const char *what, const QByteArray &first,
                              const QByteArray &second) const
{
    QByteArray call = QByteArray(what) + ' ' + first;
    if (!second.isEmpty())
        call += ' ' + second;
    m_calls.append(QString::fromLatin1(call));
}
