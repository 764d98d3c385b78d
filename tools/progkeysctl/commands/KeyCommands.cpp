#include "commands/KeyCommands.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "commands/Counted.h"
#include "commands/DeleteEach.h"
#include "commands/KeyFilter.h"
#include "commands/Refusals.h"
#include "fields/Fields.h"

namespace commands {
namespace {

ExitStatus list(cli::Session &session, const cli::Arguments &arguments)
{
    const KeyFilter filter = keyFilterFrom(arguments);
    output::Listing listing;
    listing.columns = fields::columns<Key>();
    const ListKey keys = session.service().keys();
    for (const Key &key : keys)
        if (filter.admits(key))
            listing.rows.append(fields::toJson(key));
    listing.legend = counted(listing.rows.size(), "key");
    session.out().list(listing);
    return ExitStatus::Done;
}

ExitStatus show(cli::Session &session, const cli::Arguments &arguments)
{
    const Key key = keyOf(session.service(), arguments.id("KEY_ID"));
    session.out().record(fields::columns<Key>(), fields::toJson(key));
    return ExitStatus::Done;
}

void warnOfIdentifier(const Key &key)
{
    if (!key.dmId.isEmpty())
        output::warn(QStringLiteral("a key with a dmId counts as provisioned: the next start "
                                    "of the service removes it"));
}

// A key of the set, unless the assignments say otherwise.
Key newKey(const QStringList &assignments)
{
    Key key;
    key.type = KeyType::Set;
    fields::assign(key, assignments);
    if (key.idKey != Key().idKey)
        throw Failure{ExitStatus::Usage, QStringLiteral("The service gives a new key its idKey"),
                      QStringLiteral("Leave it out.")};
    if (key.position < 0)
        throw Failure{ExitStatus::Usage, QStringLiteral("A key wants a position from 0 upward"),
                      QStringLiteral("Say position=NUMBER.")};
    return key;
}

ExitStatus add(cli::Session &session, const cli::Arguments &arguments)
{
    session.out().requireFields(fields::columns<Key>());
    Key key = newKey(arguments.texts("KEY_FIELD=VALUE"));
    warnOfIdentifier(key);
    const qlonglong result = session.service().createKey(key);
    if (result < 0)
        throw creationRefused(session.service(), key, result);
    key.idKey = result;
    session.out().done(QStringLiteral("Key %1 is made.").arg(result), fields::columns<Key>(),
                       fields::toJson(key));
    return ExitStatus::Done;
}

ExitStatus set(cli::Session &session, const cli::Arguments &arguments)
{
    session.out().requireFields(fields::columns<Key>());
    const qlonglong idKey = arguments.id("KEY_ID");
    Key key = keyOf(session.service(), idKey);
    fields::assign(key, arguments.texts("KEY_FIELD=VALUE"));
    if (key.idKey != idKey)
        throw Failure{ExitStatus::Usage, QStringLiteral("A key keeps its idKey"),
                      QStringLiteral("Make a new key and delete this one.")};
    warnOfIdentifier(key);
    const int code = session.service().modifyKey(key);
    if (code != 0)
        throw keyChangeRefused(session.service(), key, code);
    session.out().done(QStringLiteral("Key %1 is changed.").arg(idKey), fields::columns<Key>(),
                       fields::toJson(key));
    return ExitStatus::Done;
}

// The bus carries positions by ids of 32 bits.
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
                          QStringLiteral("%1 is not of the form ID=POSITION").arg(move),
                          QStringLiteral("Both are whole numbers of 32 bits.")};
        if (positions.contains(idKey))
            throw Failure{
                ExitStatus::Usage, QStringLiteral("Key %1 is named twice").arg(idKey), {}};
        positions.insert(idKey, position);
    }
    return positions;
}

// The service passes over an id that is not there, and says nothing; people want to know.
ExitStatus move(cli::Session &session, const cli::Arguments &arguments)
{
    session.out().requireFields(fields::columns<Key>());
    const QMapIntInt positions = positionsOf(arguments.texts("KEY_ID=POSITION"));
    for (auto move = positions.begin(); move != positions.end(); ++move)
        keyOf(session.service(), move.key());
    if (!session.service().moveKeys(positions))
        throw Failure{ExitStatus::Failed, QStringLiteral("A position could not be stored"),
                      QStringLiteral("Keys of smaller ids are moved already; \"progkeysctl key "
                                     "list\" shows where they are. The service's log says more.")};
    output::Listing moved;
    moved.columns = fields::columns<Key>();
    for (auto move = positions.begin(); move != positions.end(); ++move)
        moved.rows.append(fields::toJson(keyOf(session.service(), move.key())));
    if (session.out().isForPeople())
        session.out().say(counted(positions.size(), "key") + QStringLiteral(" moved."));
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
        session.out().say(QStringLiteral("Key %1 is deleted.").arg(idKey));
        return fields::toJson(key);
    });
}

} // namespace

QList<cli::Command> keyCommands()
{
    const cli::Parameter id = cli::argument("KEY_ID", cli::type::id("KEY_ID"), "its identifier");
    const cli::Parameter assignments =
        cli::argument("KEY_FIELD=VALUE", cli::type::text("KEY_FIELD=VALUE"), "what is to be")
            .repeatable();
    const cli::Parameter moves =
        cli::argument("KEY_ID=POSITION", cli::type::text("KEY_ID=POSITION"), "what is to be")
            .repeatable();
    const cli::Parameter keyType =
        cli::option("--type", cli::type::integer("NUMBER"), "only keys of this type");
    return {cli::group("key", "list, make, change, move and delete keys"),
            cli::command("key list", "list the keys", placeOptions() << keyType, list),
            cli::command("key show", "show one key", {id}, show),
            cli::command("key add", "make a key", {assignments}, add),
            cli::command("key set", "change fields of a key", {id, assignments}, set),
            cli::command("key move", "give keys new positions", {moves}, move),
            cli::command("key delete", "delete keys", {id.repeatable()}, remove)};
}

} // namespace commands
