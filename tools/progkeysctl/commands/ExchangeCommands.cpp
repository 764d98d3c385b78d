#include "commands/Commands.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "client/Settings.h"
#include "commands/KeyFilter.h"
#include "exchange/Import.h"
#include "fields/Fields.h"
#include "files/Files.h"

#include <algorithm>

namespace commands {
namespace {

const Action *find(const ListAction &actions, qlonglong idAction)
{
    for (const Action &action : actions)
        if (action.idAction == idAction)
            return &action;
    return nullptr;
}

void take(exchange::Document &document, const Action &action)
{
    if (!find(document.actions, action.idAction))
        document.actions.append(action);
}

void takeKey(exchange::Document &document, const Key &key, const ListAction &actions)
{
    exchange::ExportedKey exported{key, {}};
    const Action *action = find(actions, key.idAction);
    if (!action) {
        output::warn(QStringLiteral("key %1 was not exported: action %2 does not exist")
                         .arg(QString::number(key.idKey), QString::number(key.idAction)));
        return;
    }
    if (fields::isUsers(*action))
        take(document, *action);
    exported.actionDmId = action->dmId;
    document.keys.append(exported);
}

exchange::Document collect(client::ProgrammableKeys &service, const KeyFilter &filter)
{
    const ListAction actions = service.actions();
    const ListKey keys = service.keys();
    exchange::Document document;
    if (filter.admitsAll())
        for (const Action &action : actions)
            if (fields::isUsers(action))
                document.actions.append(action);
    for (const Key &key : keys)
        if (key.dmId.isEmpty() && filter.admits(key))
            takeKey(document, key, actions);
    return document;
}

ExitStatus runExport(cli::Session &session, const cli::Arguments &arguments)
{
    session.out().requireDocumentForm();
    const KeyFilter filter = keyFilterFrom(arguments);
    const QString file = arguments.path("--output");
    const bool isPretty = session.out().manner().form != output::Form::JsonShort;
    const QByteArray text = exchange::toJson(collect(session.service(), filter), isPretty);
    if (file.isEmpty() || file == files::StandardStream)
        session.out().write(text);
    else
        files::writeWhole(file, text);
    return ExitStatus::Done;
}

// An import without room for all keys does not begin.
void requireRoom(const client::Bus &bus, const exchange::ImportPlan &plan)
{
    if (plan.addedSetKeys == 0)
        return;
    const std::optional<QString> setting = client::readSetting(bus, QStringLiteral("ProgKeysMax"));
    if (!setting || plan.setKeysAfterwards <= setting->toInt())
        return;
    throw Failure{ExitStatus::Failed,
                  QStringLiteral("Nothing was imported: the phone would have %1 keys of the set, "
                                 "and the limit ProgKeysMax is %2")
                      .arg(plan.setKeysAfterwards)
                      .arg(setting->toInt()),
                  QStringLiteral("Delete keys of type 0, have the limit raised, or export fewer "
                                 "keys with --container or --module.")};
}

QString summary(const output::Listing &steps, bool isDryRun)
{
    const QStringList counted{QStringLiteral("planned"), QStringLiteral("done"),
                              QStringLiteral("skipped")};
    const auto count = [&](const char *step) {
        return std::count_if(steps.rows.begin(), steps.rows.end(), [&](const QJsonObject &row) {
            return row.value(QStringLiteral("step")) == QLatin1String(step) &&
                   counted.contains(row.value(QStringLiteral("outcome")).toString());
        });
    };
    return QStringLiteral("%1%2 added, %3 changed, %4 skipped")
        .arg(isDryRun ? QStringLiteral("dry run: ") : QString())
        .arg(count("add"))
        .arg(count("change"))
        .arg(count("skip"));
}

ExitStatus runImport(cli::Session &session, const cli::Arguments &arguments)
{
    const bool isDryRun = arguments.has("--dry-run");
    const QString file = arguments.path("FILE");
    const exchange::Document document =
        exchange::fromJson(files::readAll(file), files::displayName(file));
    client::ProgrammableKeys &service = session.service();
    const exchange::ImportPlan plan =
        exchange::planImport(document, service.actions(), service.keys());
    requireRoom(session.bus(), plan);
    exchange::ImportResult result{exchange::listingOf(plan), std::nullopt};
    session.out().requireFields(result.steps.columns);
    if (!isDryRun)
        result = exchange::carryOut(plan, service);
    result.steps.legend = summary(result.steps, isDryRun);
    session.out().list(result.steps);
    if (result.failure)
        throw Failure(*result.failure);
    return ExitStatus::Done;
}

} // namespace

QList<cli::Command> exchangeCommands()
{
    const cli::Parameter output =
        cli::option("--output", cli::type::file(), "write to this file instead of standard output")
            .withShortName("-o");
    return {cli::command("export", "export the keys and actions that users made, as JSON",
                         placeOptions() << output, runExport),
            cli::command("import", "import keys and actions from an export",
                         {cli::argument("FILE", cli::type::file(),
                                        "file made by export; - is standard input"),
                          cli::flag("--dry-run", "show what would be done, without doing it")},
                         runImport)};
}

} // namespace commands
