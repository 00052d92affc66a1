// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QDir>
#include <QFile>
#include <QMediaServiceProviderPlugin>
#include <QPluginLoader>
#include <QTemporaryDir>
#include <QTest>

/*! A folder as Qt looks for media services in: the bridge and what a test puts beside it. */
class PluginFolder
{
public:
    PluginFolder()
    {
        QDir(m_dir.path()).mkdir(QStringLiteral("mediaservice"));
        add(QStringLiteral(OCELLE_BRIDGE), QStringLiteral("libocellebridge.so"));
    }

    void add(const QString &file, const QString &name)
    {
        QVERIFY2(QFile::copy(file, services() + QLatin1Char('/') + name), qPrintable(file));
    }
    void addBackend() { add(QStringLiteral(OCELLE_RECORDING_BACKEND), backendName()); }

    QString root() const { return m_dir.path(); }
    QString services() const { return m_dir.filePath(QStringLiteral("mediaservice")); }
    QString bridge() const { return services() + QStringLiteral("/libocellebridge.so"); }
    QString backend() const { return services() + QLatin1Char('/') + backendName(); }
    static QString backendName() { return QStringLiteral("libocellebackend.so"); }

private:
    QTemporaryDir m_dir;
};

/*! The bridge of a folder, loaded as Qt does it, and given back to Qt at the end. */
class LoadedBridge
{
public:
    explicit LoadedBridge(const PluginFolder &folder)
        : m_loader(folder.bridge())
    {
        plugin = qobject_cast<QMediaServiceProviderPlugin *>(m_loader.instance());
        devices = qobject_cast<QMediaServiceSupportedDevicesInterface *>(plugin);
        defaultDevice = qobject_cast<QMediaServiceDefaultDeviceInterface *>(plugin);
        features = qobject_cast<QMediaServiceFeaturesInterface *>(plugin);
        info = qobject_cast<QMediaServiceCameraInfoInterface *>(plugin);
    }
    ~LoadedBridge() { m_loader.unload(); }
    bool isComplete() const { return plugin && devices && defaultDevice && features && info; }

    QMediaServiceProviderPlugin *plugin = nullptr;
    QMediaServiceSupportedDevicesInterface *devices = nullptr;
    QMediaServiceDefaultDeviceInterface *defaultDevice = nullptr;
    QMediaServiceFeaturesInterface *features = nullptr;
    QMediaServiceCameraInfoInterface *info = nullptr;

private:
    QPluginLoader m_loader;
};
