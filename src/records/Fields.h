#pragma once

#include <QDBusArgument>

#include <tuple>

/// A field of a record: its name, which is also the name of its column, and its member.
///
/// A record lists its fields in `fields()`, in the order of its bus signature. Comparison,
/// marshalling and reading rows use this list.
template <typename Record, typename Value>
struct Field
{
    const char *name;
    Value Record::*member;
};

template <typename Record, typename Value>
Field(const char *, Value Record::*) -> Field<Record, Value>;

namespace fields {

template <typename Record>
bool areEqual(const Record &left, const Record &right)
{
    const auto isEqual = [&](const auto &...field) {
        return (... && (left.*field.member == right.*field.member));
    };
    return std::apply(isEqual, Record::fields());
}

template <typename Record>
QDBusArgument &write(QDBusArgument &argument, const Record &record)
{
    const auto writeAll = [&](const auto &...field) {
        (argument << ... << (record.*field.member));
    };
    argument.beginStructure();
    std::apply(writeAll, Record::fields());
    argument.endStructure();
    return argument;
}

template <typename Record>
const QDBusArgument &read(const QDBusArgument &argument, Record &record)
{
    const auto readAll = [&](const auto &...field) { (argument >> ... >> (record.*field.member)); };
    argument.beginStructure();
    std::apply(readAll, Record::fields());
    argument.endStructure();
    return argument;
}

} // namespace fields
