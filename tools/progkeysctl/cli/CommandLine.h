#pragma once

#include "cli/Session.h"
#include "outcome/ExitStatus.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace cli {

/// What a command does once the whole command line is understood.
using Run = std::function<ExitStatus(Session &)>;

/// The command line: options common to all commands, and the commands, which their groups add.
///
/// What an argument stands for is said by its type name, which help shows and completion goes by:
/// see the names below.
class CommandLine
{
public:
    CommandLine();

    /// A group of commands, such as `key`; one of them must be given.
    CLI::App *addGroup(const std::string &name, const std::string &description);

    /// A command, at the top or in a group.
    CLI::App *addCommand(const std::string &name, const std::string &description, Run run);
    CLI::App *addCommand(CLI::App *group, const std::string &name, const std::string &description,
                         Run run);

    const CLI::App &app() const { return m_app; }
    const Options &options() const { return m_options; }

    /// Parses and runs what was asked for; says on stderr what went wrong. The exit status.
    int execute(int argc, char **argv);

private:
    void addCommonOptions();
    void readCommonOptions();
    int finish(const CLI::ParseError &error);

    CLI::App m_app;
    Options m_options;
    Run m_chosen;
    struct Given
    {
        bool system = false;
        bool session = false;
        std::string address;
        double timeout = -1;
        bool j = false;
        std::string json;
        bool terse = false;
        std::string fields;
        bool noLegend = false;
    } m_given;
};

/// Type names of arguments.
namespace type {
constexpr const char *KeyId = "KEY_ID";
constexpr const char *ActionId = "ACTION_ID";
constexpr const char *Container = "CONTAINER";
constexpr const char *KeyAssignment = "KEY_FIELD=VALUE";
constexpr const char *ActionAssignment = "ACTION_FIELD=VALUE";
constexpr const char *KeyMove = "KEY_ID=POSITION";
constexpr const char *ModuleAddress = "MODULE";
constexpr const char *ModuleKey = "MODULE/NUMBER";
constexpr const char *Number = "NUMBER";
constexpr const char *Address = "ADDRESS";
constexpr const char *Event = "EVENT";
constexpr const char *File = "FILE";
constexpr const char *Directory = "DIR";
} // namespace type

} // namespace cli
