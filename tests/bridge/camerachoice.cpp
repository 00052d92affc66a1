// SPDX-License-Identifier: BSD-3-Clause
// Tells which camera Qt gives an ordinary application: what a plain QCamera is served by, and the
// cameras that Qt lists. Plugins come from the folder given and from nowhere else.
#include <QCamera>
#include <QCameraInfo>
#include <QCoreApplication>
#include <QMediaService>
#include <QTextStream>

#include <memory>

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc < 2) {
        QTextStream(stderr) << "usage: camerachoice PLUGIN-FOLDER [leave-open]\n";
        return 2;
    }
    QCoreApplication::setLibraryPaths({ QString::fromLocal8Bit(argv[1]) });
    QTextStream out(stdout);

    auto camera = std::make_unique<QCamera>();
    out << "service " << (camera->service() ? camera->service()->metaObject()->className() : "none")
        << '\n';
    for (const QCameraInfo &info : QCameraInfo::availableCameras()) {
        out << "camera " << info.deviceName() << '|' << info.description() << '|' << info.position()
            << '|' << info.orientation() << '\n';
    }
    out << "default " << QCameraInfo::defaultCamera().deviceName() << '\n';
    // An application that leaves without closing its camera.
    static QCamera *leftOpen = nullptr;
    if (argc > 2)
        leftOpen = camera.release();
    return leftOpen && !leftOpen->service() ? 1 : 0;
}
