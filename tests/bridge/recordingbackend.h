// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QMediaService>
#include <QMediaServiceProviderPlugin>
#include <QStringList>

/*! What RecordingBackend makes: a service of which one can only tell who made it. */
class RecordingService : public QMediaService
{
    Q_OBJECT
public:
    RecordingService()
        : QMediaService(nullptr)
    {
    }
    QMediaControl *requestControl(const char *) override { return nullptr; }
    void releaseControl(QMediaControl *) override {}
};

/*!
 * A back end for tests of the bridge: a real Qt plugin that writes down every call and knows two
 * cameras, "left" (front, turned by 90 degrees) and "right" (back, the default).
 *
 * The test and the bridge load the same file and so meet the same object; the property "calls" is
 * what it was asked, "alive" the number of services not yet released, and the environment variable
 * OCELLE_TEST_FAREWELL names a file that its destructor creates.
 */
class RecordingBackend : public QMediaServiceProviderPlugin,
                         public QMediaServiceSupportedDevicesInterface,
                         public QMediaServiceDefaultDeviceInterface,
                         public QMediaServiceFeaturesInterface,
                         public QMediaServiceCameraInfoInterface
{
    Q_OBJECT
    Q_INTERFACES(QMediaServiceSupportedDevicesInterface)
    Q_INTERFACES(QMediaServiceDefaultDeviceInterface)
    Q_INTERFACES(QMediaServiceFeaturesInterface)
    Q_INTERFACES(QMediaServiceCameraInfoInterface)
    Q_PLUGIN_METADATA(IID QMediaServiceProviderFactoryInterface_iid FILE
                      "ocelle-recordingbackend.json")
    Q_PROPERTY(QStringList calls MEMBER m_calls)
    Q_PROPERTY(int alive MEMBER m_alive)
public:
    RecordingBackend() = default;
    ~RecordingBackend() override;

    QMediaService *create(const QString &key) override;
    void release(QMediaService *service) override;
    QList<QByteArray> devices(const QByteArray &service) const override;
    QString deviceDescription(const QByteArray &service, const QByteArray &device) override;
    QByteArray defaultDevice(const QByteArray &service) const override;
    QMediaServiceProviderHint::Features supportedFeatures(const QByteArray &service) const override;
    QCamera::Position cameraPosition(const QByteArray &device) const override;
    int cameraOrientation(const QByteArray &device) const override;

private:
    void record(const char *what, const QByteArray &first, const QByteArray &second = {}) const;

    mutable QStringList m_calls;
    int m_alive = 0;
};
