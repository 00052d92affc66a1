// SPDX-License-Identifier: BSD-3-Clause
#include "codeclist.h"

#include "backendplugin.h"

#include <QMediaServiceProviderPlugin>

#include <palaver/qpvmediaservicecodecinfointerface.h>

namespace Tool {

QList<CodecDescription> availableCodecs(bool encoders, QString *error)
{
    QMediaServiceProviderPlugin *const backend = backendPlugin(error);
    if (!backend)
        return {};
    auto *const ids = qobject_cast<QMediaServiceSupportedDevicesInterface *>(backend);
    auto *const properties = qobject_cast<QPVMediaServiceCodecInfoInterface *>(backend);
    if (!ids || !properties) {
        *error = QStringLiteral("the back end tells nothing of its codecs");
        return {};
    }
    QList<CodecDescription> codecs;
    for (const QByteArray &id :
         ids->devices(encoders ? QByteArrayLiteral("veltra.palaver.encoder")
                               : QByteArrayLiteral("veltra.palaver.decoder"))) {
        if (properties->codecIsEncoder(id) == encoders)
            codecs.append({ QString::fromUtf8(id), properties->codecType(id),
                            properties->codecIsHardwareAccelerated(id),
                            properties->codecMaxInstances(id) });
    }
    return codecs;
}

} // namespace Tool
