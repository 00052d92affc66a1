// SPDX-License-Identifier: BSD-3-Clause
#include "commands.h"

#include "commandline.h"
#include "compliancecommand.h"
#include "doctorcommand.h"
#include "encodecommand.h"
#include "environment.h"
#include "listcommand.h"
#include "playcommand.h"
#include "previewcommand.h"
#include "recordcommand.h"
#include "transcodecommand.h"
#include "verifycommand.h"
#include "watchcommand.h"

#include <QGuiApplication>

int ocelleCommands(int argc, char *argv[])
{
    int exitCode = Tool::Success;
    const auto commandLine = Tool::parseCommandLine(argc, argv, &exitCode);
    if (!commandLine)
        return exitCode;

    // The doctor sees what an application would.
    const bool asItIs =
            commandLine->command == Tool::CommandLine::Command::Doctor && !commandLine->cameras;
    Tool::prepareEnvironment(!asItIs);
    int qtArgc = 1; // the arguments are not Qt's
    QGuiApplication application(qtArgc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("ocelle"));
    QGuiApplication::setQuitOnLastWindowClosed(false); // closing the window ends the preview itself
    if (!asItIs)
        Tool::addPluginFolder();

    switch (commandLine->command) {
    case Tool::CommandLine::Command::List:
        return Tool::listDevices(commandLine->json);
    case Tool::CommandLine::Command::Watch:
        return Tool::WatchCommand(commandLine->json).run();
    case Tool::CommandLine::Command::Preview:
        return Tool::PreviewCommand(commandLine->preview).run();
    case Tool::CommandLine::Command::Doctor:
        return asItIs ? Tool::examineAll(commandLine->json)
                      : Tool::examineCameras(commandLine->json);
    case Tool::CommandLine::Command::Record:
        return Tool::RecordCommand(commandLine->record).run();
    case Tool::CommandLine::Command::Encode:
        return Tool::EncodeCommand(commandLine->encode).run();
    case Tool::CommandLine::Command::Play:
        return Tool::PlayCommand(commandLine->play).run();
    case Tool::CommandLine::Command::Verify:
        return Tool::VerifyCommand(commandLine->verify).run();
    case Tool::CommandLine::Command::Transcode:
        return Tool::TranscodeCommand(commandLine->encode).run();
    case Tool::CommandLine::Command::Compliance:
        return Tool::checkCompliance(commandLine->compliance);
    }
    return Tool::Failure;
}
