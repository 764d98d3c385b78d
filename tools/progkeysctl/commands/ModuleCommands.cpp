#include "commands/Commands.h"

#include "commands/RecordCommands.h"
#include "text/Format.h"

namespace commands {
namespace {

constexpr int ModuleWithDisplays = 1;

Failure refusal(const client::Phone &phone, const Key &key, int code)
{
    if (key.type != KeyType::AddOnModule)
        return {ExitStatus::Failed,
                format("Key %1 is not on an add-on module: its type is %2, not 1 (%3)", key.idKey,
                       key.type, code),
                "\"progkeysctl key list --type 1\" lists the keys on add-on modules."_s};
    if (key.aom_type != ModuleWithDisplays)
        return {
            ExitStatus::Failed,
            format("Key %1 is on an add-on module without displays: its aom_type is %2, not 1 (%3)",
                   key.idKey, key.aom_type, code),
            format("If the module has displays, run \"progkeysctl key set %1 aom_type=1\".",
                   key.idKey)};
    if (phone.call<ListAction>("getAction", key.idAction).isEmpty())
        return missingAction(format("Key %1 has no label", key.idKey), key.idAction);
    return {ExitStatus::Failed, format("The service refused the request (%1)", code),
            "See the log of the service."_s};
}

// `what` was sent to the module of the key, if the result code of the service is 0.
void finish(cli::Session &session, const Key &key, int code, const QString &what, QJsonObject row)
{
    if (code != 0)
        throw refusal(session.phone(), key, code);
    row.insert("idKey"_s, output::jsonNumber(key.idKey));
    row.insert("addr"_s, key.aom_addr);
    row.insert("key_num"_s, key.position);
    session.out().done(format("Sent %1 for key %2 to module %3.", what, key.position, key.aom_addr),
                       row);
}

void icon(cli::Session &session, const cli::Arguments &arguments)
{
    const auto key = existing<Key>(session.phone(), arguments.id("KEY_ID"));
    const int x = arguments.integer("X");
    const int y = arguments.integer("Y");
    finish(session, key, session.phone().call<int>("setIconStateForKey", key.idKey, x, y),
           format("icon %1, %2", x, y), {{"icon_x"_s, x}, {"icon_y"_s, y}});
}

void label(cli::Session &session, const cli::Arguments &arguments)
{
    const auto key = existing<Key>(session.phone(), arguments.id("KEY_ID"));
    const int state = arguments.integer("STATE");
    finish(session, key, session.phone().call<int>("setLabelStateForKey", key.idKey, state),
           format("label state %1", state), {{"label_state"_s, state}});
}

} // namespace

QList<cli::Command> moduleCommands()
{
    const cli::Parameter key = cli::parameter("KEY_ID", "identifier of the key", cli::check::id);
    const auto number = [](const char *name, const char *help) {
        return cli::parameter(name, help, cli::check::integer());
    };
    const QStringList columns = {"idKey"_s, "addr"_s, "key_num"_s};
    return {cli::command("icon", "send an icon to the add-on module of a key",
                         {key, number("X", "icon_x, as the module defines it"),
                          number("Y", "icon_y, as the module defines it")},
                         columns, icon),
            cli::command("label", "send the short label of a key's action to its add-on module",
                         {key, number("STATE", "label_state, as the module defines it")}, columns,
                         label)};
}

} // namespace commands
