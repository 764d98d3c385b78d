#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// What options and positional arguments take, as the command line knows it.
namespace completion {

bool isPositional(const CLI::Option &option);
bool takesArgument(const CLI::Option &option);
bool takesSeveral(const CLI::Option &option);

/// What its argument is called, without what its checks add to that.
std::string argumentName(const CLI::Option &option);

/// The words that its argument is one of; none if it is free.
std::vector<std::string> choices(const CLI::Option &option);

/// Its names as they are typed, `-o` and `--output`.
std::vector<std::string> typedNames(const CLI::Option &option);

/// The commands of a group that help shows.
std::vector<const CLI::App *> shownCommands(const CLI::App &group);

/// The one of that name; or null.
const CLI::App *shownCommand(const CLI::App &group, const std::string &name);

} // namespace completion
