// SPDX-License-Identifier: BSD-3-Clause
// The yardstick for playing: Qt's own GStreamer back end decoding a file to a video surface.
// Prints CPU time per picture (microseconds), pictures per second, how long the first picture took
// (milliseconds), and peak memory (KB).
//
// usage: bench-gstdecode PIPELINE PICTURES     PIPELINE ends with qtvideosink

#include "countingsurface.h"
#include "previewmeter.h"

#include <QGuiApplication>
#include <QMediaPlayer>
#include <QUrl>

#include <sys/resource.h>

#include <cstdio>

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() < 3) {
        std::fprintf(stderr, "usage: bench-gstdecode PIPELINE PICTURES\n");
        return 2;
    }
    PreviewMeter meter(arguments[2].toULongLong());
    CountingSurface surface([&] { meter.count(); });
    QMediaPlayer player;
    player.setVideoOutput(&surface);
    meter.start(); // it begins to read as soon as it knows what
    player.setMedia(QUrl(QStringLiteral("gst-pipeline: ") + arguments[1]));
    QObject::connect(&player, QOverload<QMediaPlayer::Error>::of(&QMediaPlayer::error),
                     [&] { std::fprintf(stderr, "%s\n", qPrintable(player.errorString())); });
    player.play();
    if (!meter.run())
        return 1;
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    player.stop();
    meter.print();
    std::printf("%ld\n", usage.ru_maxrss);
    return 0;
}
