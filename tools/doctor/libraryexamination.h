// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "finding.h"

#include <QByteArray>

namespace Doctor {

/*!
 * Asks the system's loader, with ldd, whether all libraries that \a plugin needs are found, and where
 * the platform's are. Takes 10 s at most.
 */
Findings examineLibrariesOf(const QString &plugin);

/*! What ldd's \a output says of \a plugin. */
Findings judgeLibraries(const QString &plugin, const QByteArray &output);

} // namespace Doctor
