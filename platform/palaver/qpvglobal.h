// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QtGlobal>

/*! Marks what the video-exchange library exports; it is built with hidden visibility. */
#define PALAVER_EXPORT Q_DECL_EXPORT
