#pragma once

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

/*! What the command line asks for. */
struct CommandLine
{
    enum class Command { List, Watch, Preview, Doctor };

    Command command = Command::List;
    bool json = false; // of list, watch and doctor
    PreviewOptions preview;
};

/*!
 * Understands the program's arguments.
 *
 * Errors: nothing, and \a exitCode set, if the program should end at once: Success after it was
 *         asked for help or its version, Usage after a wrong argument, which was explained on
 *         standard error.
 */
std::optional<CommandLine> parseCommandLine(int argc, const char *const *argv, int *exitCode);

} // namespace Tool
