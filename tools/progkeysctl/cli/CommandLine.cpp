#include "cli/CommandLine.h"

#include "cli/Checks.h"
#include "cli/HelpText.h"
#include "outcome/Failure.h"

#include <cmath>
#include <cstdio>
#include <unistd.h>

namespace cli {
namespace {

constexpr const char *CommandsHeading = "Commands";
constexpr const char *CommonGroup = "Options of all commands";
constexpr double LongestTimeout = 2'000'000;

QString toText(const std::string &text)
{
    return QString::fromStdString(text);
}

int asInt(ExitStatus status)
{
    return static_cast<int>(status);
}

output::Form jsonForm(const std::string &json, bool isTerminal)
{
    const bool isPretty = json.empty() ? isTerminal : json == "pretty";
    return isPretty ? output::Form::JsonPretty : output::Form::JsonShort;
}

} // namespace

CommandLine::CommandLine()
    : m_app("The programmable keys of the phone, from a terminal and from scripts.", "progkeysctl")
{
    m_app.require_subcommand(1);
    m_app.fallthrough();
    m_app.formatter(std::make_shared<HelpText>());
    m_app.set_version_flag("--version", PROGKEYSCTL_VERSION, "show the version and end");
    m_app.set_help_flag("-h,--help", "show this help and end");
    addCommonOptions();
}

void CommandLine::addCommonOptions()
{
    auto *system = m_app.add_flag("--system", m_given.system, "talk on the system bus (default)");
    auto *session = m_app.add_flag("--session", m_given.session, "talk on the session bus");
    auto *address =
        m_app.add_option("--address", m_given.address, "talk on the bus at this address")
            ->type_name(type::Address)
            ->check(notEmpty());
    system->excludes(session)->excludes(address);
    session->excludes(address);
    auto *timeout = m_app.add_option("--timeout", m_given.timeout, "wait so long at most")
                        ->type_name("SECONDS")
                        ->check(CLI::Range(0.001, LongestTimeout));
    auto *json = m_app.add_option("--json", m_given.json, "print JSON, on one line or on many")
                     ->type_name("pretty|short")
                     ->check(CLI::IsMember({"pretty", "short"}));
    auto *j = m_app.add_flag("-j", m_given.j, "print JSON: pretty on a terminal, else short");
    j->excludes(json);
    auto *terse = m_app.add_flag("--terse", m_given.terse,
                                 "print a line a row, fields separated by colons, for scripts");
    terse->excludes(json)->excludes(j);
    auto *fields =
        m_app.add_option("--fields", m_given.fields, "print these fields, in this order")
            ->type_name("FIELD,...")
            ->check(notEmpty());
    auto *legend = m_app.add_flag("--no-legend", m_given.noLegend, "print no headings and no sums");
    for (CLI::Option *option : {system, session, address, timeout, json, j, terse, fields, legend})
        option->group(CommonGroup);
}

void CommandLine::readCommonOptions()
{
    if (m_given.session)
        m_options.bus.kind = client::BusChoice::Session;
    if (!m_given.address.empty())
        m_options.bus = {client::BusChoice::Address, toText(m_given.address)};
    if (std::isnan(m_given.timeout))
        throw Failure{ExitStatus::Usage, QStringLiteral("--timeout wants a number of seconds"),
                      toText(whereToReadOn(m_app))};
    if (m_given.timeout > 0)
        m_options.timeout = m_given.timeout;
    if (m_given.j || !m_given.json.empty())
        m_options.manner.form = jsonForm(m_given.json, isatty(STDOUT_FILENO) == 1);
    else if (m_given.terse)
        m_options.manner.form = output::Form::Terse;
    if (!m_given.fields.empty())
        m_options.manner.fields = toText(m_given.fields).split(QLatin1Char(','));
    m_options.manner.hasLegend = !m_given.noLegend;
}

CLI::App *CommandLine::addGroup(const std::string &name, const std::string &description)
{
    CLI::App *group = m_app.add_subcommand(name, description);
    group->group(CommandsHeading);
    group->require_subcommand(1);
    return group;
}

CLI::App *CommandLine::addCommand(const std::string &name, const std::string &description, Run run)
{
    return addCommand(&m_app, name, description, std::move(run));
}

CLI::App *CommandLine::addCommand(CLI::App *group, const std::string &name,
                                  const std::string &description, Run run)
{
    CLI::App *command = group->add_subcommand(name, description);
    command->group(CommandsHeading);
    command->callback([this, run = std::move(run)] { m_chosen = run; });
    return command;
}

int CommandLine::finish(const CLI::ParseError &error)
{
    const bool wasAsked = error.get_exit_code() == 0;
    if (wasAsked) {
        m_app.exit(error);
        return asInt(ExitStatus::Done);
    }
    output::sayFailure(
        {ExitStatus::Usage, toText(usageFault(m_app, error)), toText(whereToReadOn(m_app))});
    return asInt(ExitStatus::Usage);
}

int CommandLine::execute(int argc, char **argv)
{
    try {
        m_app.parse(argc, argv);
        readCommonOptions();
        Session session(m_options);
        const ExitStatus status = m_chosen(session);
        session.out().flush();
        return asInt(status);
    } catch (const CLI::ParseError &error) {
        return finish(error);
    } catch (const Failure &failure) {
        std::fflush(stdout);
        output::sayFailure(failure);
        return asInt(failure.status);
    }
}

} // namespace cli
