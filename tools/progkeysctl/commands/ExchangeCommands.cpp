#include "commands/Commands.h"

#include "commands/KeyFilter.h"
#include "exchange/Import.h"
#include "fields/Fields.h"
#include "files/Files.h"
#include "text/Format.h"

#include <QSet>

#include <algorithm>

namespace commands {
namespace {

exchange::Document collect(const client::Phone &phone, const cli::Arguments &arguments)
{
    const ListAction actions = phone.actions();
    const ListKey keys = phone.keys();
    exchange::Document document;
    QSet<qlonglong> used;
    for (const Key &key : keys) {
        if (!key.dmId.isEmpty() || !isSelected(key, arguments))
            continue;
        const auto action = std::find_if(actions.begin(), actions.end(), [&](const Action &each) {
            return each.idAction == key.idAction;
        });
        if (action == actions.end()) {
            output::warn(format("key %1 was not exported: action %2 does not exist", key.idKey,
                                key.idAction));
            continue;
        }
        document.keys.append({key, action->dmId});
        used.insert(key.idAction);
    }
    const bool hasAll = !arguments.has("--container") && !arguments.has("--module");
    for (const Action &action : actions) {
        if (fields::isUsers(action) && (hasAll || used.contains(action.idAction)))
            document.actions.append(action);
    }
    return document;
}

void runExport(cli::Session &session, const cli::Arguments &arguments)
{
    const QString file = arguments.path("--output");
    const bool isPretty = session.out().manner().form != output::Form::JsonShort;
    const QByteArray text = exchange::toJson(collect(session.phone(), arguments), isPretty);
    if (file.isEmpty() || file == files::StandardStream)
        session.out().write(text);
    else
        files::writeWhole(file, text);
}

// Nothing is imported if the key limit is too low for all keys.
void requireRoom(const client::Phone &phone, const QList<exchange::Step> &steps,
                 const ListKey &keys)
{
    const auto isOfSet = [](const Key &key) { return key.type == KeyType::Set; };
    const auto added = std::count_if(steps.begin(), steps.end(), [&](const exchange::Step &step) {
        return step.kind == exchange::StepKind::Add && !step.action && isOfSet(step.key);
    });
    const auto total = added + std::count_if(keys.begin(), keys.end(), isOfSet);
    const auto limit = added > 0 ? phone.setting("ProgKeysMax"_s) : std::nullopt;
    if (!limit || total <= limit->toInt())
        return;
    throw Failure{
        ExitStatus::Failed,
        format("Nothing was imported: the phone would have %1 keys on the set, and the limit "
               "ProgKeysMax is %2",
               total, limit->toInt()),
        "Delete keys of type 0, raise the limit, or export fewer keys with --container or "
        "--module."_s};
}

void runImport(cli::Session &session, const cli::Arguments &arguments)
{
    const bool isDryRun = arguments.has("--dry-run");
    const QString file = arguments.path("FILE");
    const exchange::Document document =
        exchange::fromJson(files::readAll(file), files::displayName(file));
    const client::Phone &phone = session.phone();
    const ListKey keys = phone.keys();
    QList<exchange::Step> steps = exchange::planImport(document, phone.actions(), keys);
    requireRoom(phone, steps, keys);
    std::optional<Failure> failure;
    if (!isDryRun)
        failure = exchange::carryOut(steps, phone);
    output::Listing listing = exchange::listingOf(steps);
    if (isDryRun)
        listing.legend.prepend("dry run: "_s);
    session.out().list(listing);
    if (failure)
        throw Failure(*failure);
}

} // namespace

QList<cli::Command> exchangeCommands()
{
    const cli::Parameter output = cli::parameter(
        "-o, --output FILE", "write to this file instead of standard output", cli::check::notEmpty);
    return {
        cli::command("export", "export the keys and actions that users created, as JSON",
                     placeOptions() << output, {}, runExport),
        cli::command("import", "import keys and actions from an export",
                     {cli::parameter("FILE", "file written by export; - is standard input",
                                     cli::check::notEmpty),
                      cli::parameter("--dry-run", "show what would be done, but change nothing")},
                     {"step"_s, "what"_s, "fileId"_s, "id"_s, "content"_s, "outcome"_s, "reason"_s},
                     runImport)};
}

} // namespace commands
