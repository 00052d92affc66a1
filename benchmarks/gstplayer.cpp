// The yardstick: Qt's own GStreamer back end bringing pictures of a live source to a video surface.
// Prints CPU time per picture, pictures per second, and how long the first picture took.

#include "countingsurface.h"
#include "previewmeter.h"

#include <QGuiApplication>
#include <QMediaPlayer>
#include <QTimer>
#include <QUrl>

#include <cstdio>

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    PreviewMeter meter(application.arguments().value(1).toULongLong());
    CountingSurface surface([&] { meter.count(); });
    QMediaPlayer player;
    player.setVideoOutput(&surface);
    player.setMedia(QUrl(QStringLiteral("gst-pipeline: videotestsrc is-live=true ! "
                                        "video/x-raw,format=I420,width=640,height=480,"
                                        "framerate=30/1 ! qtvideosink")));
    QObject::connect(&player, QOverload<QMediaPlayer::Error>::of(&QMediaPlayer::error),
                     [&] { std::fprintf(stderr, "%s\n", qPrintable(player.errorString())); });
    meter.start();
    player.play();
    const bool measured = meter.run();
    player.stop();
    if (!measured)
        return 1;
    meter.print();
    return 0;
}
