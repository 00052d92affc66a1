// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include "compliance/options.h"
#include "videocodec.h"

#include <QSize>
#include <QString>

#include <optional>

namespace Tool {

enum ExitCode {
    Success = 0,
    Failure = 1, // something went wrong while running
    Usage = 2,   // the command cannot be carried out as it was given
};

struct PreviewOptions
{
    QString camera;
    std::optional<QSize> size;    // pixels
    std::optional<double> rate;   // frames per second
    std::optional<qint64> frames; // ends after so many pictures
    QString snapshot;             // file for the last picture; empty for none
    bool window = true;
    bool json = false;
};

/*! How pictures are encoded and where they go. */
struct EncodingOptions
{
    QString output;                  // file; the end of its name tells the container
    std::optional<VideoCodec> codec; // else the container's usual one
    int bitRate = 1000000;           // bits per second
    int rotation = 0;                // degrees clockwise: 0, 90, 180 or 270
    bool mirror = false;             // top to bottom, before they are turned
    bool force = false;              // replaces a file that is there
};

struct RecordOptions
{
    QString camera;
    std::optional<QSize> size;     // pixels
    std::optional<double> rate;    // frames per second
    std::optional<double> seconds; // ends after that time
    bool check = false;            // decodes what is recorded and compares it with what was seen
    QString pictures;              // what the names of compared pictures begin with; empty for none
    EncodingOptions encoding;
    bool json = false;
};

struct EncodeOptions
{
    QString input; // file
    EncodingOptions encoding;
    bool json = false;
};

struct PlayOptions
{
    QString file;
    std::optional<VideoCodec> codec; // else the one that the file tells
    QString snapshot;                // file for the last picture; empty for none
    std::optional<qint64> frames;    // ends after so many pictures
    bool realTime = true;            // else as fast as it goes
    bool window = true;
    bool json = false;
};

struct VerifyOptions
{
    QString file;
    std::optional<VideoCodec> codec; // else the one that the file tells
    bool json = false;
};

struct ComplianceOptions
{
    Compliance::Options checks;
    QString report; // file for JUnit's XML; empty for none
    bool json = false;
};

/*! What the command line asks for. */
struct CommandLine
{
    enum class Command {
        List,
        Watch,
        Preview,
        Doctor,
        Record,
        Encode,
        Play,
        Verify,
        Transcode,
        Compliance,
    };

    Command command = Command::List;
    bool json = false;    // of list, watch and doctor
    bool cameras = false; // of doctor: nothing but the video nodes
    PreviewOptions preview;
    RecordOptions record;
    EncodeOptions encode; // and of transcode
    PlayOptions play;
    VerifyOptions verify;
    ComplianceOptions compliance;
};

/*!
 * Understands the program's arguments.
 *
 * Errors: nothing, and \a exitCode set, if the program should end at once: Success after it was
 *         asked for help or its version, Failure where that could not be printed, Usage after a
 *         wrong argument. What went wrong was explained on standard error.
 */
std::optional<CommandLine> parseCommandLine(int argc, const char *const *argv, int *exitCode);

} // namespace Tool
