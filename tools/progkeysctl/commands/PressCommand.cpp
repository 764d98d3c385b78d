#include "commands/Commands.h"

#include "events/EventListener.h"
#include "fields/Fields.h"
#include "text/Format.h"

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

void sendPress(const client::Phone &phone, const Place &place)
{
    ZELEvent event;
    event.setEvtName("AOM_KEY_PRESS_EVENT"_s);
    event.addArgument(place.number, "aom_key_num"_s, true);
    event.addArgument(place.moduleType, "aom_type"_s, true);
    event.addArgument(place.addr, "addr"_s, true);
    const auto message = zel::encodeEvent(zel::objectPath("progkeysctl"_s), event);
    if (!message || !phone.connection().send(*message))
        phone.throwLost();
}

/// The answer of the service.
struct Answer
{
    explicit Answer(const ZELEvent &event)
        : key(qdbus_cast<Key>(event.getArgument("key"_s))),
          action(qdbus_cast<Action>(event.getArgument("action"_s))),
          exists(event.getArgument("exists"_s).toBool())
    {
    }

    bool isFor(const Place &place) const
    {
        return key.position == place.number && key.aom_type == place.moduleType &&
               key.aom_addr == place.addr;
    }

    Key key;
    Action action;
    bool exists;
};

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

void press(cli::Session &session, const cli::Arguments &arguments)
{
    const Place place = placeFrom(arguments);
    const client::Phone &phone = session.phone();
    const QString service = phone.connectionOf(client::Service);
    if (service.isEmpty())
        phone.throwNotRunning(client::Service);
    events::EventListener listener(phone);
    sendPress(phone, place);
    const auto take = [&](const events::ReceivedEvent &received) {
        // Any peer can send an event of this name, so the sender must be the service.
        if (received.event.getEvtName() != "AOMKEY_PRESS_NTF"_s || received.sender != service)
            return false;
        const Answer answer(received.event);
        if (answer.isFor(place))
            session.out().done(sentence(answer),
                               {{"exists"_s, answer.exists},
                                {"idKey"_s, output::jsonNumber(answer.key.idKey)},
                                {"idAction"_s, output::jsonNumber(answer.key.idAction)},
                                {"key"_s, fields::toJson(answer.key)},
                                {"action"_s, fields::toJson(answer.action)}});
        return answer.isFor(place);
    };
    if (listener.listen(session.timeoutMs(AnswerSeconds), take))
        return;
    if (!phone.isRunning(client::Service))
        phone.throwNotRunning(client::Service);
    throw Failure{ExitStatus::TimeRanOut,
                  format("The service did not answer the press on %1", phone.busName()),
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
