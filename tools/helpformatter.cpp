// SPDX-License-Identifier: BSD-3-Clause
#include "helpformatter.h"

#include "console.h"

#include <sstream>

namespace Tool {
namespace {

constexpr std::size_t Columns = 80;

std::string wrapped(const std::string &text, std::size_t width)
{
    std::istringstream words(text);
    std::string result;
    std::size_t column = 0;
    for (std::string word; words >> word;) {
        if (column > 0 && column + 1 + word.size() > width) {
            result += '\n';
            column = 0;
        } else if (column > 0) {
            result += ' ';
            ++column;
        }
        result += word;
        column += word.size();
    }
    return result;
}

} // namespace

std::string HelpFormatter::make_option_desc(const CLI::Option *option) const
{
    return wrapped(CLI::Formatter::make_option_desc(option), Columns - get_column_width());
}

std::string HelpFormatter::make_subcommand(const CLI::App *command) const
{
    std::stringstream out;
    CLI::detail::format_help(out, command->get_display_name(true),
                             wrapped(command->get_description(), Columns - get_column_width()),
                             get_column_width());
    return out.str();
}

std::string HelpFormatter::make_description(const CLI::App *app) const
{
    return wrapped(CLI::Formatter::make_description(app), Columns) + '\n';
}

bool printRequested(const CLI::App &app, const CLI::ParseError &request)
{
    std::ostringstream text;
    app.exit(request, text, text);
    QString lines = QString::fromStdString(text.str());
    lines.chop(lines.endsWith(QLatin1Char('\n')) ? 1 : 0); // which printLine() adds
    return printLine(lines);
}

} // namespace Tool
