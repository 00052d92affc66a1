// SPDX-License-Identifier: BSD-3-Clause
#include "backendplugin.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QMediaServiceProviderPlugin>
#include <QPluginLoader>

namespace Tool {

QMediaServiceProviderPlugin *backendPlugin(QString *error)
{
    for (const QString &folder : QCoreApplication::libraryPaths()) {
        const QString path = folder + QLatin1String("/mediaservice/libocellebackend.so");
        if (!QFileInfo(path).isFile())
            continue;
        QPluginLoader loader(path);
        loader.setLoadHints(
                QLibrary::PreventUnloadHint); // its threads may outlive the plugin object
        if (auto *const plugin = qobject_cast<QMediaServiceProviderPlugin *>(loader.instance()))
            return plugin;
        *error = loader.isLoaded() ? QStringLiteral("%1 is a plugin of another kind").arg(path)
                                   : loader.errorString();
        return nullptr;
    }
    *error = QStringLiteral("there is no plugin libocellebackend.so in %1")
                     .arg(QCoreApplication::libraryPaths().join(QLatin1String(", ")));
    return nullptr;
}

} // namespace Tool
