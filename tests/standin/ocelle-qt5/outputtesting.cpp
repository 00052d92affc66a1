// SPDX-License-Identifier: BSD-3-Clause
#include "outputtesting.h"

#include <QCoreApplication>
#include <QEvent>

using namespace Veltra::Ocelle;

VideoOutputStatistics statisticsOf(const QAbstractVideoSurface &surface)
{
    VideoOutputStatistics statistics;
    if (!videoOutputStatistics(&surface, &statistics))
        qFatal("No output has the surface");
    return statistics;
}

bool hasOutput(const QAbstractVideoSurface *surface)
{
    VideoOutputStatistics statistics;
    return videoOutputStatistics(surface, &statistics);
}

void handleEvents()
{
    for (int i = 0; i < 5; ++i) { // what is handled may post more
        QCoreApplication::sendPostedEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}
