#include "MessageMaker.h"

#include <QString>

#include <algorithm>
#include <cstring>

namespace fuzz {
namespace {

constexpr int DeepestOfAll = 64;
constexpr std::uint8_t MostItems = 8;

DBusSignatureIter typesOf(const std::string &signature)
{
    DBusSignatureIter type;
    dbus_signature_iter_init(&type, signature.c_str());
    return type;
}

std::string signatureOf(const DBusSignatureIter *type)
{
    char *text = dbus_signature_iter_get_signature(type);
    std::string signature(text);
    dbus_free(text);
    return signature;
}

// The system takes only so many file descriptors at a time; they are left out.
bool isSignature(const std::string &text)
{
    return text.find_first_of(std::string(DBUS_TYPE_UNIX_FD_AS_STRING) + '\0') ==
               std::string::npos &&
           dbus_signature_validate(text.c_str(), nullptr);
}

std::size_t sizeOf(int type)
{
    switch (type) {
    case DBUS_TYPE_BYTE:
        return 1;
    case DBUS_TYPE_INT16:
    case DBUS_TYPE_UINT16:
        return 2;
    case DBUS_TYPE_INT64:
    case DBUS_TYPE_UINT64:
    case DBUS_TYPE_DOUBLE:
        return 8;
    default:
        return 4;
    }
}

// A mark of byte order at the beginning of a text does not survive Qt's conversion.
std::string readable(const std::string &bytes)
{
    QString text = QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
    text.remove(QChar(QChar::Null)).remove(QChar(QChar::ByteOrderMark));
    return text.toStdString();
}

} // namespace

MessageMaker::MessageMaker(const std::uint8_t *data, std::size_t size, const char *usualSignature)
    : m_data(data), m_size(size), m_signature(takeLine())
{
    if (!isSignature(m_signature))
        m_signature = usualSignature;
}

void MessageMaker::fill(DBusMessage *message)
{
    if (m_signature.empty())
        return;
    DBusMessageIter out;
    dbus_message_iter_init_append(message, &out);
    DBusSignatureIter type = typesOf(m_signature);
    appendFields(&out, &type, DeepestOfAll);
}

void MessageMaker::append(DBusMessageIter *out, DBusSignatureIter *type, int room)
{
    const int kind = dbus_signature_iter_get_current_type(type);
    if (kind == DBUS_TYPE_ARRAY)
        return appendArray(out, type, room - 1);
    if (kind == DBUS_TYPE_VARIANT)
        return appendVariant(out, room - 1);
    if (dbus_type_is_container(kind)) {
        DBusSignatureIter fields;
        dbus_signature_iter_recurse(type, &fields);
        DBusMessageIter inner;
        dbus_message_iter_open_container(out, kind, nullptr, &inner);
        appendFields(&inner, &fields, room - 1);
        dbus_message_iter_close_container(out, &inner);
        return;
    }
    return dbus_type_is_fixed(kind) ? appendNumber(out, kind) : appendText(out, kind);
}

void MessageMaker::appendFields(DBusMessageIter *out, DBusSignatureIter *type, int room)
{
    do
        append(out, type, room);
    while (dbus_signature_iter_next(type));
}

void MessageMaker::appendNumber(DBusMessageIter *out, int type)
{
    DBusBasicValue value = {};
    const std::string bytes = takeBytes(sizeOf(type));
    std::memcpy(&value, bytes.data(), bytes.size());
    if (type == DBUS_TYPE_BOOLEAN)
        value.bool_val &= 1U;
    dbus_message_iter_append_basic(out, type, &value);
}

void MessageMaker::appendText(DBusMessageIter *out, int type)
{
    std::string text = takeText();
    if (type == DBUS_TYPE_OBJECT_PATH && !dbus_validate_path(text.c_str(), nullptr))
        text = "/";
    if (type == DBUS_TYPE_SIGNATURE && !dbus_signature_validate(text.c_str(), nullptr))
        text.clear();
    const char *value = text.c_str();
    dbus_message_iter_append_basic(out, type, &value);
}

void MessageMaker::appendArray(DBusMessageIter *out, DBusSignatureIter *type, int room)
{
    DBusSignatureIter item;
    dbus_signature_iter_recurse(type, &item);
    DBusMessageIter inner;
    dbus_message_iter_open_container(out, DBUS_TYPE_ARRAY, signatureOf(&item).c_str(), &inner);
    for (int count = m_size == 0 ? 0 : takeByte() % MostItems; count > 0; --count)
        append(&inner, &item, room);
    dbus_message_iter_close_container(out, &inner);
}

void MessageMaker::appendVariant(DBusMessageIter *out, int room)
{
    const std::string signature = takeVariantType(room);
    DBusMessageIter inner;
    dbus_message_iter_open_container(out, DBUS_TYPE_VARIANT, signature.c_str(), &inner);
    DBusSignatureIter type = typesOf(signature);
    append(&inner, &type, room);
    dbus_message_iter_close_container(out, &inner);
}

std::string MessageMaker::takeVariantType(int room)
{
    const std::string text = takeText();
    const bool isOne = isSignature(text) && dbus_signature_validate_single(text.c_str(), nullptr);
    const bool fits = static_cast<int>(text.size()) <= room; // a level takes a letter at least
    return isOne && fits ? text : DBUS_TYPE_INT32_AS_STRING;
}

std::string MessageMaker::takeLine()
{
    const std::uint8_t *end = std::find(m_data, m_data + m_size, '\n');
    std::string line(m_data, end);
    m_size -= line.size();
    m_data = end;
    takeByte();
    return line;
}

std::string MessageMaker::takeBytes(std::size_t count)
{
    const std::size_t available = std::min(count, m_size);
    std::string bytes(m_data, m_data + available);
    m_data += available;
    m_size -= available;
    bytes.resize(count);
    return bytes;
}

std::uint8_t MessageMaker::takeByte()
{
    return static_cast<std::uint8_t>(takeBytes(1).front());
}

std::string MessageMaker::takeText()
{
    const std::size_t length = takeByte();
    return readable(takeBytes(std::min(length, m_size)));
}

} // namespace fuzz
