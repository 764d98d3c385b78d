#include "commands/DefaultsPlanCommand.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "client/Settings.h"
#include "planning/Plan.h"
#include "planning/PlanFiles.h"
#include "planning/PlanJson.h"
#include "planning/PlanListing.h"
#include "planning/PlanText.h"

namespace commands {
namespace {

std::optional<QString> pathFrom(const cli::Arguments &arguments, const char *name)
{
    return arguments.has(name) ? std::optional(arguments.path(name)) : std::nullopt;
}

defaults::PlanReading readRollout(cli::Session &session, const cli::Arguments &arguments)
{
    defaults::PlanSources sources;
    sources.files = arguments.paths("FILE");
    sources.actions = pathFrom(arguments, "--actions");
    sources.keys = pathFrom(arguments, "--keys");
    sources.directory = pathFrom(arguments, "--settings");
    sources.limit = arguments.optionalInteger("--limit");
    return defaults::readSettings(sources, [&session](const QString &name) {
        return client::readSetting(session.bus(), name);
    });
}

void tell(cli::Session &session, const cli::Arguments &arguments, const defaults::Plan &plan,
          const QList<defaults::PlanWarning> &warnings)
{
    output::Output &out = session.out();
    const output::Manner &manner = out.manner();
    if (out.isJson()) {
        out.record(defaults::planColumns(), defaults::toJson(plan, warnings));
    } else if (out.isForPeople() && manner.fields.isEmpty()) {
        const QStringList lines =
            defaults::linesOf(plan, {arguments.has("--all"), manner.hasLegend}, out.terminal());
        for (const QString &line : lines)
            out.say(line);
    } else {
        out.list(defaults::listingOf(plan));
    }
    out.flush();
    for (const defaults::PlanWarning &warning : warnings)
        output::warn(warning.message);
}

ExitStatus plan(cli::Session &session, const cli::Arguments &arguments)
{
    const defaults::PlanReading reading = readRollout(session, arguments);
    const ListAction actions = session.service().actions();
    const ListKey keys = session.service().keys();
    const defaults::Plan plan = defaults::planOf(actions, keys, reading.settings);
    tell(session, arguments, plan, reading.warnings + defaults::warningsOf(plan));
    return arguments.has("--detailed-exitcode") && plan.hasChanges() ? ExitStatus::Changes
                                                                     : ExitStatus::Done;
}

} // namespace

cli::Command defaultsPlanCommand()
{
    cli::Command command = cli::command(
        "defaults plan", "tell what the next start of the service would change",
        {cli::argument("FILE", cli::type::file(),
                       "files of the settings DefaultActions, DefaultKeys, ProgKeysMax")
             .optional()
             .repeatable(),
         cli::option("--actions", cli::type::file(),
                     "a file of actions, whatever its name; - for stdin"),
         cli::option("--keys", cli::type::file(), "a file of keys, whatever its name; - for stdin"),
         cli::option("--settings", cli::type::existingDirectory(),
                     "take what no file is given for from the settings in this directory"),
         cli::option("--limit", cli::type::integer("NUMBER", 0),
                     "most keys of the set; else what ProgKeysMax says"),
         cli::flag("--all", "show what stays as it is, too"),
         cli::flag("--detailed-exitcode", "end with status 20 if there is something to change")},
        plan);
    command.notes = QStringLiteral("What neither a file nor --settings is given for is read from "
                                   "the phone, as the service would.\nNothing is changed.");
    return command;
}

} // namespace commands
