// SPDX-License-Identifier: BSD-3-Clause
#include "vieweroptions.h"

#include "argumentchecks.h"
#include "commandline.h"
#include "console.h"
#include "helpformatter.h"

#include <CLI/CLI.hpp>

namespace Viewer {

std::optional<ViewerOptions> parseViewerOptions(int argc, const char *const *argv, int *exitCode)
{
    CLI::App app("Shows, photographs and records cameras.", "ocelle-viewer");
    app.set_version_flag("--version", OCELLE_VERSION);
    app.footer("Keys: F1 shows them.\n"
               "Exit codes: 0 all went well, 1 something failed, 2 the command was wrong.\n"
               "OCELLE_CAMERAS says which cameras there are: a comma-separated list of\n"
               "v4l2, pattern, file:PATH and dir:PATH.");
    std::string camera;
    std::string size;
    double rate = 0;
    app.add_option("--camera", camera, "Camera to begin with, by its id; ocelle list tells")
            ->type_name("ID");
    app.add_option("--size", size, "Size of its pictures in pixels")
            ->type_name("WxH")
            ->check(CLI::Validator(Tool::sizeProblem, ""));
    app.add_option("--fps", rate, "Its pictures per second")
            ->type_name("N")
            ->check(CLI::Validator(Tool::rateProblem, ""));
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0) {
            *exitCode = Tool::printRequested(app, error) ? Tool::Success : Tool::Failure;
        } else {
            Tool::printError(QString::fromUtf8(error.what()) +
                             QStringLiteral("; ocelle-viewer --help tells more"));
            *exitCode = Tool::Usage;
        }
        return std::nullopt;
    }
    ViewerOptions options;
    options.camera = QString::fromStdString(camera);
    options.size = app.count("--size") > 0 ? Tool::sizeFrom(size) : QSize();
    options.rate = rate;
    return options;
}

} // namespace Viewer
