// SPDX-License-Identifier: BSD-3-Clause
// A video call with oneself: camera, encoder, decoder and a second picture, in one process.
#include "callwindow.h"
#include "numberoption.h"
#include "options.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QPixmap>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QCommandLineParser options;
    options.addOption({ "frames",
                        "End after N pictures, half-way asking for a key frame and half "
                        "the bit rate.",
                        "N" });
    options.addOption({ "snapshot", "Save what the window shows at the end.", "FILE.png" });
    readOptions(&options, 0);
    const int frames = options.isSet("frames") ? numberOption(options, "frames") : 0;

    CallWindow window;
    if (frames > 0) {
        QObject::connect(&window, &CallWindow::failed, [](const QString &error) {
            qCritical("%s", qPrintable(error));
            QCoreApplication::exit(1);
        });
        QObject::connect(&window, &CallWindow::pictureReceived, [&](int received) {
            if (received == frames / 2) {
                window.requestKeyFrame();
                window.setBitRate(window.bitRate() / 2);
            }
            if (received == frames)
                QCoreApplication::quit();
        });
    }
    window.show();
    window.start();
    const int result = application.exec();
    const QPixmap shown = window.grab(); // before the pictures stop
    window.stop();
    qInfo("%s", qPrintable(window.summary()));
    if (result == 0 && options.isSet("snapshot") && !shown.save(options.value("snapshot"))) {
        qCritical("%s cannot be written", qPrintable(options.value("snapshot")));
        return 1;
    }
    return result;
}
