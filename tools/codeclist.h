// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QList>
#include <QString>

namespace Tool {

/*! What the back end tells of one codec. */
struct CodecDescription
{
    QString id;
    QString type; // MIME; empty for a kind that has no name
    bool isHardwareAccelerated = false;
    int maxInstances = 0; // at once
};

/*!
 * The encoders or the decoders of this platform, as the back end lists them.
 *
 * Errors: an empty list, and \a error says why where there is no back end to ask.
 */
QList<CodecDescription> availableCodecs(bool encoders, QString *error);

} // namespace Tool
