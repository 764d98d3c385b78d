#include "commands/ModuleCommands.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "commands/Press.h"
#include "commands/Refusals.h"
#include "fields/Fields.h"

namespace commands {
namespace {

QList<output::Column> displayColumns()
{
    return {{QStringLiteral("idKey"), QStringLiteral("KEY"), true},
            {QStringLiteral("addr"), QStringLiteral("MODULE"), true},
            {QStringLiteral("key_num"), QStringLiteral("NUMBER"), true}};
}

void sayAsked(cli::Session &session, const Key &key, const QString &what, QJsonObject row)
{
    row.insert(QStringLiteral("idKey"), output::jsonNumber(key.idKey));
    row.insert(QStringLiteral("addr"), key.aom_addr);
    row.insert(QStringLiteral("key_num"), key.position);
    session.out().done(QStringLiteral("Module %1 is asked to show %2 on its key %3.")
                           .arg(QString::number(key.aom_addr), what, QString::number(key.position)),
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
    sayAsked(session, key, QStringLiteral("icon %1, %2").arg(x).arg(y),
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
    sayAsked(session, key, QStringLiteral("its label in state %1").arg(state),
             {{QStringLiteral("label_state"), state}});
    return ExitStatus::Done;
}

ExitStatus pressPlace(cli::Session &session, const cli::Arguments &arguments)
{
    const int moduleType = arguments.optionalInteger("--module-type").value_or(1);
    return press(session, placeOf(arguments.text("MODULE/NUMBER"), moduleType));
}

} // namespace

QList<cli::Command> moduleCommands()
{
    using namespace cli::type;
    const cli::Parameter key = cli::argument("KEY_ID", id("KEY_ID"), "the key");
    return {
        cli::command("icon", "ask the add-on module of a key to show an icon",
                     {key, cli::argument("X", integer("X"), "icon_x, for the module to understand"),
                      cli::argument("Y", integer("Y"), "icon_y, for the module to understand")},
                     icon),
        cli::command("label", "ask the add-on module of a key to show its action's short label",
                     {key, cli::argument("STATE", integer("STATE"),
                                         "label_state, for the module to understand")},
                     label),
        cli::command(
            "press", "press a key of an add-on module, and show what the service answers",
            {cli::argument("MODULE/NUMBER", text("MODULE/NUMBER"),
                           "the module's address and the key's number"),
             cli::option("--module-type", integer("NUMBER"), "kind of add-on module, else 1")},
            pressPlace)};
}

} // namespace commands
