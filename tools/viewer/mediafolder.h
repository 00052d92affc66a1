// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QStandardPaths>
#include <QString>

namespace Viewer {

/*! Whether there is a file of that name, or one that will have it when it is complete. */
bool isTaken(const QString &file);

/*!
 * A name for a new file in the user's folder of that kind, which is made if need be: the time of
 * day, and a number where that is taken.
 *
 * Errors: an empty one, and \a error says why.
 */
QString newFileName(QStandardPaths::StandardLocation location, const QString &suffix,
                    QString *error);

} // namespace Viewer
