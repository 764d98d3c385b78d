#include "commands/Commands.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "commands/Refusals.h"
#include "fields/Fields.h"

namespace commands {
namespace {

QList<output::Column> displayColumns()
{
    return {{QStringLiteral("idKey"), QStringLiteral("idKey"), true},
            {QStringLiteral("addr"), QStringLiteral("addr"), true},
            {QStringLiteral("key_num"), QStringLiteral("key_num"), true}};
}

void tellSent(cli::Session &session, const Key &key, const QString &what, QJsonObject row)
{
    row.insert(QStringLiteral("idKey"), output::jsonNumber(key.idKey));
    row.insert(QStringLiteral("addr"), key.aom_addr);
    row.insert(QStringLiteral("key_num"), key.position);
    session.out().done(QStringLiteral("Sent %1 for key %2 to module %3.")
                           .arg(what, QString::number(key.position), QString::number(key.aom_addr)),
                       displayColumns(), row);
}

ExitStatus icon(cli::Session &session, const cli::Arguments &arguments)
{
    const qlonglong idKey = arguments.id("KEY_ID");
    const int x = arguments.integer("X");
    const int y = arguments.integer("Y");
    session.out().requireFields(displayColumns());
    const Key key = keyOf(session.service(), idKey);
    const int code = session.service().setIconState(idKey, x, y);
    if (code != 0)
        throw displayRefused(session.service(), idKey, code);
    tellSent(session, key, QStringLiteral("icon %1, %2").arg(x).arg(y),
             {{QStringLiteral("icon_x"), x}, {QStringLiteral("icon_y"), y}});
    return ExitStatus::Done;
}

ExitStatus label(cli::Session &session, const cli::Arguments &arguments)
{
    const qlonglong idKey = arguments.id("KEY_ID");
    const int state = arguments.integer("STATE");
    session.out().requireFields(displayColumns());
    const Key key = keyOf(session.service(), idKey);
    const int code = session.service().setLabelState(idKey, state);
    if (code != 0)
        throw displayRefused(session.service(), idKey, code);
    tellSent(session, key, QStringLiteral("label state %1").arg(state),
             {{QStringLiteral("label_state"), state}});
    return ExitStatus::Done;
}

} // namespace

QList<cli::Command> moduleCommands()
{
    using namespace cli::type;
    const cli::Parameter key = cli::argument("KEY_ID", id("KEY_ID"), "identifier of the key");
    return {cli::command("icon", "send an icon to the add-on module of a key",
                         {key, cli::argument("X", integer("X"), "icon_x, as the module defines it"),
                          cli::argument("Y", integer("Y"), "icon_y, as the module defines it")},
                         icon),
            cli::command("label", "send the short label of a key's action to its add-on module",
                         {key, cli::argument("STATE", integer("STATE"),
                                             "label_state, as the module defines it")},
                         label)};
}

} // namespace commands
