// SPDX-License-Identifier: BSD-3-Clause
#include "commandline.h"

#include "argumentchecks.h"
#include "console.h"
#include "helpformatter.h"

#include <QFile>

#include <CLI/CLI.hpp>
#include <map>

namespace Tool {
namespace {

struct Words // as they come from the command line
{
    std::string camera;
    std::string size;
    double rate = 0;
    std::string frames;
    std::string snapshot;
    bool noWindow = false;
    std::string input;
    std::string output;
    std::string codec;
    std::string bitRate;
    double seconds = 0;
    std::string rotation;
    bool mirror = false;
    bool force = false;
    std::string playRate = "realtime";
    bool check = false;
    std::string pictures;
    std::string only;
    std::string device;
    std::string report;
    int hotPlug = 0;
};

void addSizeAndRate(CLI::App *command, Words *words)
{
    command->add_option("--size", words->size, "Size of the pictures in pixels")
            ->type_name("WxH")
            ->check(CLI::Validator(sizeProblem, ""));
    command->add_option("--fps", words->rate, "Pictures per second")
            ->type_name("N")
            ->check(CLI::Validator(rateProblem, ""));
}

void addPreview(CLI::App *preview, Words *words, bool *json)
{
    preview->add_option("CAMERA", words->camera, "Id of the camera, as list shows it")->required();
    addSizeAndRate(preview, words);
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
        options.frames = framesFrom(words.frames);
    options.snapshot = QFile::decodeName(words.snapshot.c_str());
    options.window = !words.noWindow;
    options.json = json;
    return options;
}

void addEncoding(CLI::App *command, Words *words, bool *json)
{
    command->add_option("--codec", words->codec,
                        "h264, h265, vp8 or vp9; else the usual one of the file's kind")
            ->type_name("CODEC")
            ->check(CLI::Validator(codecProblem, ""));
    command->add_option("--bitrate", words->bitRate, "Bits per second, 1M unless given")
            ->type_name("N[k|M]")
            ->check(CLI::Validator(bitRateProblem, ""));
    command->add_option("--rotate", words->rotation, "Turn the pictures clockwise")
            ->type_name("DEGREES")
            ->check(CLI::Validator(rotationProblem, ""));
    command->add_flag(
            "--mirror", words->mirror,
            "Mirror them top to bottom, before they are turned; with --rotate 180 that is "
            "left to right");
    command->add_flag("--force", words->force, "Replace a file that is there");
    command->add_flag("--json", *json, "Print what it came to as JSON");
    command->add_option("OUT", words->output, "File to write: .mkv, .mp4, .webm or .ivf")
            ->required()
            ->check(CLI::Validator(nameProblem, ""));
}

EncodingOptions encodingOptions(const CLI::App &command, const Words &words)
{
    EncodingOptions options;
    options.output = QFile::decodeName(words.output.c_str());
    options.codec = codecNamed(QString::fromStdString(words.codec));
    if (command.count("--bitrate") > 0)
        options.bitRate = bitRateFrom(words.bitRate);
    if (command.count("--rotate") > 0)
        options.rotation = rotationFrom(words.rotation).value_or(0);
    options.mirror = words.mirror;
    options.force = words.force;
    return options;
}

void addRecord(CLI::App *record, Words *words, bool *json)
{
    record->add_option("--camera", words->camera, "Id of the camera, as list shows it")->required();
    addSizeAndRate(record, words);
    record->add_option("--seconds", words->seconds, "End after N seconds; else Ctrl-C ends it")
            ->type_name("N")
            ->check(CLI::Validator(secondsProblem, ""));
    CLI::Option *const check = record->add_flag(
            "--check", words->check,
            "Decode what is recorded at once and compare it with what the camera showed");
    record->add_option("--pictures", words->pictures,
                       "Save the last compared pictures as PREFIX-camera.png, PREFIX-decoded.png "
                       "and PREFIX-difference.png (eight times as strong)")
            ->type_name("PREFIX")
            ->check(CLI::Validator(folderProblem, ""))
            ->needs(check);
    addEncoding(record, words, json);
}

RecordOptions recordOptions(const CLI::App &record, const Words &words, bool json)
{
    RecordOptions options;
    options.camera = QString::fromStdString(words.camera);
    if (record.count("--size") > 0)
        options.size = sizeFrom(words.size);
    if (record.count("--fps") > 0)
        options.rate = words.rate;
    if (record.count("--seconds") > 0)
        options.seconds = words.seconds;
    options.check = words.check;
    options.pictures = QFile::decodeName(words.pictures.c_str());
    options.encoding = encodingOptions(record, words);
    options.json = json;
    return options;
}

void addEncode(CLI::App *encode, Words *words, bool *json)
{
    encode->add_option("IN", words->input, "Video file to read")
            ->required()
            ->check(CLI::Validator(nameProblem, ""));
    addEncoding(encode, words, json);
}

EncodeOptions encodeOptions(const CLI::App &encode, const Words &words, bool json)
{
    EncodeOptions options;
    options.input = QFile::decodeName(words.input.c_str());
    options.encoding = encodingOptions(encode, words);
    options.json = json;
    return options;
}

void addStreamCodec(CLI::App *command, Words *words)
{
    command->add_option("--codec", words->codec,
                        "h264, h265, vp8 or vp9, where the file does not tell it by itself")
            ->type_name("CODEC")
            ->check(CLI::Validator(codecProblem, ""));
}

void addPlay(CLI::App *play, Words *words, bool *json)
{
    play->add_option("FILE", words->input, "Video file or bare stream to play")
            ->required()
            ->check(CLI::Validator(nameProblem, ""));
    addStreamCodec(play, words);
    play->add_option("--frames", words->frames, "End after N pictures")
            ->type_name("N")
            ->check(CLI::Validator(framesProblem, ""));
    play->add_option("--rate", words->playRate, "realtime, or max for as fast as it goes")
            ->type_name("RATE")
            ->check(CLI::IsMember({ "realtime", "max" }));
    play->add_option("--snapshot", words->snapshot, "Save the last picture, as it is shown")
            ->type_name("FILE.png")
            ->check(CLI::Validator(snapshotProblem, ""));
    play->add_flag("--no-window", words->noWindow, "Show no window");
    play->add_flag("--json", *json, "Print the statistics as JSON");
}

PlayOptions playOptions(const CLI::App &play, const Words &words, bool json)
{
    PlayOptions options;
    options.file = QFile::decodeName(words.input.c_str());
    options.codec = codecNamed(QString::fromStdString(words.codec));
    if (play.count("--frames") > 0)
        options.frames = framesFrom(words.frames);
    options.realTime = words.playRate == "realtime";
    options.snapshot = QFile::decodeName(words.snapshot.c_str());
    options.window = !words.noWindow;
    options.json = json;
    return options;
}

void addVerify(CLI::App *verify, Words *words, bool *json)
{
    verify->add_option("FILE", words->input, "Recording of a pattern camera")
            ->required()
            ->check(CLI::Validator(nameProblem, ""));
    addStreamCodec(verify, words);
    verify->add_flag("--json", *json, "Print what was found as JSON");
}

VerifyOptions verifyOptions(const Words &words, bool json)
{
    return { QFile::decodeName(words.input.c_str()),
             codecNamed(QString::fromStdString(words.codec)), json };
}

void addCompliance(CLI::App *compliance, Words *words, bool *json)
{
    constexpr int longest = 3600;
    compliance->add_option("--only", words->only, "Only checks of that name, such as \"camera.*\"")
            ->type_name("PATTERN");
    compliance
            ->add_option("--device", words->device,
                         "Only cameras and codecs of that id, such as \"pattern:*\"")
            ->type_name("PATTERN");
    compliance
            ->add_option("--hotplug", words->hotPlug,
                         "Wait so long for a camera that is plugged in and one that is unplugged")
            ->check(CLI::Range(1, longest))
            ->type_name("SECONDS");
    compliance->add_option("--junit", words->report, "Write the results as JUnit's XML")
            ->type_name("FILE.xml")
            ->check(CLI::Validator(folderProblem, ""));
    compliance->add_flag("--json", *json, "Print the results as JSON, at the end");
}

ComplianceOptions complianceOptions(const Words &words, bool json)
{
    ComplianceOptions options;
    options.checks.only = QString::fromStdString(words.only);
    options.checks.device = QString::fromStdString(words.device);
    options.checks.hotPlug = words.hotPlug;
    options.report = QFile::decodeName(words.report.c_str());
    options.json = json;
    return options;
}

// Prints what was asked for, or what was wrong.
ExitCode endOf(const CLI::App &app, const CLI::ParseError &error)
{
    if (error.get_exit_code() == 0)
        return printRequested(app, error) ? Success : Failure;
    const std::vector<std::string> unknown = app.remaining();
    const bool isCommand = app.get_subcommands().empty() && !unknown.empty();
    const auto command = app.get_subcommands().empty()
                                 ? std::string()
                                 : app.get_subcommands().front()->get_name() + ' ';
    const QString what = isCommand ? QStringLiteral("there is no command \"%1\"")
                                             .arg(QString::fromStdString(unknown.front()))
                                   : QString::fromUtf8(error.what()).simplified();
    printError(
            QStringLiteral("%1; see ocelle %2--help").arg(what, QString::fromStdString(command)));
    return Usage;
}

using Command = CommandLine::Command;

// As the program's help lists them. Flags alone go to \a line at once.
void addCommands(CLI::App *app, Words *words, CommandLine *line)
{
    CLI::App *list = app->add_subcommand("list", "Show the cameras and codecs and what they offer");
    list->add_flag("--json", line->json, "Print them as JSON");
    CLI::App *watch = app->add_subcommand("watch", "Tell of cameras that come and go");
    watch->add_flag("--json", line->json, "Print each event as a line of JSON");
    addPreview(app->add_subcommand("preview", "Show the pictures of a camera"), words, &line->json);
    addRecord(app->add_subcommand("record", "Record the pictures of a camera to a file"), words,
              &line->json);
    addEncode(app->add_subcommand("encode", "Encode a video file to another one"), words,
              &line->json);
    addPlay(app->add_subcommand("play", "Play a video file"), words, &line->json);
    addVerify(app->add_subcommand("verify", "Look for lost, repeated and reordered pictures in a "
                                            "recorded test pattern"),
              words, &line->json);
    addEncode(app->add_subcommand("transcode", "Decode a video file and encode it to another one"),
              words, &line->json);
    CLI::App *doctor = app->add_subcommand("doctor", "Find out why something does not work");
    doctor->add_flag("--cameras", line->cameras, "Look at the video nodes only, opening each");
    doctor->add_flag("--json", line->json, "Print what was found as JSON");
    addCompliance(app->add_subcommand("compliance", "Check that the platform libraries do what is "
                                                    "expected of them"),
                  words, &line->json);
}

Command commandNamed(const std::string &name)
{
    static const std::map<std::string, Command> commands {
        { "list", Command::List },       { "watch", Command::Watch },
        { "preview", Command::Preview }, { "record", Command::Record },
        { "encode", Command::Encode },   { "play", Command::Play },
        { "verify", Command::Verify },   { "transcode", Command::Transcode },
        { "doctor", Command::Doctor },   { "compliance", Command::Compliance },
    };
    return commands.at(name);
}

void readOptions(const CLI::App &command, const Words &words, CommandLine *line)
{
    line->command = commandNamed(command.get_name());
    switch (line->command) {
    case Command::List:
    case Command::Watch:
    case Command::Doctor:
        break; // have flags alone
    case Command::Preview:
        line->preview = previewOptions(command, words, line->json);
        break;
    case Command::Record:
        line->record = recordOptions(command, words, line->json);
        break;
    case Command::Encode:
    case Command::Transcode:
        line->encode = encodeOptions(command, words, line->json);
        break;
    case Command::Play:
        line->play = playOptions(command, words, line->json);
        break;
    case Command::Verify:
        line->verify = verifyOptions(words, line->json);
        break;
    case Command::Compliance:
        line->compliance = complianceOptions(words, line->json);
        break;
    }
}

} // namespace

std::optional<CommandLine> parseCommandLine(int argc, const char *const *argv, int *exitCode)
{
    CLI::App app("Lists, watches, shows and records cameras, and plays videos.", "ocelle");
    app.set_version_flag("--version", OCELLE_VERSION);
    app.formatter(std::make_shared<HelpFormatter>());
    app.require_subcommand(1);
    app.footer("Exit codes: 0 all went well, 1 something failed, 2 the command was wrong.\n"
               "OCELLE_CAMERAS says which cameras there are: a comma-separated list of\n"
               "v4l2, pattern, file:PATH and dir:PATH. OCELLE_V4L2_WATCHDOG=off lets V4L2\n"
               "devices be silent for long, as those do that wait for a trigger.");
    CommandLine line;
    Words words;
    addCommands(&app, &words, &line);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        *exitCode = endOf(app, error);
        return std::nullopt;
    }
    readOptions(*app.get_subcommands().front(), words, &line);
    return line;
}

} // namespace Tool
