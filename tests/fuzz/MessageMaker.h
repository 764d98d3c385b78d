#pragma once

#include <dbus/dbus.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

/// Makes messages that the bus library accepts out of any bytes: first a line with the signature,
/// or with anything else for the usual one, then the values. A number takes its own bytes, a text a
/// byte for its length and then so many, an array a byte for the number of its items, a variant the
/// text of its signature and then its value. Where bytes run out they are zero, and what a text may
/// not hold is replaced.
class MessageMaker
{
public:
    MessageMaker(const std::uint8_t *data, std::size_t size, const char *usualSignature);

    /// Appends a value for each type of the signature.
    void fill(DBusMessage *message);

private:
    void append(DBusMessageIter *out, DBusSignatureIter *type, int room);
    void appendNumber(DBusMessageIter *out, int type);
    void appendText(DBusMessageIter *out, int type);
    void appendArray(DBusMessageIter *out, DBusSignatureIter *type, int room);
    void appendFields(DBusMessageIter *out, DBusSignatureIter *type, int room);
    void appendVariant(DBusMessageIter *out, int room);

    std::string takeLine();
    std::string takeBytes(std::size_t count);
    std::uint8_t takeByte();
    std::string takeText();
    std::string takeVariantType(int room);

    const std::uint8_t *m_data;
    std::size_t m_size;
    std::string m_signature;
};

} // namespace fuzz
