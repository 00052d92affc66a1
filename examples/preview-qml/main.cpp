// SPDX-License-Identifier: BSD-3-Clause
// Shows preview.qml, which is all that a camera needs. The rest is for runs that nobody watches.
#include "numberoption.h"
#include "options.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QImage>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    QCommandLineParser options;
    options.addOption({ "frames", "End after N pictures.", "N" });
    options.addOption({ "snapshot", "Save what is shown at the end.", "FILE.png" });
    readOptions(&options, 0);
    int left = options.isSet("frames") ? numberOption(options, "frames") : 0;

    QQmlApplicationEngine engine(QUrl(QStringLiteral("qrc:/preview.qml")));
    auto *const window = engine.rootObjects().isEmpty()
                                 ? nullptr
                                 : qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
    if (!window)
        return 1; // the engine has said why

    bool isSaved = true;
    if (left > 0) {
        const auto onShown = [&] {
            const QString error = window->property("error").toString();
            if (!error.isEmpty()) {
                qCritical("%s", qPrintable(error));
                QCoreApplication::exit(1);
            } else if (!window->property("isShowing").toBool()) {
                window->update(); // to come back and look again
            } else if (--left == 0) {
                if (options.isSet("snapshot"))
                    isSaved = window->grabWindow().save(options.value("snapshot"));
                QCoreApplication::quit();
            }
        };
        // Queued, for the scene graph may draw on a thread of its own.
        QObject::connect(window, &QQuickWindow::frameSwapped, window, onShown,
                         Qt::QueuedConnection);
    }
    const int result = application.exec();
    if (!isSaved)
        qCritical("%s cannot be written", qPrintable(options.value("snapshot")));
    return isSaved ? result : 1;
}
