#include "defaults/Checks.h"

#include "fields/Places.h"
#include "provisioning/ProvisionedRecords.h"
#include "text/Format.h"
#include "text/Text.h"

#include <QHash>
#include <QMap>
#include <QRegularExpression>

#include <algorithm>

namespace defaults {
namespace {

using provisioning::FieldCount;
using provisioning::Record;
using text::quoted;

constexpr int IdentifierField = 1;
constexpr int ContainerField = 2;
constexpr int PositionField = 3;
constexpr int KeyTypeField = 5;

const QRegularExpression LineBreak("[\r\n]"_s);

// A problem with a field of a record, or with the whole record.
Problem problemOf(const Record &record, int field = 0)
{
    Problem problem;
    problem.record = record.number;
    problem.field = field;
    problem.place = field > 0 ? spanOf(record.fields.at(field - 1)) : spanOf(record);
    return problem;
}

void add(Setting &setting, Severity severity, const char *code, Problem problem,
         const QString &message)
{
    problem.severity = severity;
    problem.code = QString::fromLatin1(code);
    problem.message = message;
    setting.problems.append(problem);
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

// Whether each field that is a number has one.
bool hasNumbers(Kind kind, const QStringList &fields)
{
    for (int field = 0; field < FieldCount; ++field) {
        bool isNumber = !fieldsOf(kind).at(field).isNumber;
        if (!isNumber)
            fields.at(field).toInt(&isNumber);
        if (!isNumber)
            return false;
    }
    return true;
}

// The only field, from 1, that can contain a separating comma by mistake; 0 if there is no such.
int fieldWithComma(Kind kind, const Record &record)
{
    int found = 0;
    if (record.fields.size() != FieldCount + 1)
        return found;
    for (int field = 1; field <= FieldCount; ++field) {
        QStringList joined = textsOf(record);
        const QString next = joined.takeAt(field);
        joined[field - 1] += QLatin1Char(',') + next;
        if (!hasNumbers(kind, joined))
            continue;
        if (found > 0)
            return 0;
        found = field;
    }
    return found;
}

void checkFieldCount(Setting &setting, const Record &record)
{
    const int size = static_cast<int>(record.fields.size());
    const int field = fieldWithComma(setting.kind, record);
    Problem problem = problemOf(record, field);
    QString hint = "each empty field needs a comma, and a field cannot end in `\\`"_s;
    if (field > 0) {
        problem.place = {problem.place.end(), 1};
        hint = format("if the comma is part of %1, write it as `\\,`", nameOfField(setting, field));
    } else if (textOf(setting, record).contains(QLatin1Char('\n'))) {
        hint = "a line break does not separate records; write `#`"_s;
    } else if (size > FieldCount) {
        hint = "write a comma that is part of a field as `\\,`"_s;
    }
    add(setting, Severity::Error, "field-count", problem,
        format("%1 instead of %2: %3", text::counted(size, "field"_s), FieldCount, hint));
}

void checkKeyNumber(Setting &setting, const Record &record, int field, int number)
{
    if (field == PositionField && number < 0)
        add(setting, Severity::Warning, "negative-position", problemOf(record, field),
            format("the position %1 is negative", number));
    if (field == KeyTypeField && number != KeyType::Set && number != KeyType::AddOnModule)
        add(setting, Severity::Warning, "unknown-key-type", problemOf(record, field),
            format("the type %1 is neither 0 (key on the set) nor 1 (key on an add-on module)",
                   number));
}

void checkNumber(Setting &setting, const Record &record, int field)
{
    const QString &text = record.fields.at(field - 1).text;
    const QString name = nameOfField(setting, field);
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (isNumber && setting.kind == Kind::Keys)
        checkKeyNumber(setting, record, field, number);
    else if (!isNumber && text.trimmed().isEmpty())
        add(setting, Severity::Warning, "empty-number", problemOf(record, field),
            format("the %1 is empty and becomes 0", name));
    else if (!isNumber)
        add(setting, Severity::Error, "not-a-number", problemOf(record, field),
            format("the %1 %2 is not a 32-bit decimal number and becomes 0", name, quoted(text)));
}

void checkFields(Setting &setting, const Record &record)
{
    if (identifierOf(record).isEmpty())
        add(setting, Severity::Error, "empty-identifier", problemOf(record, IdentifierField),
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
        Problem problem = problemOf(record, field);
        const QRegularExpressionMatch match =
            words.match(setting.text.mid(problem.place.start, problem.place.length));
        if (!match.hasMatch())
            continue;
        problem.place = {problem.place.start + static_cast<int>(match.capturedStart()),
                         static_cast<int>(match.capturedLength())};
        add(setting, Severity::Error, "placeholder-word", problem,
            format("`%1` is a reserved word, which the phone replaces: use another spelling",
                   match.captured()));
    }
}

void checkRecord(Setting &setting, const Record &record)
{
    if (record.length == 0) {
        Problem empty = problemOf(record);
        empty.place = {std::max(0, record.start - 1), 1};
        add(setting, Severity::Warning, "empty-record", empty,
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
    std::optional<Span> inField;
    for (const Record &record : std::as_const(setting.records)) {
        const auto at = static_cast<int>(textOf(setting, record).indexOf(LineBreak));
        const Span place{record.start + at, 1};
        if (at == 0) {
            add(setting, Severity::Error, "line-break", problemAt(setting, place),
                "the line break becomes part of the identifier: only a `#` separates records"_s);
            return true;
        }
        if (at > 0 && record.isAccepted() && !inField)
            inField = place;
    }
    if (inField) {
        const Problem problem = problemAt(setting, *inField);
        add(setting, Severity::Warning, "line-break", problem,
            format("the line break becomes part of the %1", nameOfField(setting, problem.field)));
    }
    return false;
}

Identifiers checkIdentifiers(Setting &actions)
{
    Identifiers identifiers;
    for (const Record &record : std::as_const(actions.records)) {
        const QString &dmId = identifierOf(record);
        QMap<QString, int> &similar = identifiers[simplified(dmId)];
        if (record.isAccepted() && !dmId.isEmpty() && !similar.isEmpty()) {
            const Problem problem = problemOf(record, IdentifierField);
            if (similar.contains(dmId))
                add(actions, Severity::Error, "repeated-identifier", problem,
                    format("record %1 already has the identifier %2", similar.value(dmId),
                           quoted(dmId)));
            else
                add(actions, Severity::Warning, "similar-identifier", problem,
                    format("the identifier %1 differs from %2 of record %3 only in case or blanks",
                           quoted(dmId), quoted(similar.firstKey()), similar.first()));
        }
        if (!similar.contains(dmId))
            similar.insert(dmId, record.number);
    }
    return identifiers;
}

struct PlacedKey
{
    int record = 0;
    Key key;
};

// Whether the key has an action. A refused action counts: it is reported itself.
bool checkActionOf(Setting &keys, const Record &record, const Identifiers &actions)
{
    const QString &dmId = identifierOf(record);
    const QMap<QString, int> similar = actions.value(simplified(dmId));
    if (dmId.isEmpty() || similar.contains(dmId))
        return true;
    QString message =
        format("no action has the identifier %1, and the phone drops the key", quoted(dmId));
    if (!similar.isEmpty())
        message += format("; %1 differs only in case or blanks", quoted(similar.firstKey()));
    add(keys, Severity::Error, "key-without-action", problemOf(record, IdentifierField), message);
    return false;
}

void checkPlace(Setting &keys, const Record &record, QList<PlacedKey> &placed)
{
    const Key key = provisioning::toKey(record);
    const auto other = std::find_if(placed.cbegin(), placed.cend(), [&](const PlacedKey &each) {
        return fields::isSamePlace(each.key, key);
    });
    if (other == placed.cend()) {
        placed.append({record.number, key});
        return;
    }
    Problem problem =
        problemOf(record, key.type == KeyType::AddOnModule ? PositionField : ContainerField);
    problem.place.length = spanOf(record.fields.at(PositionField - 1)).end() - problem.place.start;
    add(keys, Severity::Error, "same-place", problem,
        format("record %1 is already at this place: %2", other->record,
               text::printable(fields::described(key))));
}

// Keys that the phone drops do not count.
void checkLimit(Setting &keys, const QList<Record> &ofSet, int limit)
{
    if (ofSet.size() > limit)
        add(keys, Severity::Error, "too-many-keys", problemOf(ofSet.at(std::max(0, limit))),
            format("there are %1 on the set, and the limit is %2: the phone refuses this one and "
                   "the following keys on the set",
                   text::counted(static_cast<int>(ofSet.size()), "key"_s), limit));
}

void checkKeys(Setting &keys, const std::optional<Identifiers> &actions, std::optional<int> limit)
{
    QList<PlacedKey> placed;
    QList<Record> ofSet;
    for (const Record &record : std::as_const(keys.records)) {
        if (!record.isAccepted())
            continue;
        const bool isCreated = !actions || checkActionOf(keys, record, *actions);
        if (hasNumbers(keys.kind, textsOf(record)))
            checkPlace(keys, record, placed);
        if (isCreated && provisioning::toKey(record).type == KeyType::Set)
            ofSet.append(record);
    }
    if (limit)
        checkLimit(keys, ofSet, std::max(0, *limit));
}

void checkLimitText(Setting &limit)
{
    bool isNumber = false;
    limit.text.toInt(&isNumber);
    Problem problem;
    problem.place.length = static_cast<int>(limit.text.size());
    if (!isNumber)
        add(limit, Severity::Error, "not-a-number", problem,
            format("the limit %1 is not a 32-bit decimal number and becomes 0: no key can be "
                   "created on the set",
                   quoted(limit.text)));
}

} // namespace

void check(Rollout &rollout, std::optional<int> limit)
{
    std::optional<Identifiers> actions;
    for (auto &[kind, setting] : rollout.settings) {
        setting.isReadable = setting.isReadable && !checkLineBreaks(setting);
        if (!setting.isReadable)
            continue;
        const QList<Record> records = setting.records;
        for (const Record &record : records)
            checkRecord(setting, record);
        if (kind == Kind::Actions)
            actions = checkIdentifiers(setting);
        else if (kind == Kind::Limit)
            checkLimitText(setting);
    }
    const Setting *limitSetting = rollout.find(Kind::Limit);
    if (!limit && limitSetting)
        limit = limitSetting->text.toInt();
    const auto keys = rollout.settings.find(Kind::Keys);
    if (keys != rollout.settings.end() && keys->second.isReadable)
        checkKeys(keys->second, actions, limit);
    for (auto &[kind, setting] : rollout.settings)
        std::stable_sort(setting.problems.begin(), setting.problems.end(),
                         [](const Problem &left, const Problem &right) {
                             return std::make_pair(left.record, left.place.start) <
                                    std::make_pair(right.record, right.place.start);
                         });
}

} // namespace defaults
