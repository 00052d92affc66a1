// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QtGlobal>

/*!
 * Carries out what the arguments of the program say, and returns its exit code. The one function of
 * the shared object ocelle-commands.so, which the program loads.
 */
extern "C" Q_DECL_EXPORT int ocelleCommands(int argc, char *argv[]);

constexpr const char *OcelleCommandsName = "ocelleCommands";
