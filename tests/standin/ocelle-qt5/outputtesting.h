// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "videooutputstatistics.h"

class QAbstractVideoSurface;

/*! Of the outputs that have \a surface, of which there must be one. */
Veltra::Ocelle::VideoOutputStatistics statisticsOf(const QAbstractVideoSurface &surface);

bool hasOutput(const QAbstractVideoSurface *surface);

/*! Handles everything that is posted to this thread, deferred deletions included. */
void handleEvents();
