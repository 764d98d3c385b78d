#include "defaults/Checks.h"

#include "fields/Places.h"
#include "provisioning/ProvisionedRecords.h"
#include "text/Format.h"
#include "text/Text.h"

#include <QHash>
#include <QMap>
#include <QRegularExpression>

#include <algorithm>
#include <tuple>

namespace defaults {
namespace {

using provisioning::FieldCount;
using provisioning::Record;
using text::quoted;

constexpr int IdentifierField = 1;
constexpr int ContainerField = 2;
constexpr int PositionField = 3;

const QRegularExpression LineBreak("[\r\n]"_s);

// The place of a record, or of one of its fields.
Place placeOf(const Record &record, int field = 0)
{
    if (field == 0)
        return {record.number, 0, record.start, record.length};
    const provisioning::Field &part = record.fields.at(field - 1);
    return {record.number, field, part.start, part.length};
}

QString nameOfField(const Setting &setting, int field)
{
    return fieldNames(setting.kind).value(field - 1);
}

QString textOf(const Setting &setting, const Record &record)
{
    return setting.text.mid(record.start, record.length);
}

const QString &identifierOf(const Record &record)
{
    return record.fields.first().text;
}

// The numbers of records by their identifiers, which are grouped by what makes them easily
// confused.
using Identifiers = QHash<QString, QMap<QString, int>>;

QString simplified(const QString &identifier)
{
    return identifier.trimmed().toLower();
}

bool isNumber(const QString &text)
{
    bool isValid = false;
    text.toInt(&isValid);
    return isValid;
}

// Whether each field that must be a number is one.
bool hasNumbers(Kind kind, const QStringList &fields)
{
    for (int field = 0; field < FieldCount; ++field) {
        if (fieldsOf(kind).at(field).isNumber && !isNumber(fields.at(field)))
            return false;
    }
    return true;
}

// The only field, from 1, that can contain a separating comma by mistake; 0 if there is no such.
int fieldWithComma(Kind kind, const Record &record)
{
    QList<int> found;
    for (int field = 1; field <= FieldCount && record.fields.size() == FieldCount + 1; ++field) {
        QStringList joined = textsOf(record);
        const QString next = joined.takeAt(field);
        joined[field - 1] += QLatin1Char(',') + next;
        if (hasNumbers(kind, joined))
            found.append(field);
    }
    return found.size() == 1 ? found.first() : 0;
}

void checkFieldCount(Setting &setting, const Record &record)
{
    const int size = static_cast<int>(record.fields.size());
    const int field = fieldWithComma(setting.kind, record);
    Place place = placeOf(record, field);
    QString hint = "each empty field needs a comma, and a field cannot end in `\\`"_s;
    if (field > 0) {
        place.start = place.end();
        place.length = 1;
        hint = format("if the comma is part of %1, write it as `\\,`", nameOfField(setting, field));
    } else if (textOf(setting, record).contains(QLatin1Char('\n'))) {
        hint = "a line break does not separate records; write `#`"_s;
    } else if (size > FieldCount) {
        hint = "write a comma that is part of a field as `\\,`"_s;
    }
    setting.addError(
        "field-count", place,
        format("%1 instead of %2: %3", text::counted(size, "field"_s), FieldCount, hint));
}

void checkNumber(Setting &setting, const Record &record, int field)
{
    const QString &text = record.fields.at(field - 1).text;
    const QString name = nameOfField(setting, field);
    const Place place = placeOf(record, field);
    const int number = text.toInt();
    if (text.trimmed().isEmpty())
        setting.addWarning("empty-number", place, format("the %1 is empty and becomes 0", name));
    else if (!isNumber(text))
        setting.addError(
            "not-a-number", place,
            format("the %1 %2 is not a 32-bit decimal number and becomes 0", name, quoted(text)));
    else if (name == "position"_s && number < 0)
        setting.addWarning("negative-position", place,
                           format("the position %1 is negative", number));
    else if (setting.kind == Kind::Keys && name == "type"_s && number != KeyType::Set &&
             number != KeyType::AddOnModule)
        setting.addWarning(
            "unknown-key-type", place,
            format("the type %1 is neither 0 (key on the set) nor 1 (key on an add-on module)",
                   number));
}

void checkFields(Setting &setting, const Record &record)
{
    if (identifierOf(record).isEmpty())
        setting.addError(
            "empty-identifier", placeOf(record, IdentifierField),
            setting.kind == Kind::Actions
                ? "the identifier is empty: the action overwrites every action that users made"_s
                : "the identifier is empty: the key becomes a user's key, and each start adds "
                  "another one"_s);
    for (int field = 1; field <= FieldCount; ++field) {
        if (fieldsOf(setting.kind).at(field - 1).isNumber)
            checkNumber(setting, record, field);
    }
}

void checkReservedWords(Setting &setting, const Record &record)
{
    static const QRegularExpression words("escComa|escSharp"_s);
    for (int field = 1; field <= record.fields.size(); ++field) {
        Place place = placeOf(record, field);
        const QRegularExpressionMatch match =
            words.match(setting.text.mid(place.start, place.length));
        if (!match.hasMatch())
            continue;
        place.start += static_cast<int>(match.capturedStart());
        place.length = static_cast<int>(match.capturedLength());
        setting.addError(
            "placeholder-word", place,
            format("`%1` is a reserved word, which the phone replaces: use another spelling",
                   match.captured()));
    }
}

void checkRecord(Setting &setting, const Record &record)
{
    if (record.length == 0) {
        const Place hash{record.number, 0, std::max(0, record.start - 1), 1};
        setting.addWarning("empty-record", hash,
                           format("record %1 is empty: remove a `#`", record.number));
    } else if (record.isAccepted()) {
        checkFields(setting, record);
    } else {
        checkFieldCount(setting, record);
    }
    checkReservedWords(setting, record);
}

// One problem for the whole text: a tool that breaks lines does so after each record. Returns
// whether the line breaks are before records, because then all other problems may follow from them.
bool checkLineBreaks(Setting &setting)
{
    std::optional<Place> inField;
    for (const Record &record : std::as_const(setting.records)) {
        const auto at = static_cast<int>(textOf(setting, record).indexOf(LineBreak));
        if (at < 0)
            continue;
        const Place place = setting.placeOf(record.start + at);
        if (at == 0) {
            setting.addError(
                "line-break", place,
                "the line break becomes part of the identifier: only a `#` separates records"_s);
            return true;
        }
        if (record.isAccepted() && !inField)
            inField = place;
    }
    if (inField)
        setting.addWarning(
            "line-break", *inField,
            format("the line break becomes part of the %1", nameOfField(setting, inField->field)));
    return false;
}

Identifiers checkIdentifiers(Setting &actions)
{
    Identifiers identifiers;
    for (const Record &record : std::as_const(actions.records)) {
        const QString &dmId = identifierOf(record);
        QMap<QString, int> &similar = identifiers[simplified(dmId)];
        if (record.isAccepted() && !dmId.isEmpty() && !similar.isEmpty()) {
            const Place place = placeOf(record, IdentifierField);
            if (similar.contains(dmId))
                actions.addError("repeated-identifier", place,
                                 format("record %1 already has the identifier %2",
                                        similar.value(dmId), quoted(dmId)));
            else
                actions.addWarning(
                    "similar-identifier", place,
                    format("the identifier %1 differs from %2 of record %3 only in case or blanks",
                           quoted(dmId), quoted(similar.firstKey()), similar.first()));
        }
        if (!similar.contains(dmId))
            similar.insert(dmId, record.number);
    }
    return identifiers;
}

// Whether the key has an action. A refused action counts: it is reported itself.
bool checkActionOf(Setting &keys, const Record &record, const Identifiers &actions)
{
    const QString &dmId = identifierOf(record);
    const QMap<QString, int> similar = actions.value(simplified(dmId));
    if (dmId.isEmpty() || similar.contains(dmId))
        return true;
    QString message =
        format("no action has the identifier %1: the phone drops the key, unless an earlier "
               "rollout created the action",
               quoted(dmId));
    if (!similar.isEmpty())
        message += format("; %1 differs only in case or blanks", quoted(similar.firstKey()));
    keys.addError("key-without-action", placeOf(record, IdentifierField), message);
    return false;
}

void checkPlace(Setting &keys, const Record &record, QMap<int, Key> &placed)
{
    const Key key = provisioning::toKey(record);
    const auto other = std::find_if(placed.begin(), placed.end(), [&](const Key &each) {
        return fields::isSamePlace(each, key);
    });
    if (other == placed.end()) {
        placed.insert(record.number, key);
        return;
    }
    Place place =
        placeOf(record, key.type == KeyType::AddOnModule ? PositionField : ContainerField);
    place.length = placeOf(record, PositionField).end() - place.start;
    keys.addError("same-place", place,
                  format("record %1 is already at this place: %2", other.key(),
                         text::printable(fields::described(key))));
}

void checkKeys(Setting &keys, const std::optional<Identifiers> &actions, std::optional<int> limit)
{
    QMap<int, Key> placed; // by the numbers of their records
    QList<Record> ofSet;   // without those that the phone drops
    for (const Record &record : std::as_const(keys.records)) {
        if (!record.isAccepted())
            continue;
        const bool isCreated = !actions || checkActionOf(keys, record, *actions);
        if (hasNumbers(keys.kind, textsOf(record)))
            checkPlace(keys, record, placed);
        if (isCreated && provisioning::toKey(record).type == KeyType::Set)
            ofSet.append(record);
    }
    if (limit && ofSet.size() > *limit)
        keys.addError(
            "too-many-keys", placeOf(ofSet.at(*limit)),
            format("there are %1 on the set, and the limit is %2: the phone refuses this one and "
                   "the following keys on the set",
                   text::counted(static_cast<int>(ofSet.size()), "key"_s), *limit));
}

void checkLimit(Setting &limit)
{
    if (!isNumber(limit.text))
        limit.addError("not-a-number", {1, 0, 0, static_cast<int>(limit.text.size())},
                       format("the limit %1 is not a 32-bit decimal number and becomes 0: no key "
                              "can be created on the set",
                              quoted(limit.text)));
}

bool isBefore(const Problem &left, const Problem &right)
{
    return std::tie(left.place.record, left.place.start) <
           std::tie(right.place.record, right.place.start);
}

} // namespace

void check(Rollout &rollout)
{
    std::optional<Identifiers> actions;
    for (auto &[kind, setting] : rollout.settings) { // actions before keys
        if (!setting.problems.isEmpty() || checkLineBreaks(setting))
            continue;
        for (const Record &record : std::as_const(setting.records))
            checkRecord(setting, record);
        if (kind == Kind::Actions)
            actions = checkIdentifiers(setting);
        else if (kind == Kind::Keys)
            checkKeys(setting, actions, rollout.limit());
        else
            checkLimit(setting);
        std::stable_sort(setting.problems.begin(), setting.problems.end(), isBefore);
    }
}

} // namespace defaults
