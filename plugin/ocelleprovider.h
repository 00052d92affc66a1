// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QMediaServiceProviderPlugin>
#include <QMutex>

#include <ocelle/cameramanager.h>
#include <ocelle/codecmanager.h>
#include <palaver/qpvmediaservicecodecinfointerface.h>

#include <string>

/*!
 * The media service provider: makes the services, and keeps the view of the platform's cameras and
 * codecs that answers Qt's questions about devices.
 *
 * Threads: built and destroyed on the application thread; questions from any thread; the camera
 *          library calls back on threads of its own, where the camera list is rebuilt and
 *          devicesChanged() is emitted.
 * Owner:   OcelleServicePlugin, by value, or whoever injects managers. Services hold a plain pointer
 *          to it and must be released first. The managers belong to the camera library.
 * Units:   degrees.
 * Errors:  none; an unknown id gets a neutral answer.
 */
class OcelleProvider : public QMediaServiceProviderPlugin,
                       public QMediaServiceSupportedDevicesInterface,
                       public QMediaServiceDefaultDeviceInterface,
                       public QMediaServiceFeaturesInterface,
                       public QMediaServiceCameraInfoInterface,
                       public QPVMediaServiceCodecInfoInterface,
#ifdef Q_MOC_RUN // moc answers for public bases only, and this one is to be found by name as well
                       public Veltra::Ocelle::CameraManagerListener
#else
                       private Veltra::Ocelle::CameraManagerListener
#endif
{
    Q_OBJECT
    Q_INTERFACES(QMediaServiceSupportedDevicesInterface)
    Q_INTERFACES(QMediaServiceDefaultDeviceInterface)
    Q_INTERFACES(QMediaServiceFeaturesInterface)
    Q_INTERFACES(QMediaServiceCameraInfoInterface)
    Q_INTERFACES(QPVMediaServiceCodecInfoInterface)
public:
    OcelleProvider();
    OcelleProvider(Veltra::Ocelle::CameraManager *cameraManager,
                   Veltra::Ocelle::CodecManager *codecManager);
    ~OcelleProvider();

    Veltra::Ocelle::CameraManager *cameraManager() const;
    Veltra::Ocelle::CodecManager *codecManager() const;

    /*! Rebuilds the camera list and emits devicesChanged(), changed or not. Any thread. */
    void updateCameraList();
    /*! The encoders' or the decoders' ids, in ascending byte order. */
    QList<QByteArray> listCodecIds(bool encoders) const;

    QMediaService *
    create(const QString &key) override; // owned by the caller; null: no such service
    void release(QMediaService *service) override;

    QList<QByteArray> devices(const QByteArray &service) const override;
    /*! The first camera that faces front, else the first; a camera whatever the service. */
    QByteArray defaultDevice(const QByteArray &service) const override;
    QMediaServiceProviderHint::Features supportedFeatures(const QByteArray &service) const override;
    QString deviceDescription(const QByteArray &service, const QByteArray &device) override;
    QCamera::Position cameraPosition(const QByteArray &device) const override;
    /*! 360 less the mounting angle, not reduced: an upright sensor reports 360. */
    int cameraOrientation(const QByteArray &device) const override;

    QString codecType(const QByteArray &codec) const override;
    bool codecIsEncoder(const QByteArray &codec) const override;
    bool codecIsHardwareAccelerated(const QByteArray &codec) const override;
    int codecMaxInstances(const QByteArray &codec) const override;

signals:
    void devicesChanged(const QByteArray &service);

private:
    using CameraInfos = QMap<QByteArray, Veltra::Ocelle::CameraInfo>;

    void init();
    void readCodecs();
    QList<QByteArray> cameraIds() const;
    CameraInfos cameraInfos() const;

    void onCameraAdded(const std::string &id) override;
    void onCameraRemoved(const std::string &id) override;

    Veltra::Ocelle::CameraManager *const m_cameraManager; // not owned
    Veltra::Ocelle::CodecManager *const m_codecManager;   // not owned

    mutable QMutex m_registryMutex; // guards the four below; never held while calling out
    QList<QByteArray> m_cameraIds;  // in the manager's order
    CameraInfos m_cameraInfos;      // of exactly these ids
    quint64 m_refreshesBegun = 0;
    quint64 m_refreshShown = 0; // number of the one whose list this is

    QMap<QByteArray, Veltra::Ocelle::VideoCodecInfo> m_codecInfos; // filled once, at construction
};
