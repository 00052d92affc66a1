// SPDX-License-Identifier: BSD-3-Clause
// Previews a camera through Qt's own QCamera and tells what that took: CPU time per picture once it
// runs, pictures per second, and how long the first picture took. Which plugin serves it is up to Qt.

#include "countingsurface.h"
#include "previewmeter.h"

#include <QCamera>
#include <QGuiApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    PreviewMeter meter(application.arguments().value(1).toULongLong());
    CountingSurface surface([&] { meter.count(); });

    QCamera camera;
    QCameraViewfinderSettings settings;
    settings.setResolution(640, 480);
    settings.setMinimumFrameRate(30);
    settings.setMaximumFrameRate(30);
    camera.setViewfinderSettings(settings);
    camera.setViewfinder(&surface);
    meter.start();
    camera.start();
    const bool measured = meter.run();
    camera.stop();
    camera.unload();
    if (!measured) {
        std::fprintf(stderr, "%s\n", qPrintable(camera.errorString()));
        return 1;
    }
    meter.print();
    return 0;
}
