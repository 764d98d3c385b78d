#include "commands/Commands.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "commands/DeleteEach.h"
#include "commands/FieldArguments.h"
#include "commands/KeyFilter.h"
#include "commands/Refusals.h"
#include "output/Text.h"

#include <QHash>

namespace commands {
namespace {

const QString Label = QStringLiteral("label");

// The fields of a key, and the label of its action. A table without --fields has room for the
// essential ones only.
QList<output::Column> listColumns()
{
    const QStringList details = {QStringLiteral("dmId"), QStringLiteral("aom_type")};
    QList<output::Column> columns;
    const QList<output::Column> all = fields::columns<Key>();
    for (const output::Column &column : all) {
        columns.append(column);
        columns.last().isShown = !details.contains(column.name);
        if (column.name == QLatin1String("idAction"))
            columns.append({Label, Label});
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
    const KeyFilter filter = keyFilterFrom(arguments);
    const ListKey keys = session.service().keys();
    const QHash<qlonglong, QString> labels = labelsOf(session.service().actions());
    output::Listing listing;
    listing.columns = listColumns();
    for (const Key &key : keys) {
        if (!filter.admits(key))
            continue;
        QJsonObject row = fields::toJson(key);
        const auto label = labels.find(key.idAction);
        row.insert(Label, label == labels.end() ? QJsonValue() : QJsonValue(*label));
        listing.rows.append(row);
    }
    listing.legend = output::counted(static_cast<int>(listing.rows.size()), QStringLiteral("key"));
    session.out().list(listing);
    return ExitStatus::Done;
}

ExitStatus show(cli::Session &session, const cli::Arguments &arguments)
{
    const Key key = keyOf(session.service(), arguments.id("KEY_ID"));
    session.out().record(fields::columns<Key>(), fields::toJson(key));
    return ExitStatus::Done;
}

void warnOfIdentifier(const Key &before, const Key &after)
{
    if (!after.dmId.isEmpty())
        output::warn(QStringLiteral("a key with a dmId is treated as provisioned: the next start "
                                    "of the service removes it"));
    else if (!before.dmId.isEmpty())
        output::warn(QStringLiteral("without its dmId, key %1 is no longer provisioned: the next "
                                    "start of the service keeps it and may create the provisioned "
                                    "key again")
                         .arg(before.idKey));
}

// A key on the set, unless the assignments specify another type.
Key newKey(const QStringList &assignments)
{
    Key key;
    key.type = KeyType::Set;
    fields::assign(key, assignments);
    if (key.idKey != Key().idKey)
        throw Failure{ExitStatus::Usage,
                      QStringLiteral("The service assigns the idKey of a new key"),
                      QStringLiteral("Omit idKey.")};
    if (key.position < 0)
        throw Failure{ExitStatus::Usage, QStringLiteral("position is required (0 or greater)"),
                      QStringLiteral("See \"progkeysctl key add --help\".")};
    return key;
}

ExitStatus add(cli::Session &session, const cli::Arguments &arguments)
{
    session.out().requireFields(fields::columns<Key>());
    Key key = newKey(arguments.texts("FIELD=VALUE"));
    warnOfIdentifier(Key(), key);
    const qlonglong result = session.service().createKey(key);
    if (result < 0)
        throw creationRefused(session.service(), key, result);
    key.idKey = result;
    session.out().done(QStringLiteral("Created key %1.").arg(result), fields::columns<Key>(),
                       fields::toJson(key));
    return ExitStatus::Done;
}

ExitStatus set(cli::Session &session, const cli::Arguments &arguments)
{
    session.out().requireFields(fields::columns<Key>());
    const Key before = keyOf(session.service(), arguments.id("KEY_ID"));
    Key key = before;
    fields::assign(key, arguments.texts("FIELD=VALUE"));
    if (key.idKey != before.idKey)
        throw Failure{ExitStatus::Usage, QStringLiteral("The idKey of a key cannot be changed"),
                      QStringLiteral("Create another key and delete this one.")};
    warnOfIdentifier(before, key);
    const int code = session.service().modifyKey(key);
    if (code != 0)
        throw keyChangeRefused(session.service(), key, code);
    session.out().done(QStringLiteral("Changed key %1.").arg(key.idKey), fields::columns<Key>(),
                       fields::toJson(key));
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
                          QStringLiteral("\"%1\" is not of the form KEY_ID=POSITION").arg(move),
                          QStringLiteral("Both must be whole numbers of 32 bits.")};
        if (positions.contains(idKey))
            throw Failure{
                ExitStatus::Usage, QStringLiteral("Key %1 is given more than once").arg(idKey), {}};
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
        keyOf(session.service(), move.key());
    if (!session.service().moveKeys(positions))
        throw Failure{ExitStatus::Failed, QStringLiteral("A position could not be stored"),
                      QStringLiteral("Keys with smaller identifiers have been moved: see "
                                     "\"progkeysctl key list\". See also the log of the service.")};
    output::Listing moved;
    moved.columns = fields::columns<Key>();
    for (auto move = positions.begin(); move != positions.end(); ++move)
        moved.rows.append(fields::toJson(keyOf(session.service(), move.key())));
    if (session.out().isForPeople())
        session.out().say(
            QStringLiteral("Moved %1.")
                .arg(output::counted(static_cast<int>(positions.size()), QStringLiteral("key"))));
    else
        session.out().list(moved);
    return ExitStatus::Done;
}

ExitStatus remove(cli::Session &session, const cli::Arguments &arguments)
{
    const QList<qlonglong> ids = arguments.ids("KEY_ID");
    return deleteEach(session, ids, fields::columns<Key>(), [&session](qlonglong idKey) {
        const Key key = keyOf(session.service(), idKey);
        const int code = session.service().deleteKey(idKey);
        if (code != 0)
            throw keyDeletionRefused(session.service(), idKey, code);
        session.out().say(QStringLiteral("Deleted key %1.").arg(idKey));
        return fields::toJson(key);
    });
}

} // namespace

QList<cli::Command> keyCommands()
{
    using namespace cli::type;
    const cli::Parameter key = cli::argument("KEY_ID", id("KEY_ID"), "identifier of the key");
    const cli::Parameter assignments =
        cli::argument("FIELD=VALUE", text("FIELD=VALUE"), "a field and its value").repeatable();
    const cli::Parameter moves = cli::argument("KEY_ID=POSITION", text("KEY_ID=POSITION"),
                                               "identifier of a key and its new position")
                                     .repeatable();
    return {
        cli::group("key", "list, add, change, move and delete keys"),
        cli::command("key list", "list keys", keyFilterOptions(), list),
        cli::command("key show", "show a key", {key}, show),
        withFields<Key>(cli::command("key add", "add a key", {assignments}, add),
                        "progkeysctl key add container=home position=3 idAction=7 icon=phone"),
        withFields<Key>(cli::command("key set", "change fields of a key", {key, assignments}, set),
                        "progkeysctl key set 12 position=4 icon=star"),
        cli::command("key move", "change the positions of keys", {moves}, move),
        cli::command("key delete", "delete keys", {key.repeatable()}, remove)};
}

} // namespace commands
