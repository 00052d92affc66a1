#include "commandline.h"

#include "console.h"
#include "frameimage.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <CLI/CLI.hpp>

namespace Tool {
namespace {

struct Words // as they come from the command line
{
    std::string camera;
    std::string size;
    double rate = 0;
    qint64 frames = 0;
    std::string snapshot;
    bool noWindow = false;
};

constexpr int MaxSide = 16384;    // pixels
constexpr double MaxRate = 10000; // pictures per second

QSize sizeFrom(const std::string &text)
{
    static const QRegularExpression form(QStringLiteral("^([0-9]{1,5})[xX]([0-9]{1,5})$"));
    const QRegularExpressionMatch match = form.match(QString::fromStdString(text));
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    const bool sensible = size.width() > 0 && size.height() > 0 && size.width() <= MaxSide &&
                          size.height() <= MaxSide;
    return sensible ? size : QSize();
}

std::string sizeProblem(const std::string &text)
{
    return sizeFrom(text).isValid()
                   ? std::string()
                   : "\"" + text + "\" is not a size; write width x height in pixels, like 640x480";
}

std::string rateProblem(const std::string &text)
{
    bool isNumber = false;
    const double rate = QString::fromStdString(text).toDouble(&isNumber);
    return isNumber && rate > 0 && rate <= MaxRate
                   ? std::string()
                   : "\"" + text + "\" is not a number of pictures per second";
}

std::string framesProblem(const std::string &text)
{
    bool isNumber = false;
    return QString::fromStdString(text).toLongLong(&isNumber) > 0 && isNumber
                   ? std::string()
                   : "\"" + text + "\" is not a number of pictures";
}

// Told before a long run, not after it.
std::string snapshotProblem(const std::string &text)
{
    const QString path = QFile::decodeName(text.c_str());
    const QFileInfo file(path);
    if (!canSaveImage(path))
        return "\"" + text + "\" does not end in a known image format, like .png";
    if (!file.dir().exists())
        return "the folder of \"" + text + "\" does not exist";
    return {};
}

void addPreview(CLI::App *preview, Words *words, bool *json)
{
    preview->add_option("CAMERA", words->camera, "Id of the camera, as list shows it")->required();
    preview->add_option("--size", words->size, "Size of the pictures in pixels")
            ->type_name("WxH")
            ->check(CLI::Validator(sizeProblem, ""));
    preview->add_option("--fps", words->rate, "Pictures per second")
            ->type_name("N")
            ->check(CLI::Validator(rateProblem, ""));
    preview->add_option("--frames", words->frames, "End after N pictures; else Ctrl-C ends it")
            ->type_name("N")
            ->check(CLI::Validator(framesProblem, ""));
    preview->add_option("--snapshot", words->snapshot, "Save the last picture, as it is shown")
            ->type_name("FILE.png")
            ->check(CLI::Validator(snapshotProblem, ""));
    preview->add_flag("--no-window", words->noWindow, "Show no window");
    preview->add_flag("--json", *json, "Print the statistics as JSON");
}

PreviewOptions previewOptions(const CLI::App &preview, const Words &words, bool json)
{
    PreviewOptions options;
    options.camera = QString::fromStdString(words.camera);
    if (preview.count("--size") > 0)
        options.size = sizeFrom(words.size);
    if (preview.count("--fps") > 0)
        options.rate = words.rate;
    if (preview.count("--frames") > 0)
        options.frames = words.frames;
    options.snapshot = QFile::decodeName(words.snapshot.c_str());
    options.window = !words.noWindow;
    options.json = json;
    return options;
}

// Prints what was asked for, or what was wrong.
ExitCode endOf(const CLI::App &app, const CLI::ParseError &error)
{
    if (error.get_exit_code() == 0) {
        app.exit(error);
        return Success;
    }
    const std::vector<std::string> unknown = app.remaining();
    const bool isCommand = app.get_subcommands().empty() && !unknown.empty();
    printError(isCommand ? QStringLiteral("there is no command \"%1\"")
                                   .arg(QString::fromStdString(unknown.front()))
                         : QString::fromUtf8(error.what()));
    printNote(QStringLiteral("Run ocelle --help, or ocelle COMMAND --help, for more."));
    return Usage;
}

} // namespace

std::optional<CommandLine> parseCommandLine(int argc, const char *const *argv, int *exitCode)
{
    CLI::App app("Lists, watches and shows cameras.", "ocelle");
    app.set_version_flag("--version", OCELLE_VERSION);
    app.require_subcommand(1);
    app.footer("Exit codes: 0 all went well, 1 something failed, 2 the command was wrong.\n"
               "OCELLE_CAMERAS says which cameras there are: a comma-separated list of\n"
               "v4l2, pattern, file:PATH and dir:PATH.");

    CommandLine result;
    Words words;
    CLI::App *list = app.add_subcommand("list", "Show the cameras and what they offer");
    list->add_flag("--json", result.json, "Print them as JSON");
    CLI::App *watch = app.add_subcommand("watch", "Tell of cameras that come and go");
    watch->add_flag("--json", result.json, "Print each event as a line of JSON");
    CLI::App *preview = app.add_subcommand("preview", "Show the pictures of a camera");
    addPreview(preview, &words, &result.json);
    CLI::App *doctor = app.add_subcommand("doctor", "Find out why something does not work");
    bool cameras = false;
    doctor->add_flag("--cameras", cameras, "Look at every video node, opening each")->required();
    doctor->add_flag("--json", result.json, "Print what was found as JSON");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        *exitCode = endOf(app, error);
        return std::nullopt;
    }
    if (doctor->parsed())
        result.command = CommandLine::Command::Doctor;
    if (watch->parsed())
        result.command = CommandLine::Command::Watch;
    if (preview->parsed()) {
        result.command = CommandLine::Command::Preview;
        result.preview = previewOptions(*preview, words, result.json);
    }
    return result;
}

} // namespace Tool
