#include "commands/Commands.h"

#include "commands/KeyFilter.h"
#include "commands/RecordCommands.h"
#include "text/Format.h"
#include "text/Text.h"

#include <QHash>

namespace commands {
namespace {

void list(cli::Session &session, const cli::Arguments &arguments)
{
    const ListKey keys = session.phone().keys();
    const ListAction actions = session.phone().actions();
    QHash<qlonglong, QJsonValue> labels;
    for (const Action &action : actions)
        labels.insert(action.idAction, action.label);
    output::Listing listing;
    for (const Key &key : keys) {
        if (!isSelected(key, arguments))
            continue;
        QJsonObject row = fields::toJson(key);
        row.insert("label"_s, labels.value(key.idAction));
        listing.rows.append(row);
    }
    listing.legend = text::counted(listing.rows.size(), "key"_s);
    session.out().list(listing);
}

// The bus carries these identifiers with 32 bits.
QMapIntInt positionsOf(const QStringList &moves)
{
    QMapIntInt positions;
    for (const QString &move : moves) {
        bool hasId = false;
        bool hasPosition = false;
        const int idKey = move.section(QLatin1Char('='), 0, 0).toInt(&hasId);
        const int position = move.section(QLatin1Char('='), 1).toInt(&hasPosition);
        if (!hasId || !hasPosition)
            throw Failure{ExitStatus::Usage,
                          format("\"%1\" is not of the form KEY_ID=POSITION", move),
                          "Both must be 32-bit integers."_s};
        if (positions.contains(idKey))
            throw Failure{ExitStatus::Usage, format("Key %1 is given more than once", idKey)};
        positions.insert(idKey, position);
    }
    return positions;
}

// The service ignores unknown identifiers, so they are checked first.
void move(cli::Session &session, const cli::Arguments &arguments)
{
    const QMapIntInt positions = positionsOf(arguments.texts("KEY_ID=POSITION"));
    for (auto move = positions.begin(); move != positions.end(); ++move)
        existing<Key>(session.phone(), move.key());
    if (!session.phone().call<bool>("changeProgrammableKeysPosition", positions))
        throw Failure{
            ExitStatus::Failed, "A position could not be stored"_s,
            "Keys with smaller identifiers have been moved: see \"progkeysctl key list\". See "
            "also the log of the service."_s};
    output::Listing moved;
    for (auto move = positions.begin(); move != positions.end(); ++move)
        moved.rows.append(fields::toJson(existing<Key>(session.phone(), move.key())));
    if (session.out().isForPeople())
        session.out().say(format("Moved %1.", text::counted(positions.size(), "key"_s)));
    else
        session.out().list(moved);
}

void remove(cli::Session &session, const cli::Arguments &arguments)
{
    deleteEach(session, arguments.values("KEY_ID"), [&session](qlonglong idKey) {
        const auto key = existing<Key>(session.phone(), idKey);
        const int code = session.phone().call<int>("deleteProgrammableKey", idKey);
        if (code != ResultCode::Success)
            throw notDeleted(format("Key %1", idKey), key.dmId, code,
                             "Remove it from the setting DefaultKeys: then the next start of the "
                             "service deletes it."_s);
        session.out().say(format("Deleted key %1.", idKey));
        return fields::toJson(key);
    });
}

// With the label of the action. A table has room for the essential fields only.
cli::Command listCommand()
{
    const QList<cli::Parameter> options =
        placeOptions() << cli::parameter("--type NUMBER", "only keys of this type",
                                         cli::check::integer())
                       << cli::parameter("--action ACTION_ID", "only keys that trigger this action",
                                         cli::check::id);
    QStringList columns = fields::namesOf(fields::of<Key>());
    columns.insert(columns.indexOf("idAction"_s) + 1, "label"_s);
    cli::Command command = cli::command("key list", "list keys", options, columns, list);
    command.details = QStringList{"dmId"_s, "aom_type"_s};
    return command;
}

} // namespace

QList<cli::Command> keyCommands()
{
    const QStringList columns = fields::namesOf(fields::of<Key>());
    const cli::Parameter key = cli::parameter("KEY_ID", "identifier of the key", cli::check::id);
    const cli::Parameter keys =
        cli::parameter("KEY_ID...", "identifiers of the keys", cli::check::id);
    const cli::Parameter assignments =
        cli::parameter("FIELD=VALUE...", "a field and its value", cli::check::utf8);
    const cli::Parameter moves =
        cli::parameter("KEY_ID=POSITION...", "identifier of a key and its new position");
    return {cli::group({"key"_s}, "list, add, change, move and delete keys"),
            listCommand(),
            cli::command("key show", "show a key", {key}, columns, showRecord<Key>),
            withFields<Key>(
                cli::command("key add", "add a key", {assignments}, columns, addRecord<Key>),
                "idAction=7 container=home position=3 icon=phone"),
            withFields<Key>(cli::command("key set", "change fields of a key", {key, assignments},
                                         columns, setRecord<Key>),
                            "12 position=4 icon=star"),
            cli::command("key move", "change the positions of keys", {moves}, columns, move),
            cli::command("key delete", "delete keys", {keys}, columns, remove)};
}

} // namespace commands
