// SPDX-License-Identifier: BSD-3-Clause
// An application that has its camera open when it ends, in the way that the argument says. Exits
// with 0 if it saw a picture and came to its end.
#include "picturesurface.h"

#include <QCamera>
#include <QCoreApplication>
#include <QTimer>

#include <cstdlib>
#include <string>

namespace {

constexpr int Deadline = 20000; // milliseconds
constexpr int ExitNoPicture = 1;
constexpr int ExitUsage = 2;

/*! Serves events until a picture came, or until it is clear that none will. */
bool waitForPicture(const PictureSurface &surface)
{
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&surface] {
        if (!surface.pictures.isEmpty())
            QCoreApplication::exit(0);
    });
    poll.start(1);
    QTimer::singleShot(Deadline, [] { QCoreApplication::exit(ExitNoPicture); });
    return QCoreApplication::exec() == 0;
}

/*! Surface and camera, begun streaming. */
struct Preview
{
    Preview()
    {
        camera.setViewfinder(&surface);
        camera.start();
    }
    PictureSurface surface; // outlives the camera
    QCamera camera;
};

/*! A camera that is destroyed after main() has returned and the application object has gone. */
Preview *staticPreview()
{
    static Preview preview;
    return &preview;
}

} // namespace

int main(int argc, char **argv)
{
    const std::string way = argc == 2 ? argv[1] : "";
    QCoreApplication application(argc, argv);
    static Preview *preview = way == "static" ? staticPreview() : new Preview;
    if (!waitForPicture(preview->surface))
        return ExitNoPicture;
    if (way == "after-exec") // the event loop has returned, the application is still there
        delete preview;
    else if (way == "std-exit") // ends below main(), with everything still alive
        std::exit(0);
    else if (way != "never" && way != "static")
        return ExitUsage;
    return 0;
}
