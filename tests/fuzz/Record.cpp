#include "MessageMaker.h"
#include "PrivateLine.h"
#include "records/Action.h"
#include "records/Key.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr char Path[] = "/peer";

// Takes what the service's methods take, and gives it back.
class Receiver : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

public slots:
    Key give(const Key &key) { return key; }
    Action give(const Action &action) { return action; }
    ListKey give(const ListKey &keys) { return keys; }
    ListAction give(const ListAction &actions) { return actions; }
};

fuzz::PrivateLine &line()
{
    static fuzz::PrivateLine theLine([](QDBusConnection connection, QObject *owner) {
        registerDBusKey();
        registerDBusAction();
        connection.registerObject(QLatin1String(Path), new Receiver(owner),
                                  QDBusConnection::ExportAllSlots);
    });
    return theLine;
}

bool isOfRecords(const std::string &signature)
{
    for (const char *known : {"(xsxsisiii)", "(xsisssss)", "a(xsxsisiii)", "a(xsisssss)"}) {
        if (signature == known)
            return true;
    }
    return false;
}

// The body stands last, after what the header says it is long.
std::string bodyOf(DBusMessage *message)
{
    constexpr std::size_t LengthOffset = 4;
    dbus_message_lock(message);
    char *bytes = nullptr;
    int size = 0;
    dbus_message_marshal(message, &bytes, &size);
    std::uint32_t length = 0;
    std::memcpy(&length, bytes + LengthOffset, sizeof length);
    std::string body(bytes + size - length, bytes + size);
    dbus_free(bytes);
    return body;
}

void failOn(const char *fault, DBusMessage *message)
{
    std::fprintf(stderr, "%s: signature \"%s\"\n", fault, dbus_message_get_signature(message));
    std::abort();
}

void check(DBusMessage *call, DBusMessage *reply)
{
    const bool isAnswered = dbus_message_get_type(reply) == DBUS_MESSAGE_TYPE_METHOD_RETURN;
    if (isAnswered != isOfRecords(dbus_message_get_signature(call)))
        failOn("the signature does not decide", call);
    if (!isAnswered)
        return;
    if (!dbus_message_has_signature(reply, dbus_message_get_signature(call)))
        failOn("given back as something else", reply);
    if (bodyOf(call) != bodyOf(reply))
        failOn("not given back as it came", call);
}

} // namespace

/// A call of any signature, with any values that the bus lets pass: records are given back byte by
/// byte as they came, and anything else is refused.
// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    fuzz::MessageMaker maker(data, size, "(xsxsisiii)");
    DBusMessage *call = dbus_message_new_method_call(nullptr, Path, nullptr, "give");
    maker.fill(call);
    DBusMessage *reply = line().call(call);
    check(call, reply);
    dbus_message_unref(reply);
    dbus_message_unref(call);
    return 0;
}

#include "Record.moc"
