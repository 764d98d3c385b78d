#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace cli {

/// Help as the man pages have it: what an option takes, without remarks on other options.
class HelpText : public CLI::Formatter
{
public:
    HelpText();

    std::string make_option_opts(const CLI::Option *option) const override;
};

/// What is wrong with a command line, as a sentence without full stop, and where to read on.
std::string usageFault(const CLI::App &app, const CLI::ParseError &error);
std::string whereToReadOn(const CLI::App &app);

} // namespace cli
