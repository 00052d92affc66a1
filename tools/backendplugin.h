// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>

class QMediaServiceProviderPlugin;

namespace Tool {

/*!
 * The back end's plugin, from the first of Qt's plugin folders that has one; owned by Qt.
 *
 * Errors: null, and \a error says why.
 */
QMediaServiceProviderPlugin *backendPlugin(QString *error);

} // namespace Tool
