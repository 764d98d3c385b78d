#include "fields/Fields.h"

#include "outcome/Failure.h"
#include "output/Listing.h"
#include "text/Format.h"
#include "text/Suggestion.h"

#include <cmath>
#include <limits>
#include <tuple>
#include <type_traits>

namespace fields {
namespace {

// Calls a function with the name and the member of each field, in the order of the bus.
template <typename Record, typename Function>
void forEach(Function function)
{
    const auto callAll = [&](const auto &...field) {
        (function(QString::fromLatin1(field.name), field.member), ...);
    };
    std::apply(callAll, Record::fields());
}

template <typename Record>
QList<Field> withHelp(const QStringList &helps)
{
    QList<Field> all;
    forEach<Record>([&](const QString &name, auto member) {
        const bool isNumber = !std::is_same_v<decltype(member), QString Record::*>;
        all.append({name, isNumber, helps.at(all.size())});
    });
    return all;
}

template <typename Record>
QString adviceOn(const QString &name)
{
    return text::adviceOnField(name, namesOf(of<Record>()));
}

// What a member can hold, for messages.
template <typename Member>
QString rangeOf(const Member & /*of*/)
{
    if constexpr (std::is_same_v<Member, QString>)
        return "a text without null characters"_s;
    else
        return format("a %1-bit integer", 8 * sizeof(Member));
}

// The bus ends a text at its first null character and cannot encode half a surrogate pair.
bool setFrom(const QString &text, QString &member)
{
    const bool canBeSent = text.isValidUtf16() && !text.contains(QChar(QChar::Null));
    if (canBeSent)
        member = text;
    return canBeSent;
}

template <typename Number>
bool setFrom(const QString &text, Number &member)
{
    bool isNumber = false;
    const qlonglong number = text.toLongLong(&isNumber);
    const bool fits = isNumber && number >= std::numeric_limits<Number>::min() &&
                      number <= std::numeric_limits<Number>::max();
    if (fits)
        member = static_cast<Number>(number);
    return fits;
}

// The parser yields integers up to 64 bits, and a double for any other number.
bool isExactInteger(const QJsonValue &value)
{
    constexpr double ExactUpTo = 9007199254740992.0;
    const double number = value.toDouble();
    return value.isDouble() && (value.toVariant().userType() == QMetaType::LongLong ||
                                (std::trunc(number) == number && std::abs(number) <= ExactUpTo));
}

// Integers of 64 bits may be texts, because many readers round them.
template <typename Member>
bool setFrom(const QJsonValue &value, Member &member)
{
    if (value.isString())
        return !std::is_same_v<Member, int> && setFrom(value.toString(), member);
    return !std::is_same_v<Member, QString> && isExactInteger(value) &&
           setFrom(QString::number(value.toVariant().toLongLong()), member);
}

// The value is a text or from JSON.
template <typename Record, typename Value>
void setField(Record &record, const QString &name, const Value &value, ExitStatus status,
              const QString &where)
{
    bool isKnown = false;
    forEach<Record>([&](const QString &each, auto member) {
        if (each != name)
            return;
        isKnown = true;
        if (!setFrom(value, record.*member))
            throw Failure{
                status, format("%1: the field %2 is not %3", where, name, rangeOf(record.*member))};
    });
    if (!isKnown)
        throw Failure{status, format("%1: unknown field \"%2\"", where, name),
                      adviceOn<Record>(name)};
}

QJsonValue jsonOf(const QString &text)
{
    return text;
}

QJsonValue jsonOf(qlonglong number)
{
    return output::jsonNumber(number);
}

} // namespace

bool isUsers(const Action &action)
{
    return action.dmId.isEmpty() && action.idAction != ReservedActionId;
}

QStringList namesOf(const QList<Field> &fields)
{
    QStringList names;
    for (const Field &field : fields)
        names.append(field.name);
    return names;
}

template <>
const QList<Field> &of<Key>()
{
    static const auto all = withHelp<Key>({
        "identifier, assigned by the service"_s,
        "identifier of a provisioned key; leave it empty"_s,
        "identifier of the action that the key triggers, such as 7"_s,
        "container that shows the key, such as home or module3"_s,
        "position in the container, from 0; on an add-on module, the number of the key"_s,
        "name of the icon, such as phone"_s,
        "0: key on the set (default), 1: key on an add-on module"_s,
        "kind of add-on module, such as 1"_s,
        "address of the add-on module, such as 3"_s,
    });
    return all;
}

template <>
const QList<Field> &of<Action>()
{
    static const auto all = withHelp<Action>({
        "identifier, assigned by the service"_s,
        "identifier of a provisioned action; leave it empty"_s,
        "kind of action, as the applications of the phone define it, such as 1"_s,
        "what the action does, such as call"_s,
        "web application that runs the action, such as directory"_s,
        "arguments of the action, such as the number to call"_s,
        "label for users, such as Reception"_s,
        "label on an add-on module, such as Rec"_s,
    });
    return all;
}

template <typename Record>
QJsonObject toJson(const Record &record)
{
    QJsonObject object;
    forEach<Record>(
        [&](const QString &name, auto member) { object.insert(name, jsonOf(record.*member)); });
    return object;
}

template <typename Record>
void setFromJson(Record &record, const QJsonObject &object, const QString &where)
{
    for (auto entry = object.begin(); entry != object.end(); ++entry)
        setField(record, entry.key(), entry.value(), ExitStatus::InvalidText, where);
}

template <typename Record>
void assign(Record &record, const QStringList &assignments)
{
    for (const QString &assignment : assignments) {
        const auto equals = assignment.indexOf(QLatin1Char('='));
        if (equals < 1)
            throw Failure{ExitStatus::Usage,
                          format("\"%1\" is not of the form FIELD=VALUE", assignment),
                          adviceOn<Record>({})};
        setField(record, assignment.left(equals), assignment.mid(equals + 1), ExitStatus::Usage,
                 assignment);
    }
}

template QJsonObject toJson(const Key &);
template QJsonObject toJson(const Action &);
template void setFromJson(Key &, const QJsonObject &, const QString &);
template void setFromJson(Action &, const QJsonObject &, const QString &);
template void assign(Key &, const QStringList &);
template void assign(Action &, const QStringList &);

} // namespace fields
