#include "fields/Fields.h"

#include "outcome/Failure.h"
#include "text/Format.h"
#include "text/Suggestion.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <type_traits>

namespace fields {
namespace {

template <typename Record>
const Field<Record> *find(const QString &name)
{
    const QList<Field<Record>> &all = of<Record>();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const Field<Record> &field) { return field.name == name; });
    return found == all.end() ? nullptr : &*found;
}

template <typename Record>
QString adviceOn(const QString &name)
{
    QStringList names;
    for (const Field<Record> &field : of<Record>())
        names.append(field.name);
    return text::withSuggestion(name, names, format("The fields are %1.", names.join(", "_s)));
}

// The fields that the record declares, with a help text for each.
template <typename Record>
QList<Field<Record>> withHelp(const QStringList &helps)
{
    QList<Field<Record>> all;
    const auto append = [&](const auto &field) {
        all.append({QString::fromLatin1(field.name), field.member, helps.at(all.size())});
    };
    std::apply([&](const auto &...field) { (append(field), ...); }, Record::fields());
    return all;
}

// What a member can hold, for messages.
QString rangeOf(const QString & /*of*/)
{
    return "a text without null characters"_s;
}

template <typename Number>
QString rangeOf(const Number & /*of*/)
{
    return format("a %1-bit integer", 8 * sizeof(Number));
}

bool setFrom(const QString &text, QString &member)
{
    member = text;
    return true;
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

// The bus ends a text at its first null character and cannot encode half a surrogate pair.
bool canBeSent(const QString &text)
{
    return text.isValidUtf16() && !text.contains(QChar(QChar::Null));
}

bool setFrom(const QJsonValue &value, QString &member)
{
    const bool isText = value.isString() && canBeSent(value.toString());
    if (isText)
        member = value.toString();
    return isText;
}

QJsonValue jsonOf(const QString &text)
{
    return text;
}

QJsonValue jsonOf(qlonglong number)
{
    return output::jsonNumber(number);
}

// The parser yields integers up to 64 bits, and a double for any other number.
template <typename Number>
bool setFrom(const QJsonValue &value, Number &member)
{
    if (value.isString() && std::is_same_v<Number, qlonglong>)
        return setFrom(value.toString(), member);
    constexpr double ExactUpTo = 9007199254740992.0;
    const double number = value.toDouble();
    const bool isExact = value.toVariant().userType() == QMetaType::LongLong ||
                         (std::trunc(number) == number && std::abs(number) <= ExactUpTo);
    return value.isDouble() && isExact &&
           setFrom(QString::number(value.toVariant().toLongLong()), member);
}

// The value is a text or from JSON.
template <typename Record, typename Value>
void setField(Record &record, const QString &name, const Value &value, ExitStatus status,
              const QString &where)
{
    const Field<Record> *field = find<Record>(name);
    if (!field)
        throw Failure{status, format("%1: unknown field \"%2\"", where, name),
                      adviceOn<Record>(name)};
    const auto set = [&](auto member) {
        if (!setFrom(value, record.*member))
            throw Failure{
                status,
                format("%1: the field %2 is not %3", where, name, rangeOf(record.*member)),
                {}};
    };
    std::visit(set, field->member);
}

} // namespace

bool isUsers(const Action &action)
{
    return action.dmId.isEmpty() && action.idAction != ReservedActionId;
}

template <>
const QList<Field<Key>> &of<Key>()
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
const QList<Field<Action>> &of<Action>()
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
QList<output::Column> columns()
{
    QList<output::Column> result;
    for (const Field<Record> &field : of<Record>())
        result.append({field.name, !field.isText()});
    return result;
}

template <typename Record>
QJsonObject toJson(const Record &record)
{
    QJsonObject object;
    for (const Field<Record> &field : of<Record>())
        std::visit([&](auto member) { object.insert(field.name, jsonOf(record.*member)); },
                   field.member);
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

template QList<output::Column> columns<Key>();
template QList<output::Column> columns<Action>();
template QJsonObject toJson(const Key &);
template QJsonObject toJson(const Action &);
template void setFromJson(Key &, const QJsonObject &, const QString &);
template void setFromJson(Action &, const QJsonObject &, const QString &);
template void assign(Key &, const QStringList &);
template void assign(Action &, const QStringList &);

} // namespace fields
