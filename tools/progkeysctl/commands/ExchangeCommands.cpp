#include "commands/ExchangeCommands.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "client/Settings.h"
#include "commands/KeyFilter.h"
#include "exchange/ImportRun.h"
#include "fields/Fields.h"
#include "files/Files.h"

#include <cstdio>
#include <unistd.h>

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
        output::warn(QStringLiteral("key %1 is left out: its action %2 is gone")
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
    const KeyFilter filter = keyFilterFrom(arguments);
    const QString file = arguments.path("--output");
    const bool isPretty = session.out().manner().form != output::Form::JsonShort;
    const QByteArray text = exchange::toJson(collect(session.service(), filter), isPretty);
    if (file.isEmpty() || file == files::StandardStream)
        session.out().raw(text);
    else
        files::writeWhole(file, text);
    return ExitStatus::Done;
}

// Known before anything is done, so that an import that cannot end whole does not begin.
void requireRoom(const client::Bus &bus, const exchange::ImportPlan &plan)
{
    if (!plan.addsSetKeys())
        return;
    const std::optional<QString> setting = client::readSetting(bus, QStringLiteral("ProgKeysMax"));
    if (!setting || plan.setKeysAfterwards <= setting->toInt())
        return;
    throw Failure{ExitStatus::Failed,
                  QStringLiteral("There would be %1 keys of the set, and ProgKeysMax allows %2; "
                                 "nothing was imported")
                      .arg(plan.setKeysAfterwards)
                      .arg(setting->toInt()),
                  QStringLiteral("Delete keys of type 0, have the limit raised, or export less "
                                 "with --container or --module.")};
}

class ProgressLine
{
public:
    ProgressLine() : m_isShown(isatty(STDERR_FILENO) == 1) {}
    ~ProgressLine()
    {
        if (m_isShown)
            std::fputs("\r\x1b[K", stderr);
    }
    ProgressLine(const ProgressLine &) = delete;
    ProgressLine &operator=(const ProgressLine &) = delete;

    void show(int done, int all) const
    {
        if (m_isShown)
            std::fprintf(stderr, "\rimporting %d/%d", done, all);
    }

private:
    bool m_isShown;
};

exchange::ImportResult carryOut(cli::Session &session, const exchange::ImportPlan &plan)
{
    const ProgressLine line;
    return exchange::carryOut(plan, session.service(),
                              [&line](int done, int all) { line.show(done, all); });
}

QString summary(const exchange::ImportResult &result, bool isDryRun)
{
    return QStringLiteral("%1%2 added, %3 changed, %4 skipped")
        .arg(isDryRun ? QStringLiteral("would be: ") : QString(), QString::number(result.added),
             QString::number(result.changed), QString::number(result.skipped));
}

ExitStatus runImport(cli::Session &session, const cli::Arguments &arguments)
{
    const bool isDryRun = arguments.has("--dry-run");
    const QString name = arguments.path("FILE");
    const exchange::Document document = exchange::fromJson(files::readAll(name), name);
    client::ProgrammableKeys &service = session.service();
    const exchange::ImportPlan plan =
        exchange::planImport(document, service.actions(), service.keys());
    requireRoom(session.bus(), plan);
    exchange::ImportResult result = exchange::describe(plan);
    session.out().requireFields(result.steps.columns);
    if (!isDryRun)
        result = carryOut(session, plan);
    result.steps.legend = summary(result, isDryRun);
    session.out().list(result.steps);
    if (result.failure)
        throw Failure(*result.failure);
    return ExitStatus::Done;
}

} // namespace

QList<cli::Command> exchangeCommands()
{
    const cli::Parameter output =
        cli::option("--output", cli::type::file(),
                    "write to this file, whole or not at all; - is stdout")
            .withShortName("-o");
    return {cli::command("export",
                         "write what users made as JSON: keys, and the actions that they trigger",
                         placeOptions() << output, runExport),
            cli::command("import", "bring what was exported to this phone",
                         {cli::argument("FILE", cli::type::file(), "an export; - is stdin"),
                          cli::flag("--dry-run", "say what would be done, and do nothing")},
                         runImport)};
}

} // namespace commands
