#include "fields/Fields.h"

#include "outcome/Failure.h"
#include "outcome/Suggestion.h"

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
    return outcome::withSuggestion(
        name, names, QStringLiteral("The fields are %1.").arg(names.join(QStringLiteral(", "))));
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
    return QStringLiteral("a text without null characters");
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

// The bus ends a text at its first null character and cannot encode half a surrogate pair.
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
    static const auto all = withHelp<Key>({
        QStringLiteral("identifier, assigned by the service"),
        QStringLiteral("identifier of a provisioned key; leave it empty"),
        QStringLiteral("identifier of the action that the key triggers, such as 7"),
        QStringLiteral("container that shows the key, such as home or module3"),
        QStringLiteral("position in the container, from 0; on an add-on module, the number of the "
                       "key"),
        QStringLiteral("name of the icon, such as phone"),
        QStringLiteral("0: key on the set (default), 1: key on an add-on module"),
        QStringLiteral("kind of add-on module, such as 1"),
        QStringLiteral("address of the add-on module, such as 3"),
    });
    return all;
}

template <>
const QList<Field<Action>> &of<Action>()
{
    static const auto all = withHelp<Action>({
        QStringLiteral("identifier, assigned by the service"),
        QStringLiteral("identifier of a provisioned action; leave it empty"),
        QStringLiteral("kind of action, as the applications of the phone define it, such as 1"),
        QStringLiteral("what the action does, such as call"),
        QStringLiteral("web application that runs the action, such as directory"),
        QStringLiteral("arguments of the action, such as the number to call"),
        QStringLiteral("label for users, such as Reception"),
        QStringLiteral("label on an add-on module, such as Rec"),
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
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        const Field<Record> *field = find<Record>(entry.key());
        if (!field)
            throw Failure{ExitStatus::InvalidText,
                          QStringLiteral("%1: unknown field \"%2\"").arg(where, entry.key()),
                          adviceOn<Record>(entry.key())};
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
        if (equals < 1)
            throwUsage(QStringLiteral("\"%1\" is not of the form FIELD=VALUE").arg(assignment),
                       adviceOn<Record>({}));
        const QString name = assignment.left(equals);
        const QString text = assignment.mid(equals + 1);
        const Field<Record> *field = find<Record>(name);
        if (!field)
            throwUsage(QStringLiteral("Unknown field \"%1\"").arg(name), adviceOn<Record>(name));
        std::visit(
            [&](auto member) {
                if (!setFromText(record.*member, text))
                    throwUsage(QStringLiteral("%1: \"%2\" is not %3")
                                   .arg(name, text, rangeOf(record.*member)),
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
