#include "commands/DefaultsPlanCommand.h"

#include "client/Settings.h"
#include "planning/Plan.h"
#include "planning/PlanFiles.h"
#include "planning/PlanJson.h"
#include "planning/PlanListing.h"
#include "planning/PlanText.h"

#include <QFile>

#include <limits>
#include <memory>

namespace commands {
namespace {

struct Given
{
    std::vector<std::string> files;
    std::optional<std::string> actions;
    std::optional<std::string> keys;
    std::optional<std::string> directory;
    std::optional<int> limit;
    bool hasAll = false;
    bool isDetailed = false;
};

QString toPath(const std::string &argument)
{
    return QFile::decodeName(QByteArray::fromStdString(argument));
}

std::optional<QString> toPath(const std::optional<std::string> &argument)
{
    return argument ? std::optional<QString>(toPath(*argument)) : std::nullopt;
}

defaults::PlanReading readRollout(cli::Session &session, const Given &given)
{
    defaults::PlanSources sources;
    for (const std::string &file : given.files)
        sources.files.append(toPath(file));
    sources.actions = toPath(given.actions);
    sources.keys = toPath(given.keys);
    sources.directory = toPath(given.directory);
    sources.limit = given.limit;
    return defaults::readSettings(sources, [&session](const QString &name) {
        return client::readSetting(session.bus(), name);
    });
}

void tell(cli::Session &session, const Given &given, const defaults::Plan &plan,
          const QList<defaults::PlanWarning> &warnings)
{
    output::Output &out = session.out();
    const output::Manner &manner = out.manner();
    if (out.isJson()) {
        out.record(defaults::planColumns(), defaults::toJson(plan, warnings));
    } else if (out.isForPeople() && manner.fields.isEmpty()) {
        const QStringList lines =
            defaults::linesOf(plan, {given.hasAll, manner.hasLegend}, out.terminal());
        for (const QString &line : lines)
            out.say(line);
    } else {
        out.list(defaults::listingOf(plan));
    }
    out.flush();
    for (const defaults::PlanWarning &warning : warnings)
        output::warn(warning.message);
}

ExitStatus plan(cli::Session &session, const Given &given)
{
    const defaults::PlanReading reading = readRollout(session, given);
    const ListAction actions = session.service().actions();
    const ListKey keys = session.service().keys();
    const defaults::Plan plan = defaults::planOf(actions, keys, reading.settings);
    tell(session, given, plan, reading.warnings + defaults::warningsOf(plan));
    return given.isDetailed && plan.hasChanges() ? ExitStatus::Changes : ExitStatus::Done;
}

void addSources(CLI::App *command, Given &given)
{
    command
        ->add_option("FILE", given.files,
                     "files of the settings DefaultActions, DefaultKeys, ProgKeysMax")
        ->type_name(cli::type::File);
    command
        ->add_option("--actions", given.actions,
                     "a file of actions, whatever its name; - for stdin")
        ->type_name(cli::type::File);
    command->add_option("--keys", given.keys, "a file of keys, whatever its name; - for stdin")
        ->type_name(cli::type::File);
    command
        ->add_option("--settings", given.directory,
                     "take what no file is given for from the settings in this directory")
        ->type_name(cli::type::Directory)
        ->check(CLI::ExistingDirectory.description(""));
    command->add_option("--limit", given.limit, "most keys of the set; else what ProgKeysMax says")
        ->type_name(cli::type::Number)
        ->check(CLI::Range(0, std::numeric_limits<int>::max()));
}

} // namespace

void addDefaultsPlan(cli::CommandLine &line, CLI::App *group)
{
    const auto given = std::make_shared<Given>();
    CLI::App *command =
        line.addCommand(group, "plan", "tell what the next start of the service would change",
                        [given](cli::Session &session) { return plan(session, *given); });
    addSources(command, *given);
    command->add_flag("--all", given->hasAll, "show what stays as it is, too");
    command->add_flag("--detailed-exitcode", given->isDetailed,
                      "end with status 20 if there is something to change");
    command->footer("What neither a file nor --settings is given for is read from the phone, as "
                    "the service would.\nNothing is changed.");
}

} // namespace commands
