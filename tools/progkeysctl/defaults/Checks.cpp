#include "defaults/Checks.h"

#include "output/Text.h"
#include "provisioning/ProvisionedRecords.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace defaults {
namespace {

using output::quoted;
using provisioning::FieldCount;
using provisioning::Record;

constexpr int IdentifierField = 1;
constexpr int ContainerField = 2;
constexpr int PositionField = 3;
constexpr int KeyTypeField = 5;

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

bool isLineBreak(QChar c)
{
    return c == QLatin1Char('\n') || c == QLatin1Char('\r');
}

QString textOf(const Setting &setting, const Record &record)
{
    return setting.text.mid(record.start, record.length);
}

// Line breaks before an identifier are reported once, and must not make every comparison fail.
QString identifierOf(const Record &record)
{
    const QString &text = record.fields.first().text;
    int start = 0;
    while (start < text.size() && isLineBreak(text.at(start)))
        ++start;
    return text.mid(start);
}

// The same for identifiers that are easily confused.
QString simplified(const QString &identifier)
{
    return identifier.trimmed().toLower();
}

QSet<int> recordsWith(const Setting &setting, const char *code)
{
    QSet<int> records;
    for (const Problem &problem : setting.problems) {
        if (problem.code == QLatin1String(code))
            records.insert(problem.record);
    }
    return records;
}

// Whether each number field has a number if the fields at `joined` and after it are one.
bool isPlausible(Kind kind, const Record &record, int joined)
{
    for (int field = 0; field < FieldCount; ++field) {
        if (!fieldsOf(kind).at(field).isNumber)
            continue;
        bool isNumber = field != joined;
        if (isNumber)
            record.fields.at(field > joined ? field + 1 : field).text.toInt(&isNumber);
        if (!isNumber)
            return false;
    }
    return true;
}

// The only field, from 0, that can contain a separating comma by mistake; -1 if there is no such.
int fieldWithComma(Kind kind, const Record &record)
{
    int found = -1;
    if (record.fields.size() != FieldCount + 1)
        return found;
    for (int field = 0; field < FieldCount; ++field) {
        if (!isPlausible(kind, record, field))
            continue;
        if (found >= 0)
            return -1;
        found = field;
    }
    return found;
}

void addFieldCount(Setting &setting, const Record &record)
{
    const int size = static_cast<int>(record.fields.size());
    const int field = fieldWithComma(setting.kind, record);
    Problem problem = problemOf(record);
    QString hint = QStringLiteral("an empty field needs its comma, and a field cannot end in `\\`");
    if (field >= 0) {
        problem.field = field + 1;
        problem.place = {spanOf(record.fields.at(field)).end(), 1};
        hint = QStringLiteral("if the comma is part of %1, write it as `\\,`")
                   .arg(nameOfField(setting, problem.field));
    } else if (textOf(setting, record).contains(QLatin1Char('\n'))) {
        hint = QStringLiteral("a line break does not separate records; write `#`");
    } else if (size > FieldCount) {
        hint = QStringLiteral("write a comma that is part of a field as `\\,`");
    }
    add(setting, Severity::Error, "field-count", problem,
        QStringLiteral("%1 instead of %2: %3")
            .arg(output::counted(size, QStringLiteral("field")), QString::number(FieldCount),
                 hint));
}

void checkKeyNumber(Setting &setting, const Record &record, int field, int number)
{
    if (field == PositionField && number < 0)
        add(setting, Severity::Warning, "negative-position", problemOf(record, field),
            QStringLiteral("the position %1 is negative").arg(number));
    if (field == KeyTypeField && number != KeyType::Set && number != KeyType::AddOnModule)
        add(setting, Severity::Warning, "unknown-key-type", problemOf(record, field),
            QStringLiteral("the type %1 is neither 0, the set, nor 1, an add-on module")
                .arg(number));
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
            QStringLiteral("the %1 is empty and becomes 0").arg(name));
    else if (!isNumber)
        add(setting, Severity::Error, "not-a-number", problemOf(record, field),
            QStringLiteral("the %1 %2 is not a 32-bit decimal number and becomes 0")
                .arg(name, quoted(text)));
}

void checkFields(Setting &setting, const Record &record)
{
    if (identifierOf(record).isEmpty())
        add(setting, Severity::Error, "empty-identifier", problemOf(record, IdentifierField),
            setting.kind == Kind::Actions
                ? QStringLiteral("the identifier is empty: the action overwrites every action that "
                                 "users made")
                : QStringLiteral("the identifier is empty: the key counts as made by a user, and "
                                 "each start adds one more"));
    for (int field = 1; field <= FieldCount; ++field) {
        if (fieldsOf(setting.kind).at(field - 1).isNumber)
            checkNumber(setting, record, field);
    }
}

void checkWords(Setting &setting, const Record &record)
{
    for (int field = 1; field <= record.fields.size(); ++field) {
        for (const char *word : {"escComa", "escSharp"}) {
            Problem problem = problemOf(record, field);
            const auto at = setting.text.mid(problem.place.start, problem.place.length)
                                .indexOf(QLatin1String(word));
            if (at < 0)
                continue;
            problem.place = {problem.place.start + static_cast<int>(at),
                             static_cast<int>(qstrlen(word))};
            add(setting, Severity::Error, "placeholder-word", problem,
                QStringLiteral("the phone reads `%1` as another character: use another spelling")
                    .arg(QLatin1String(word)));
        }
    }
}

bool isBlank(const Setting &setting, const Record &record)
{
    const QString text = textOf(setting, record);
    return std::all_of(text.cbegin(), text.cend(), isLineBreak);
}

// One problem for the whole text: a tool that breaks lines does so after each record. In a refused
// record the problem is the number of fields.
void checkLineBreaks(Setting &setting)
{
    QList<int> places;
    bool isInIdentifier = false;
    for (const Record &record : std::as_const(setting.records)) {
        const QString text = textOf(setting, record);
        const auto at = std::find_if(text.cbegin(), text.cend(), isLineBreak) - text.cbegin();
        if (at == text.size() || (!record.isAccepted() && !isBlank(setting, record)))
            continue;
        places.append(record.start + static_cast<int>(at));
        isInIdentifier = isInIdentifier || (at == 0 && record.isAccepted());
    }
    if (places.isEmpty())
        return;
    const Problem problem = problemAt(setting, {places.first(), 1});
    add(setting, isInIdentifier ? Severity::Error : Severity::Warning, "line-break", problem,
        QStringLiteral("the line break becomes part of %1; records with line breaks: %2")
            .arg(nameOfField(setting, problem.field), QString::number(places.size())));
}

// What only one key can occupy; empty for a key of another type.
QString placeOf(const Key &key)
{
    if (key.type == KeyType::Set)
        return QStringLiteral("position %1 of the container %2")
            .arg(QString::number(key.position), quoted(key.container));
    if (key.type == KeyType::AddOnModule)
        return QStringLiteral("key %1 of the add-on module of type %2 at address %3")
            .arg(QString::number(key.position), QString::number(key.aom_type),
                 QString::number(key.aom_addr));
    return {};
}

Problem takenPlace(const Record &record, const Key &key)
{
    Problem problem = problemOf(record, key.type == KeyType::Set ? ContainerField : PositionField);
    const Span position = spanOf(record.fields.at(PositionField - 1));
    problem.place.length = position.end() - problem.place.start;
    return problem;
}

} // namespace

void checkRecords(Setting &setting)
{
    const QList<Record> records = setting.records;
    for (const Record &record : records) {
        Problem empty = problemOf(record);
        empty.place = {std::max(0, record.start - 1), 1};
        if (record.length == 0)
            add(setting, Severity::Warning, "empty-record", empty,
                QStringLiteral("record %1 is empty: remove a `#`").arg(record.number));
        else if (record.isAccepted())
            checkFields(setting, record);
        else if (!isBlank(setting, record))
            addFieldCount(setting, record);
        checkWords(setting, record);
    }
    checkLineBreaks(setting);
}

void checkIdentifiers(Setting &actions)
{
    QHash<QString, int> records;
    QHash<QString, QString> similar;
    for (const Record &record : std::as_const(actions.records)) {
        const QString dmId = identifierOf(record);
        if (!record.isAccepted() || dmId.isEmpty())
            continue;
        const Problem problem = problemOf(record, IdentifierField);
        const QString other = similar.value(simplified(dmId), dmId);
        if (records.contains(dmId))
            add(actions, Severity::Error, "repeated-identifier", problem,
                QStringLiteral("record %1 already has the identifier %2")
                    .arg(QString::number(records.value(dmId)), quoted(dmId)));
        else if (other != dmId)
            add(actions, Severity::Warning, "similar-identifier", problem,
                QStringLiteral("the identifier %1 differs from %2 of record %3 only in case or "
                               "blanks")
                    .arg(quoted(dmId), quoted(other), QString::number(records.value(other))));
        if (!records.contains(dmId))
            records.insert(dmId, record.number);
        similar.insert(simplified(dmId), other);
    }
}

void checkPlaces(Setting &keys)
{
    const QSet<int> invalid = recordsWith(keys, "not-a-number");
    QHash<QString, int> records;
    for (const Record &record : std::as_const(keys.records)) {
        if (!record.isAccepted() || invalid.contains(record.number))
            continue;
        const Key key = provisioning::toKey(record);
        const QString place = placeOf(key);
        // The description of a place may show only the start of the container.
        const QString identity = place + (key.type == KeyType::Set ? key.container : QString());
        if (records.contains(identity))
            add(keys, Severity::Error, "same-place", takenPlace(record, key),
                QStringLiteral("record %1 already has %2")
                    .arg(QString::number(records.value(identity)), place));
        else if (!place.isEmpty())
            records.insert(identity, record.number);
    }
}

void checkActionsOf(Setting &keys, const Setting &actions)
{
    QSet<QString> identifiers;
    QHash<QString, QString> similar;
    for (const Record &record : actions.records) {
        identifiers.insert(identifierOf(record));
        similar.insert(simplified(identifierOf(record)), identifierOf(record));
    }
    for (const Record &record : std::as_const(keys.records)) {
        const QString dmId = identifierOf(record);
        if (!record.isAccepted() || dmId.isEmpty() || identifiers.contains(dmId))
            continue;
        QString message =
            QStringLiteral("no action has the identifier %1, and the phone drops the key")
                .arg(quoted(dmId));
        if (similar.contains(simplified(dmId)))
            message += QStringLiteral("; %1 differs only in case or blanks")
                           .arg(quoted(similar.value(simplified(dmId))));
        add(keys, Severity::Error, "key-without-action", problemOf(record, IdentifierField),
            message);
    }
}

void checkLimit(Setting &keys, int limit)
{
    const QSet<int> dropped = recordsWith(keys, "key-without-action");
    QList<Problem> ofSet;
    for (const Record &record : std::as_const(keys.records)) {
        if (record.isAccepted() && provisioning::toKey(record).type == KeyType::Set &&
            !dropped.contains(record.number))
            ofSet.append(problemOf(record));
    }
    if (ofSet.size() > limit)
        add(keys, Severity::Error, "too-many-keys", ofSet.at(limit),
            QStringLiteral("there are %1 of the set, and the limit is %2: the phone refuses this "
                           "one and the following keys of the set")
                .arg(output::counted(static_cast<int>(ofSet.size()), QStringLiteral("key")),
                     QString::number(limit)));
}

void checkLimitText(Setting &limit)
{
    bool isNumber = false;
    limit.text.toInt(&isNumber);
    Problem problem;
    problem.place.length = static_cast<int>(limit.text.size());
    if (!isNumber)
        add(limit, Severity::Error, "not-a-number", problem,
            QStringLiteral("the limit %1 is not a 32-bit decimal number and becomes 0: no key of "
                           "the set can be created")
                .arg(quoted(limit.text)));
}

} // namespace defaults
