// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QCameraInfo>
#include <QCameraViewfinderSettings>
#include <QList>
#include <QString>
#include <QStringList>

namespace Tool {

/*!
 * The cameras of this platform, as Qt has them. Those of other plugins are left out: they would be
 * the same devices again, under other ids, and each may take its time to say that it is in use.
 */
QList<QCameraInfo> availableCameras();

/*!
 * The camera with that id, or whose id is that one with some characters percent-encoded, as those
 * that Qt cannot carry in an id are; a null one if there is none.
 */
QCameraInfo findCamera(const QString &id);

/*! "There is no camera x; there are a and b". */
QString noSuchCamera(const QString &id);

/*!
 * Opens \a camera for a moment to learn what it offers; keeps events moving meanwhile.
 *
 * Errors: an empty list, and \a error says why.
 */
QList<QCameraViewfinderSettings> offeredSettings(const QCameraInfo &camera, QString *error);

/*! "a", "a and b", "a, b and c" */
QString joined(const QStringList &words);

/*! "NV12" */
QString formatName(QVideoFrame::PixelFormat format);

} // namespace Tool
