#include "commands/ModuleCommands.h"

#include "cli/Checks.h"
#include "commands/Press.h"
#include "commands/Refusals.h"
#include "fields/Fields.h"

#include <memory>

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

ExitStatus icon(cli::Session &session, qlonglong idKey, int x, int y)
{
    session.out().requireFields(displayColumns());
    const Key key = keyOf(session.service(), idKey);
    const int code = session.service().setIconState(idKey, x, y);
    if (code != 0)
        throw displayRefused(session.service(), idKey, code);
    sayAsked(session, key, QStringLiteral("icon %1, %2").arg(x).arg(y),
             {{QStringLiteral("icon_x"), x}, {QStringLiteral("icon_y"), y}});
    return ExitStatus::Done;
}

ExitStatus label(cli::Session &session, qlonglong idKey, int state)
{
    session.out().requireFields(displayColumns());
    const Key key = keyOf(session.service(), idKey);
    const int code = session.service().setLabelState(idKey, state);
    if (code != 0)
        throw displayRefused(session.service(), idKey, code);
    sayAsked(session, key, QStringLiteral("its label in state %1").arg(state),
             {{QStringLiteral("label_state"), state}});
    return ExitStatus::Done;
}

void addIcon(cli::CommandLine &line)
{
    struct Given
    {
        qlonglong idKey = 0;
        int x = 0;
        int y = 0;
    };
    const auto given = std::make_shared<Given>();
    CLI::App *command = line.addCommand(
        "icon", "ask the add-on module of a key to show an icon",
        [given](cli::Session &session) { return icon(session, given->idKey, given->x, given->y); });
    command->add_option("ID", given->idKey, "the key")
        ->required()
        ->type_name(cli::type::KeyId)
        ->transform(cli::wholeNumber());
    command->add_option("X", given->x, "icon_x, for the module to understand")
        ->required()
        ->type_name(cli::type::Number)
        ->transform(cli::wholeNumber());
    command->add_option("Y", given->y, "icon_y, for the module to understand")
        ->required()
        ->type_name(cli::type::Number)
        ->transform(cli::wholeNumber());
}

void addLabel(cli::CommandLine &line)
{
    struct Given
    {
        qlonglong idKey = 0;
        int state = 0;
    };
    const auto given = std::make_shared<Given>();
    CLI::App *command = line.addCommand(
        "label", "ask the add-on module of a key to show its action's short label",
        [given](cli::Session &session) { return label(session, given->idKey, given->state); });
    command->add_option("ID", given->idKey, "the key")
        ->required()
        ->type_name(cli::type::KeyId)
        ->transform(cli::wholeNumber());
    command->add_option("STATE", given->state, "label_state, for the module to understand")
        ->required()
        ->type_name(cli::type::Number)
        ->transform(cli::wholeNumber());
}

void addPress(cli::CommandLine &line)
{
    struct Given
    {
        std::string place;
        int moduleType = 1;
    };
    const auto given = std::make_shared<Given>();
    CLI::App *command = line.addCommand(
        "press", "press a key of an add-on module, and show what the service answers",
        [given](cli::Session &session) {
            return press(session, placeOf(QString::fromStdString(given->place), given->moduleType));
        });
    command->add_option("PLACE", given->place, "the module's address and the key's number")
        ->required()
        ->type_name(cli::type::ModuleKey);
    command->add_option("--module-type", given->moduleType, "kind of add-on module, else 1")
        ->type_name(cli::type::Number)
        ->transform(cli::wholeNumber());
}

} // namespace

void addModuleCommands(cli::CommandLine &line)
{
    addIcon(line);
    addLabel(line);
    addPress(line);
}

} // namespace commands
