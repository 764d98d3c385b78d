#include "fields/Fields.h"

#include "outcome/Failure.h"

#include <algorithm>
#include <cmath>
#include <limits>
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
QString names()
{
    QStringList all;
    for (const Field<Record> &field : of<Record>())
        all.append(field.name);
    return all.join(QStringLiteral(", "));
}

QString rangeOf(const int & /*of*/)
{
    return QStringLiteral("a whole number of 32 bits");
}

QString rangeOf(const qlonglong & /*of*/)
{
    return QStringLiteral("a whole number of 64 bits");
}

QString rangeOf(const QString & /*of*/)
{
    return QStringLiteral("a text that the bus can carry");
}

bool setFromText(QString &member, const QString &text)
{
    member = text;
    return true;
}

bool setFromText(int &member, const QString &text)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    if (ok)
        member = number;
    return ok;
}

bool setFromText(qlonglong &member, const QString &text)
{
    bool ok = false;
    const qlonglong number = text.toLongLong(&ok);
    if (ok)
        member = number;
    return ok;
}

// The bus ends a text at its first null character and has nothing for half a surrogate pair: such
// a text would arrive as another one.
bool canBeSent(const QString &text)
{
    return text.isValidUtf16() && !text.contains(QChar(QChar::Null));
}

bool setFromValue(QString &member, const QJsonValue &value)
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

// Doubles hold whole numbers up to 2^53 exactly; those beyond come as integers from the parser.
template <typename Number>
bool setFromValue(Number &member, const QJsonValue &value)
{
    if (value.isString() && std::is_same_v<Number, qlonglong>)
        return setFromText(member, value.toString());
    const double rounded = value.toDouble();
    if (!value.isDouble() || std::trunc(rounded) != rounded)
        return false;
    constexpr double ExactUpTo = 9007199254740992.0;
    const QVariant exact = value.toVariant();
    if (exact.userType() != QMetaType::LongLong && std::abs(rounded) > ExactUpTo)
        return false;
    const qlonglong number = exact.toLongLong();
    if (number < std::numeric_limits<Number>::min() || number > std::numeric_limits<Number>::max())
        return false;
    member = static_cast<Number>(number);
    return true;
}

[[noreturn]] void throwUsage(const QString &message, const QString &advice)
{
    throw Failure{ExitStatus::Usage, message, advice};
}

} // namespace

bool isUsers(const Action &action)
{
    return action.dmId.isEmpty() && action.idAction != ReservedActionId;
}

template <>
const QList<Field<Key>> &of<Key>()
{
    static const QList<Field<Key>> all = {
        {QStringLiteral("idKey"), QStringLiteral("KEY"), &Key::idKey},
        {QStringLiteral("dmId"), QStringLiteral("DM ID"), &Key::dmId},
        {QStringLiteral("idAction"), QStringLiteral("ACTION"), &Key::idAction},
        {QStringLiteral("container"), QStringLiteral("CONTAINER"), &Key::container},
        {QStringLiteral("position"), QStringLiteral("POS"), &Key::position},
        {QStringLiteral("icon"), QStringLiteral("ICON"), &Key::icon},
        {QStringLiteral("type"), QStringLiteral("TYPE"), &Key::type},
        {QStringLiteral("aom_type"), QStringLiteral("MOD TYPE"), &Key::aom_type},
        {QStringLiteral("aom_addr"), QStringLiteral("MODULE"), &Key::aom_addr},
    };
    return all;
}

template <>
const QList<Field<Action>> &of<Action>()
{
    static const QList<Field<Action>> all = {
        {QStringLiteral("idAction"), QStringLiteral("ACTION"), &Action::idAction},
        {QStringLiteral("dmId"), QStringLiteral("DM ID"), &Action::dmId},
        {QStringLiteral("type"), QStringLiteral("TYPE"), &Action::type},
        {QStringLiteral("action"), QStringLiteral("DOES"), &Action::action},
        {QStringLiteral("webAppName"), QStringLiteral("WEB APP"), &Action::webAppName},
        {QStringLiteral("arguments"), QStringLiteral("ARGUMENTS"), &Action::arguments},
        {QStringLiteral("label"), QStringLiteral("LABEL"), &Action::label},
        {QStringLiteral("shortLabel"), QStringLiteral("SHORT"), &Action::shortLabel},
    };
    return all;
}

template <typename Record>
QList<output::Column> columns()
{
    QList<output::Column> result;
    for (const Field<Record> &field : of<Record>()) {
        const bool isNumber = !std::holds_alternative<QString Record::*>(field.member);
        result.append({field.name, field.heading, isNumber});
    }
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
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        const Field<Record> *field = find<Record>(entry.key());
        if (!field)
            throw Failure{ExitStatus::InvalidText,
                          QStringLiteral("%1: there is no field %2").arg(where, entry.key()),
                          QStringLiteral("The fields are %1.").arg(names<Record>())};
        std::visit(
            [&](auto member) {
                if (!setFromValue(record.*member, entry.value()))
                    throw Failure{ExitStatus::InvalidText,
                                  QStringLiteral("%1: the field %2 is not %3")
                                      .arg(where, field->name, rangeOf(record.*member)),
                                  {}};
            },
            field->member);
    }
}

template <typename Record>
void assign(Record &record, const QStringList &assignments)
{
    for (const QString &assignment : assignments) {
        const auto equals = assignment.indexOf(QLatin1Char('='));
        const QString advice = QStringLiteral("The fields are %1.").arg(names<Record>());
        if (equals < 1)
            throwUsage(QStringLiteral("%1 is not of the form FIELD=VALUE").arg(assignment), advice);
        const QString name = assignment.left(equals);
        const QString text = assignment.mid(equals + 1);
        const Field<Record> *field = find<Record>(name);
        if (!field)
            throwUsage(QStringLiteral("There is no field %1").arg(name), advice);
        std::visit(
            [&](auto member) {
                if (!setFromText(record.*member, text))
                    throwUsage(QStringLiteral("%1 wants %2, not \"%3\"")
                                   .arg(name, rangeOf(record.*member), text),
                               {});
            },
            field->member);
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
