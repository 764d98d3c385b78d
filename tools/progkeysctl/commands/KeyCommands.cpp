#include "commands/Commands.h"

#include "commands/KeyFilter.h"
#include "commands/RecordCommands.h"
#include "commands/Refusals.h"
#include "text/Format.h"
#include "text/Text.h"

#include <QHash>

namespace commands {
namespace {

const QString Label = "label"_s;

// The fields of a key, and the label of its action. A table without --fields has room for the
// essential ones only.
QList<output::Column> listColumns()
{
    const QStringList details = {"dmId"_s, "aom_type"_s};
    QList<output::Column> columns;
    const QList<output::Column> all = fields::columns<Key>();
    for (const output::Column &column : all) {
        columns.append(column);
        columns.last().isShown = !details.contains(column.name);
        if (column.name == "idAction"_s)
            columns.append({Label});
    }
    return columns;
}

QHash<qlonglong, QString> labelsOf(const ListAction &actions)
{
    QHash<qlonglong, QString> labels;
    for (const Action &action : actions)
        labels.insert(action.idAction, action.label);
    return labels;
}

ExitStatus list(cli::Session &session, const cli::Arguments &arguments)
{
    const ListKey keys = session.service().keys();
    const QHash<qlonglong, QString> labels = labelsOf(session.service().actions());
    output::Listing listing;
    listing.columns = listColumns();
    for (const Key &key : keys) {
        if (!isSelected(key, arguments))
            continue;
        QJsonObject row = fields::toJson(key);
        const auto label = labels.find(key.idAction);
        row.insert(Label, label == labels.end() ? QJsonValue() : QJsonValue(*label));
        listing.rows.append(row);
    }
    listing.legend = text::counted(static_cast<int>(listing.rows.size()), "key"_s);
    session.out().list(listing);
    return ExitStatus::Done;
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
            throw Failure{ExitStatus::Usage, format("Key %1 is given more than once", idKey), {}};
        positions.insert(idKey, position);
    }
    return positions;
}

// The service ignores unknown identifiers, so they are checked first.
ExitStatus move(cli::Session &session, const cli::Arguments &arguments)
{
    session.out().requireFields(fields::columns<Key>());
    const QMapIntInt positions = positionsOf(arguments.texts("KEY_ID=POSITION"));
    for (auto move = positions.begin(); move != positions.end(); ++move)
        existing<Key>(session.service(), move.key());
    if (!session.service().call<bool>("changeProgrammableKeysPosition", positions))
        throw Failure{
            ExitStatus::Failed, "A position could not be stored"_s,
            "Keys with smaller identifiers have been moved: see \"progkeysctl key list\". See "
            "also the log of the service."_s};
    output::Listing moved;
    moved.columns = fields::columns<Key>();
    for (auto move = positions.begin(); move != positions.end(); ++move)
        moved.rows.append(fields::toJson(existing<Key>(session.service(), move.key())));
    if (session.out().isForPeople())
        session.out().say(
            format("Moved %1.", text::counted(static_cast<int>(positions.size()), "key"_s)));
    else
        session.out().list(moved);
    return ExitStatus::Done;
}

ExitStatus remove(cli::Session &session, const cli::Arguments &arguments)
{
    const auto deleteOne = [&session](qlonglong idKey) {
        const auto key = existing<Key>(session.service(), idKey);
        const int code = session.service().call<int>("deleteProgrammableKey", idKey);
        if (code != 0)
            throw deletionRefused(key, code);
        session.out().say(format("Deleted key %1.", idKey));
        return fields::toJson(key);
    };
    return deleteEach(session, arguments.values("KEY_ID"), fields::columns<Key>(), deleteOne);
}

} // namespace

QList<cli::Command> keyCommands()
{
    const cli::Parameter key = cli::parameter("KEY_ID", "identifier of the key", cli::check::id);
    const cli::Parameter keys =
        cli::parameter("KEY_ID...", "identifiers of the keys", cli::check::id);
    const cli::Parameter assignments =
        cli::parameter("FIELD=VALUE...", "a field and its value", cli::check::utf8);
    const cli::Parameter moves =
        cli::parameter("KEY_ID=POSITION...", "identifier of a key and its new position");
    return {cli::group("key", "list, add, change, move and delete keys"),
            cli::command("key list", "list keys", keyFilterOptions(), list),
            cli::command("key show", "show a key", {key}, showRecord<Key>),
            withFields<Key>(cli::command("key add", "add a key", {assignments}, addRecord<Key>),
                            "idAction=7 container=home position=3 icon=phone"),
            withFields<Key>(cli::command("key set", "change fields of a key", {key, assignments},
                                         setRecord<Key>),
                            "12 position=4 icon=star"),
            cli::command("key move", "change the positions of keys", {moves}, move),
            cli::command("key delete", "delete keys", {keys}, remove)};
}

} // namespace commands
