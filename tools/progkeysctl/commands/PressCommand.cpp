#include "commands/Commands.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "events/EventListener.h"
#include "events/EventText.h"
#include "fields/Fields.h"
#include "outcome/Failure.h"
#include "output/Text.h"

#include <zelcore/ZELBusNames.h>
#include <zelcore/ZELEventCodec.h>

#include <QDBusArgument>

namespace commands {
namespace {

constexpr double AnswerSeconds = 5;

/// A key of an add-on module, as the module's driver reports it.
struct ModuleKeyPlace
{
    int addr = 0;
    int number = 0;
    int moduleType = 1;
};

void sendPress(const client::Bus &bus, const ModuleKeyPlace &place)
{
    ZELEvent event;
    event.setEvtName(QStringLiteral("AOM_KEY_PRESS_EVENT"));
    event.addArgument(place.number, QStringLiteral("aom_key_num"), true);
    event.addArgument(place.moduleType, QStringLiteral("aom_type"), true);
    event.addArgument(place.addr, QStringLiteral("addr"), true);
    const auto message = zel::encodeEvent(zel::objectPath(QStringLiteral("progkeysctl")), event);
    if (!message || !bus.connection().send(*message))
        throw Failure{ExitStatus::Failed,
                      QStringLiteral("The press could not be sent on %1").arg(bus.description()),
                      {}};
}

// Any peer can send an event of this name, so the sender must be the service.
bool isAnswer(const events::ReceivedEvent &received, const QString &service,
              const ModuleKeyPlace &place)
{
    if (received.event.getEvtName() != QLatin1String("AOMKEY_PRESS_NTF") ||
        received.sender != service)
        return false;
    const auto key = qdbus_cast<Key>(received.event.getArgument(QStringLiteral("key")));
    return key.position == place.number && key.aom_type == place.moduleType &&
           key.aom_addr == place.addr;
}

QString sentence(const Key &key, const Action &action, bool exists)
{
    if (!exists)
        return QStringLiteral("No key is programmed there.");
    const QString shown = QString::number(key.idKey);
    if (action.idAction == Action().idAction && key.idAction != action.idAction)
        return QStringLiteral("Key %1: its action %2 does not exist.")
            .arg(shown, QString::number(key.idAction));
    QString text = QStringLiteral("Key %1: action %2 \"%3\", type %4")
                       .arg(shown, QString::number(action.idAction), action.label,
                            QString::number(action.type));
    const QString call = QStringLiteral("%1 %2").arg(action.action, action.arguments).trimmed();
    if (!call.isEmpty())
        text += QStringLiteral(", ") + call;
    return text;
}

QList<output::Column> answerColumns()
{
    return {{QStringLiteral("exists")},
            {QStringLiteral("idKey"), true},
            {QStringLiteral("idAction"), true}};
}

void tell(cli::Session &session, const ZELEvent &answer)
{
    const auto key = qdbus_cast<Key>(answer.getArgument(QStringLiteral("key")));
    const auto action = qdbus_cast<Action>(answer.getArgument(QStringLiteral("action")));
    const bool exists = answer.getArgument(QStringLiteral("exists")).toBool();
    session.out().done(sentence(key, action, exists), answerColumns(),
                       {{QStringLiteral("exists"), exists},
                        {QStringLiteral("idKey"), output::jsonNumber(key.idKey)},
                        {QStringLiteral("idAction"), output::jsonNumber(key.idAction)},
                        {QStringLiteral("key"), fields::toJson(key)},
                        {QStringLiteral("action"), fields::toJson(action)}});
}

[[noreturn]] void throwUnanswered(cli::Session &session)
{
    const client::Bus &bus = session.bus();
    if (!session.service().isRunning())
        client::throwNotRunning(bus, client::ProgrammableKeys::moduleName());
    throw Failure{
        ExitStatus::TimeRanOut,
        QStringLiteral("The service did not answer the press on %1").arg(bus.description()),
        QStringLiteral("See its log, or allow more time with --timeout.")};
}

ModuleKeyPlace placeOf(const QString &text, int moduleType)
{
    bool hasAddress = false;
    bool hasNumber = false;
    const ModuleKeyPlace place{text.section(QLatin1Char('/'), 0, 0).toInt(&hasAddress),
                               text.section(QLatin1Char('/'), 1).toInt(&hasNumber), moduleType};
    if (!hasAddress || !hasNumber)
        throw Failure{ExitStatus::Usage,
                      QStringLiteral("\"%1\" is not of the form ADDRESS/NUMBER").arg(text),
                      QStringLiteral("For example, 2/5 is key 5 of the module with address 2.")};
    return place;
}

ExitStatus press(cli::Session &session, const cli::Arguments &arguments)
{
    const ModuleKeyPlace place = placeOf(arguments.text("ADDRESS/NUMBER"),
                                         arguments.optionalInteger("--module-type").value_or(1));
    session.out().requireFields(answerColumns());
    client::Bus &bus = session.bus();
    const QString module = client::ProgrammableKeys::moduleName();
    const QString service = bus.ownerOf(zel::serviceName(module));
    if (service.isEmpty())
        client::throwNotRunning(bus, module);
    events::EventListener listener(bus);
    sendPress(bus, place);
    const auto take = [&](const events::ReceivedEvent &received) {
        if (!isAnswer(received, service, place))
            return false;
        tell(session, received.event);
        return true;
    };
    if (!listener.listen(session.timeoutMs(AnswerSeconds), take))
        throwUnanswered(session);
    return ExitStatus::Done;
}

} // namespace

cli::Command pressCommand()
{
    return cli::command(
        "press", "press a key of an add-on module and show the answer",
        {cli::parameter("ADDRESS/NUMBER", "address of the module and number of the key"),
         cli::parameter("--module-type NUMBER", "kind of add-on module (default: 1)",
                        cli::check::integer())},
        press);
}

} // namespace commands
