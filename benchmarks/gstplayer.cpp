// SPDX-License-Identifier: BSD-3-Clause
// The yardstick: Qt's own GStreamer back end bringing ready pictures of a live source to a video
// surface, or the same source with nothing behind it in place of Qt.
// Prints CPU time per picture, pictures per second, and how long the first picture took.
//
// usage: bench-gstplayer PICTURES [--source]

#include "countingsurface.h"
#include "previewmeter.h"
#include "readysource.h"

#include <QGuiApplication>
#include <QMediaPlayer>
#include <QMetaObject>
#include <QUrl>

#include <gst/gst.h>

#include <cstdio>

namespace {

bool playThroughQt(PreviewMeter &meter)
{
    CountingSurface surface([&] { meter.count(); });
    QMediaPlayer player;
    player.setVideoOutput(&surface);
    player.setMedia(QUrl(QStringLiteral("gst-pipeline: readysrc ! qtvideosink")));
    QObject::connect(&player, QOverload<QMediaPlayer::Error>::of(&QMediaPlayer::error),
                     [&] { std::fprintf(stderr, "%s\n", qPrintable(player.errorString())); });
    meter.start();
    player.play();
    const bool measured = meter.run();
    player.stop();
    return measured;
}

void count(GstElement *, GstBuffer *, GstPad *, gpointer meter)
{
    static_cast<PreviewMeter *>(meter)->count(); // quits the event loop, which any thread may
}

bool playAlone(PreviewMeter &meter)
{
    GstElement *const pipeline = gst_parse_launch(
            "readysrc ! fakesink name=sink sync=false signal-handoffs=true", nullptr);
    if (!pipeline)
        return false;
    GstElement *const sink = gst_bin_get_by_name(reinterpret_cast<GstBin *>(pipeline), "sink");
    g_signal_connect(sink, "handoff", G_CALLBACK(count), &meter);
    meter.start();
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    const bool measured = meter.run();
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(sink);
    gst_object_unref(pipeline);
    return measured;
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    gst_init(nullptr, nullptr);
    if (!registerReadySource()) {
        std::fprintf(stderr, "GStreamer does not take the source\n");
        return 1;
    }
    const QStringList arguments = application.arguments();
    PreviewMeter meter(arguments.value(1).toULongLong());
    const bool alone = arguments.value(2) == QLatin1String("--source");
    if (!(alone ? playAlone(meter) : playThroughQt(meter)))
        return 1;
    meter.print();
    return 0;
}
