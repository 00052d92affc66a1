// SPDX-License-Identifier: BSD-3-Clause
#pragma once

/*!
 * Makes the GStreamer element "readysrc" known to this process: a live source whose pictures
 * (I420, 640x480, 30 a second) are ready, so that what is left is what everybody else spends on
 * them. It keeps the same beat as a ReadyCamera and copies no picture.
 *
 * GStreamer must have been initialized. False where it could not be registered.
 */
bool registerReadySource();
