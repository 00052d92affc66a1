// SPDX-License-Identifier: BSD-3-Clause
#include "ocellebackendloader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QThread>

#include <dlfcn.h>

Q_LOGGING_CATEGORY(qLcBridge, "veltra.palaver.bridge")

namespace {

const char BackendFileName[] = "libocellebackend.so";

/*! The folder that the code of this function was loaded from. */
QString ownFolder()
{
    Dl_info info;
    if (dladdr(reinterpret_cast<const void *>(&ownFolder), &info) == 0 || !info.dli_fname)
        return QString();
    return QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath();
}

} // namespace

QMediaServiceProviderPlugin *OcelleBackendLoader::backend()
{
    std::call_once(m_once, &OcelleBackendLoader::load, this);
    return m_backend;
}

void OcelleBackendLoader::unload()
{
    m_backend = nullptr;
    if (m_loader.isLoaded())
        m_loader.unload();
}

void OcelleBackendLoader::load()
{
    const QString path = QDir(ownFolder()).filePath(QLatin1String(BackendFileName));
    if (!QFileInfo(path).isFile()) {
        forget();
        warn(QStringLiteral("there is no file %1").arg(QDir::toNativeSeparators(path)));
        return;
    }
    m_loader.setFileName(path);
    m_loader.setLoadHints(QLibrary::PreventUnloadHint); // its threads may outlive the plugin object
    QObject *const instance = m_loader.instance();
    if (!instance) {
        const QString reason = m_loader.errorString();
        forget();
        warn(reason);
        return;
    }
    m_backend = qobject_cast<QMediaServiceProviderPlugin *>(instance);
    if (!m_backend) {
        warn(QStringLiteral("%1 is a plugin of another kind (%2)")
                     .arg(path, QLatin1String(instance->metaObject()->className())));
        m_loader.unload();
        forget();
        return;
    }
    // As Qt does with plugins it loads itself, whatever thread asks first.
    if (QCoreApplication::instance() && instance->thread() == QThread::currentThread())
        instance->moveToThread(QCoreApplication::instance()->thread());
}

// A library that is not loaded is deleted by Qt as the process ends, maybe before the loader is.
void OcelleBackendLoader::forget()
{
    m_loader.setFileName(QString());
}

void OcelleBackendLoader::warn(const QString &reason) const
{
    qCWarning(qLcBridge).noquote()
            << QStringLiteral("No camera: the camera back end %1 could not be loaded from %2: %3. "
                              "Install it beside libocellebridge.so.")
                       .arg(QLatin1String(BackendFileName), ownFolder(), reason);
}
