// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QCoreApplication>
#include <QFileInfo>
#include <QMediaService>
#include <QMediaServiceProviderPlugin>
#include <QPluginLoader>

/*!
 * A service of the back end that Qt's own classes do not know: "veltra.palaver.encoder" or
 * "veltra.palaver.decoder". It is given back when this goes.
 *
 * Threads: the application thread.
 * Errors:  no control is there, and error() says why.
 */
class CodecService
{
public:
    explicit CodecService(const QString &key)
    {
        for (const QString &folder : QCoreApplication::libraryPaths()) {
            const QString file = folder + QLatin1String("/mediaservice/libocellebackend.so");
            if (!QFileInfo::exists(file))
                continue;
            QPluginLoader loader(file);
            m_plugin = qobject_cast<QMediaServiceProviderPlugin *>(loader.instance());
            if (!m_plugin)
                m_error = loader.errorString();
            break;
        }
        if (m_plugin)
            m_service = m_plugin->create(key);
        else if (m_error.isEmpty())
            m_error = QStringLiteral(
                    "the plugin libocellebackend.so is in none of Qt's plugin folders");
        if (m_plugin && !m_service)
            m_error = QStringLiteral("there is no service %1").arg(key);
    }
    ~CodecService()
    {
        if (m_service)
            m_plugin->release(m_service);
    }
    CodecService(const CodecService &) = delete;
    CodecService &operator=(const CodecService &) = delete;

    /*! Owned by the service; null where it has no such control. */
    template <typename Control>
    Control control() const
    {
        return m_service ? m_service->requestControl<Control>() : nullptr;
    }
    QString error() const { return m_error; }

private:
    QMediaServiceProviderPlugin *m_plugin = nullptr;
    QMediaService *m_service = nullptr;
    QString m_error;
};
