#include "commands/Commands.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "events/EventListener.h"
#include "events/EventText.h"
#include "fields/Fields.h"
#include "outcome/Failure.h"
#include "text/Format.h"
#include "text/Text.h"

#include <zelcore/ZELBusNames.h>
#include <zelcore/ZELEventCodec.h>

#include <QDBusArgument>

namespace commands {
namespace {

constexpr double AnswerSeconds = 5;

/// A key of an add-on module, as the module's driver reports it.
struct Place
{
    int addr = 0;
    int number = 0;
    int moduleType = 1;
};

Place placeFrom(const cli::Arguments &arguments)
{
    const QString text = arguments.text("ADDRESS/NUMBER");
    bool hasAddress = false;
    bool hasNumber = false;
    const Place place{text.section(QLatin1Char('/'), 0, 0).toInt(&hasAddress),
                      text.section(QLatin1Char('/'), 1).toInt(&hasNumber),
                      arguments.optionalInteger("--module-type").value_or(1)};
    if (!hasAddress || !hasNumber)
        throw Failure{ExitStatus::Usage, format("\"%1\" is not of the form ADDRESS/NUMBER", text),
                      "For example, 2/5 is key 5 of the module with address 2."_s};
    return place;
}

void sendPress(const client::Bus &bus, const Place &place)
{
    ZELEvent event;
    event.setEvtName("AOM_KEY_PRESS_EVENT"_s);
    event.addArgument(place.number, "aom_key_num"_s, true);
    event.addArgument(place.moduleType, "aom_type"_s, true);
    event.addArgument(place.addr, "addr"_s, true);
    const auto message = zel::encodeEvent(zel::objectPath("progkeysctl"_s), event);
    if (!message || !bus.connection().send(*message))
        client::throwLost(bus);
}

/// The answer of the service.
struct Answer
{
    Key key;
    Action action;
    bool exists;
};

Answer answerFrom(const ZELEvent &event)
{
    return {qdbus_cast<Key>(event.getArgument("key"_s)),
            qdbus_cast<Action>(event.getArgument("action"_s)),
            event.getArgument("exists"_s).toBool()};
}

// Any peer can send an event of this name, so the sender must be the service.
bool isAnswer(const events::ReceivedEvent &received, const QString &service, const Place &place)
{
    if (received.event.getEvtName() != "AOMKEY_PRESS_NTF"_s || received.sender != service)
        return false;
    const Key key = answerFrom(received.event).key;
    return key.position == place.number && key.aom_type == place.moduleType &&
           key.aom_addr == place.addr;
}

QString sentence(const Answer &answer)
{
    const Action &action = answer.action;
    if (!answer.exists)
        return "No key is programmed there."_s;
    const QString key = format("Key %1:", answer.key.idKey);
    if (action.idAction == Action().idAction && answer.key.idAction != action.idAction)
        return format("%1 its action %2 does not exist.", key, answer.key.idAction);
    const QString call = format("%1 %2", action.action, action.arguments).trimmed();
    return format("%1 action %2 \"%3\", type %4%5", key, action.idAction, action.label, action.type,
                  call.isEmpty() ? call : ", "_s + call);
}

void print(cli::Session &session, const Answer &answer)
{
    session.out().done(sentence(answer), {{"exists"_s, answer.exists},
                                          {"idKey"_s, output::jsonNumber(answer.key.idKey)},
                                          {"idAction"_s, output::jsonNumber(answer.key.idAction)},
                                          {"key"_s, fields::toJson(answer.key)},
                                          {"action"_s, fields::toJson(answer.action)}});
}

ExitStatus press(cli::Session &session, const cli::Arguments &arguments)
{
    const Place place = placeFrom(arguments);
    client::Bus &bus = session.bus();
    const QString module = client::ProgrammableKeys::moduleName();
    const QString service = bus.ownerOf(zel::serviceName(module));
    if (service.isEmpty())
        client::throwNotRunning(bus, module);
    events::EventListener listener(bus);
    sendPress(bus, place);
    const auto take = [&](const events::ReceivedEvent &received) {
        const bool isOurs = isAnswer(received, service, place);
        if (isOurs)
            print(session, answerFrom(received.event));
        return isOurs;
    };
    if (listener.listen(session.timeoutMs(AnswerSeconds), take))
        return ExitStatus::Done;
    if (!session.service().isRunning())
        client::throwNotRunning(bus, module);
    throw Failure{ExitStatus::TimeRanOut,
                  format("The service did not answer the press on %1", bus.description()),
                  "See its log, or allow more time with --timeout."_s};
}

} // namespace

cli::Command pressCommand()
{
    return cli::command(
        "press", "press a key of an add-on module and show the answer",
        {cli::parameter("ADDRESS/NUMBER", "address of the module and number of the key"),
         cli::parameter("--module-type NUMBER", "kind of add-on module (default: 1)",
                        cli::check::integer())},
        {"exists"_s, "idKey"_s, "idAction"_s}, press);
}

} // namespace commands
