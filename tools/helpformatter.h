// SPDX-License-Identifier: BSD-3-Clause
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace Tool {

/*! Help that fits a terminal of 80 columns: breaks what is said of options and commands into lines. */
class HelpFormatter : public CLI::Formatter
{
public:
    std::string make_option_desc(const CLI::Option *option) const override;
    std::string make_subcommand(const CLI::App *command) const override;
    std::string make_description(const CLI::App *app) const override;
};

/*! Prints the help or version that \a request is for; false if that failed, which was told. */
bool printRequested(const CLI::App &app, const CLI::ParseError &request);

} // namespace Tool
