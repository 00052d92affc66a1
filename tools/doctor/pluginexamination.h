// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "finding.h"

#include <QStringList>

namespace Doctor {

/*!
 * Looks at the plugins in \a folders, those that Qt searches, in their order: whether ours are there,
 * readable, of the right kind and version, with all libraries that they need, and who else offers
 * cameras. \a own is where this program's own plugins are, empty if unknown. Loads ours, no others.
 */
Findings examinePlugins(const QStringList &folders, const QString &own);

/*! Which of the plugins an application gets, and which cameras through it. Loads those of others. */
Findings examineChoice();

} // namespace Doctor
