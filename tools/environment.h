// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QString>

namespace Tool {

/*!
 * Before the application object: has Qt prefer this project's camera plugin, unless the environment
 * names others or \a prefersOurs is false, and fall back to no display where there is none.
 */
void prepareEnvironment(bool prefersOurs = true);

/*!
 * After it: adds this project's plugin folder, found from the program's own place in the build tree
 * or in the installed one, behind those of QT_PLUGIN_PATH and before Qt's own.
 */
void addPluginFolder();

/*! That folder; empty where it is not found. */
QString ownPluginFolder();

/*! Whether there is a display to open a window on. */
bool hasDisplay();

} // namespace Tool
