// SPDX-License-Identifier: BSD-3-Clause
#include "commandline.h"
#include "console.h"
#include "environment.h"
#include "exitdeadline.h"
#include "interruption.h"
#include "vieweroptions.h"
#include "viewerwindow.h"

#include <QGuiApplication>
#include <QIcon>
#include <QQuickWindow>

#include <optional>

namespace {
constexpr std::chrono::seconds LongestEnd { 5 }; // once the window is closed
} // namespace

int main(int argc, char *argv[])
{
    Tool::holdStandardStreams();
    Tool::setProgramName("ocelle-viewer");
    int exitCode = Tool::Success;
    const auto options = Viewer::parseViewerOptions(argc, argv, &exitCode);
    if (!options)
        return exitCode;

    Tool::prepareEnvironment();
    QGuiApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    int qtArgc = 1; // the arguments are not Qt's
    QGuiApplication application(qtArgc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("ocelle-viewer"));
    QGuiApplication::setDesktopFileName(QStringLiteral("ocelle-viewer"));
    Tool::addPluginFolder();
    if (!Tool::hasDisplay()) {
        Tool::printError(QStringLiteral("there is no display to open a window on; ocelle preview "
                                        "needs none"));
        return Tool::Failure;
    }
    Tool::Interruption interruption;              // before there is a window to be seen
    std::optional<Viewer::ExitDeadline> deadline; // goes after the window, whose end it bounds
    const Viewer::ViewerWindow viewer(*options);
    if (!viewer.window())
        return Tool::Failure; // Qt has said what is missing
    viewer.window()->setIcon(QIcon(QStringLiteral(":/viewer/ocelle-viewer.svg")));
    // As if its window was closed, so that a recording is completed.
    QObject::connect(&interruption, &Tool::Interruption::interrupted, viewer.window(),
                     [&viewer] { viewer.window()->close(); });
    exitCode = QGuiApplication::exec();
    deadline.emplace(LongestEnd);
    return exitCode;
}
