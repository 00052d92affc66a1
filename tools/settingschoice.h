// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QCameraViewfinderSettings>
#include <QList>
#include <QSize>
#include <QString>

#include <optional>

namespace Tool {

/*!
 * Picks the first of \a offered with that size and rate (frames per second), where they are given.
 *
 * Errors: nothing, and \a error names what is not offered and the nearest that are.
 */
std::optional<QCameraViewfinderSettings>
chooseSettings(const QList<QCameraViewfinderSettings> &offered, std::optional<QSize> size,
               std::optional<double> rate, QString *error);

} // namespace Tool
