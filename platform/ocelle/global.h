// SPDX-License-Identifier: BSD-3-Clause
#pragma once

/*!
 * Marks what the camera library and its Qt add-on export; both are built with hidden visibility.
 */
#define OCELLE_EXPORT __attribute__((visibility("default")))
