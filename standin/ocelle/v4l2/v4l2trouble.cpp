// SPDX-License-Identifier: BSD-3-Clause
#include "v4l2trouble.h"

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace Veltra {
namespace Ocelle {

namespace {

namespace fs = std::filesystem;

std::string textOf(int error)
{
    return std::generic_category().message(error);
}

bool isNumber(const std::string &text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

bool hasOpen(const fs::path &process, const fs::path &node, const std::string &uncounted)
{
    std::error_code error;
    for (fs::directory_iterator entry(process / "fd", error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code linkError;
        if (entry->path().filename() != uncounted &&
            fs::read_symlink(entry->path(), linkError) == node)
            return true;
    }
    return false;
}

std::string reasonAndRemedy(const V4l2Trouble &trouble, const std::string &node,
                            const std::string &holder)
{
    switch (trouble.error) {
    case EBUSY:
        return holder.empty() ? "another program uses it; close that first"
                              : "it is in use by " + holder + "; stop it there first";
    case EPERM: // of control groups; file permissions give the next one
        return "it is kept from this program by its container or sandbox, which has to be given "
               "the "
               "device";
    case EACCES: {
        const std::string remedy = groupRemedy(node);
        return remedy.empty() ? "permission denied" : "permission denied; " + remedy;
    }
    case ENOSPC:
        return "the USB bus has no bandwidth left for it; choose a smaller size or rate, stop "
               "other cameras, or plug it into another port";
    case ENODEV:
    case ENXIO:
        return "it was unplugged; plug it in again and open it anew";
    case ENOENT:
        return "there is no such node; it was unplugged, or this is a container that was not given "
               "it";
    case EIO:
        return "the device or its driver failed; start it anew, and if that does not help unplug "
               "it and plug it in again";
    case EMFILE:
    case ENFILE:
        return textOf(trouble.error) + "; close some";
    default:
        return textOf(trouble.error);
    }
}

} // namespace

std::string V4l2Trouble::sentence(const std::string &name, const std::string &node,
                                  const std::string &holder) const
{
    const std::string why = error ? reasonAndRemedy(*this, node, holder) : reason;
    return "Camera \"" + name + "\" (" + node + ") " + operation + ": " + why;
}

bool V4l2Trouble::isBusy() const
{
    return error == EBUSY;
}

bool V4l2Trouble::isGone() const
{
    return error == ENODEV || error == ENXIO || error == ENOENT;
}

std::string holdersOf(const std::string &node, int asking)
{
    std::string holders;
    std::error_code error;
    const std::string self = std::to_string(::getpid());
    for (fs::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string number = entry->path().filename().string();
        const std::string uncounted = number == self ? std::to_string(asking) : std::string();
        if (!isNumber(number) || !hasOpen(entry->path(), node, uncounted))
            continue;
        std::string name;
        std::getline(std::ifstream(entry->path() / "comm"), name);
        if (!holders.empty())
            holders += " and ";
        holders += number == self ? "this program" : '"' + name + "\" (process " + number + ')';
    }
    return holders;
}

std::string groupRemedy(const std::string &node)
{
    struct stat status;
    if (::stat(node.c_str(), &status) != 0)
        return {};
    if ((status.st_mode & 0060) != 0060 || status.st_gid == 0)
        return "a file in /etc/udev/rules.d with the rule SUBSYSTEM==\"video4linux\", "
               "GROUP=\"video\", "
               "MODE=\"0660\" lets members of that group use it once it is plugged in anew";
    group record;
    group *found = nullptr;
    std::array<char, 4096> text;
    ::getgrgid_r(status.st_gid, &record, text.data(), text.size(), &found);
    const std::string name = found ? found->gr_name : std::to_string(status.st_gid);
    return "members of the group \"" + name + "\" may use it (as root: adduser USER " + name + ')';
}

} // namespace Ocelle
} // namespace Veltra
