// SPDX-License-Identifier: BSD-3-Clause
#include "cameraselection.h"

#include "cameranodes.h"
#include "filesource.h"
#include "foldersource.h"
#include "log.h"
#include "patternsource.h"
#include "udevvideonodes.h"
#include "v4l2source.h"
#include "v4l2system.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <system_error>

namespace Veltra {
namespace Ocelle {

namespace {

using Kind = CameraSelection::Kind;

const char Allowed[] = "v4l2, pattern, file:PATH and dir:PATH are, separated by commas "
                       "(\\, for a comma in a path)";

std::string trimmed(const std::string &text)
{
    const char blanks[] = " \t";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string> split(const std::string &text)
{
    std::vector<std::string> parts(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        if (text[i] == '\\' && (next == ',' || next == '\\'))
            parts.back() += text[++i];
        else if (text[i] == ',')
            parts.emplace_back();
        else
            parts.back() += text[i];
    }
    return parts;
}

std::optional<std::string> pathAfter(const std::string &prefix, const std::string &entry)
{
    if (entry.compare(0, prefix.size(), prefix) != 0 || entry.size() == prefix.size())
        return {};
    std::error_code error;
    const std::filesystem::path path =
            std::filesystem::absolute(entry.substr(prefix.size()), error).lexically_normal();
    const std::string name = path.string();
    const bool hasSlash = name.size() > 1 && name.back() == '/';
    return error ? std::optional<std::string>() : name.substr(0, name.size() - (hasSlash ? 1 : 0));
}

std::optional<CameraSelection::Entry> parseEntry(const std::string &text)
{
    if (text == "v4l2")
        return CameraSelection::Entry { Kind::V4l2, {} };
    if (text == "pattern")
        return CameraSelection::Entry { Kind::Pattern, {} };
    if (const auto path = pathAfter("file:", text))
        return CameraSelection::Entry { Kind::File, *path };
    if (const auto path = pathAfter("dir:", text))
        return CameraSelection::Entry { Kind::Folder, *path };
    return {};
}

PixelFormat patternFormatFrom(const char *text)
{
    const std::string name = text ? text : "nv12";
    if (name == "yu12")
        return PixelFormat::YU12;
    if (name != "nv12")
        printLine("OCELLE_PATTERN_FORMAT: \"" + name + "\" is not a format; nv12 and yu12 are");
    return PixelFormat::NV12;
}

V4l2Producer::Patience patienceFrom(const char *watchdog)
{
    const std::string name = watchdog ? watchdog : "on";
    if (name == "off")
        return V4l2Producer::Patience::endless();
    if (name != "on")
        printLine("OCELLE_V4L2_WATCHDOG: \"" + name + "\" is not a choice; on and off are");
    return {};
}

} // namespace

CameraSelection CameraSelection::parse(const char *text)
{
    CameraSelection selection;
    const std::string all = text ? text : "v4l2,pattern";
    if (trimmed(all).empty())
        return selection;
    for (const std::string &part : split(all)) {
        const std::string name = trimmed(part);
        const std::optional<Entry> entry = parseEntry(name);
        std::vector<Entry> &entries = selection.entries;
        if (!entry)
            selection.errors.push_back('"' + name + "\" is not a source of cameras; " + Allowed);
        else if (std::find(entries.begin(), entries.end(), *entry) == entries.end())
            entries.push_back(*entry);
    }
    return selection;
}

std::vector<std::string> examineCameraSelection(const char *cameras)
{
    const CameraSelection selection = CameraSelection::parse(cameras);
    std::vector<std::string> problems = selection.errors;
    for (const CameraSelection::Entry &entry : selection.entries) {
        const bool isFolder = entry.kind == Kind::Folder;
        if ((entry.kind == Kind::File || isFolder) &&
            access(entry.path.c_str(), isFolder ? R_OK | X_OK : R_OK) != 0)
            problems.push_back('"' + entry.path +
                               "\" cannot be read: " + std::generic_category().message(errno));
    }
    return problems;
}

std::vector<std::unique_ptr<CameraSource>>
selectedSources(const char *cameras, const char *patternFormat, const char *watchdog)
{
    const CameraSelection selection = CameraSelection::parse(cameras);
    for (const std::string &error : selection.errors)
        printLine("OCELLE_CAMERAS: " + error);
    const PixelFormat format = patternFormatFrom(patternFormat);
    const V4l2Producer::Patience patience = patienceFrom(watchdog);

    std::vector<std::unique_ptr<CameraSource>> sources;
    for (const CameraSelection::Entry &entry : selection.entries) {
        switch (entry.kind) {
        case Kind::V4l2:
            sources.push_back(std::make_unique<V4l2Source>(std::make_shared<KernelV4l2System>(),
                                                           std::make_unique<UdevVideoNodes>(),
                                                           patience));
            break;
        case Kind::Pattern:
            sources.push_back(std::make_unique<PatternSource>(format));
            break;
        case Kind::File:
            sources.push_back(std::make_unique<FileSource>(entry.path));
            break;
        case Kind::Folder:
            sources.push_back(std::make_unique<FolderSource>(entry.path));
            break;
        }
    }
    return sources;
}

} // namespace Ocelle
} // namespace Veltra
