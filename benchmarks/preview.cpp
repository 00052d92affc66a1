// Previews a camera through Qt's own QCamera and tells what that took: CPU time per picture once it
// runs, and how long the first picture took. Which plugin serves it is up to Qt and its environment.

#include "countingsurface.h"
#include "cputime.h"

#include <QCamera>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTimer>

#include <cstdio>

namespace {

constexpr quint64 WarmUp = 15;  // pictures
constexpr int Patience = 60000; // milliseconds

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addPositionalArgument(QStringLiteral("pictures"), QStringLiteral("how many to measure"));
    parser.process(application);
    const quint64 pictures = parser.positionalArguments().value(0).toULongLong();
    if (pictures == 0)
        parser.showHelp(2);

    QElapsedTimer sinceStart;
    QElapsedTimer sinceWarmUp;
    double firstMilliseconds = 0;
    double cpuAtWarmUp = 0;
    double cpu = 0;
    double seconds = 0;
    quint64 count = 0;
    CountingSurface surface([&] {
        ++count;
        if (count == 1) {
            firstMilliseconds = double(sinceStart.nsecsElapsed()) / 1e6;
        } else if (count == WarmUp) {
            cpuAtWarmUp = cpuTime();
            sinceWarmUp.start();
        } else if (count == WarmUp + pictures) {
            cpu = cpuTime() - cpuAtWarmUp;
            seconds = double(sinceWarmUp.nsecsElapsed()) / 1e9;
            QCoreApplication::quit();
        }
    });

    QCamera camera;
    QCameraViewfinderSettings settings;
    settings.setResolution(640, 480);
    settings.setMinimumFrameRate(30);
    settings.setMaximumFrameRate(30);
    camera.setViewfinderSettings(settings);
    camera.setViewfinder(&surface);
    QTimer::singleShot(Patience, &application, [] { QCoreApplication::exit(1); });
    sinceStart.start();
    camera.start();
    const int result = QCoreApplication::exec();
    camera.stop();
    camera.unload();
    if (result != 0) {
        std::fprintf(stderr, "%llu pictures came: %s\n", count, qPrintable(camera.errorString()));
        return result;
    }
    std::printf("%.1f %.2f %.2f\n", cpu * 1e6 / double(pictures), double(pictures) / seconds,
                firstMilliseconds);
    return 0;
}
