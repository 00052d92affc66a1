// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <QSize>

#include <optional>
#include <string>

namespace Tool {

QSize sizeFrom(const std::string &text);    // "640x480"; not valid for anything else
int bitRateFrom(const std::string &text);   // bits per second, "800000", "800k" or "1.5M"; else 0
qint64 framesFrom(const std::string &text); // "12"; 0 for anything else
std::optional<int> rotationFrom(const std::string &text); // 0, 90, 180 or 270 degrees

// What is wrong with an argument, for people; empty where nothing is.
std::string sizeProblem(const std::string &text);
std::string rateProblem(const std::string &text);
std::string framesProblem(const std::string &text);
std::string snapshotProblem(const std::string &text);
std::string nameProblem(const std::string &text);   // of a file
std::string folderProblem(const std::string &text); // of a file's name
std::string bitRateProblem(const std::string &text);
std::string secondsProblem(const std::string &text);
std::string rotationProblem(const std::string &text);
std::string codecProblem(const std::string &text);

} // namespace Tool
