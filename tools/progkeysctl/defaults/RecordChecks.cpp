#include "defaults/RecordChecks.h"

#include "defaults/FieldCountCheck.h"
#include "defaults/Messages.h"

namespace defaults {
namespace {

using provisioning::Record;

bool isNumberField(Kind kind, int field)
{
    const QList<FieldName> &names = fieldNames(kind);
    return field <= names.size() && names.at(field - 1).isNumber;
}

bool isLineBreak(QChar c)
{
    return c == QLatin1Char('\n') || c == QLatin1Char('\r');
}

Finding emptyRecord(const Setting &setting, int index)
{
    const auto &records = setting.records;
    Finding finding = complaint(Severity::Warning, "empty-record", records.at(index));
    const QString skipped = QStringLiteral("which the phone passes over: leave the hash out");
    if (index == 0) {
        finding.place.length = 1;
        finding.shown.length = 1 + records.at(1).length;
        finding.message = QStringLiteral("the `#` at the start ends an empty record, %1");
    } else {
        const Record &before = records.at(index - 1);
        finding.place = {before.start + before.length, 1};
        finding.shown = {before.start, before.length + 1};
        const bool isLast = index + 1 == records.size();
        finding.shown.length += isLast ? 0 : 1 + records.at(index + 1).length;
        finding.message = isLast ? QStringLiteral("the `#` at the end begins an empty record, %1")
                                 : QStringLiteral("an empty record between two `#`, %1");
    }
    finding.message = finding.message.arg(skipped);
    return finding;
}

void checkNumber(Setting &setting, const Record &record, int field)
{
    const QString &text = record.fields.at(field - 1).text;
    bool isNumber = false;
    text.toInt(&isNumber);
    if (isNumber)
        return;
    const QString title = fieldNames(*setting.kind).at(field - 1).title;
    const bool isEmpty = text.trimmed().isEmpty();
    Finding finding = isEmpty ? complaint(Severity::Warning, "empty-number", record, field)
                              : complaint(Severity::Error, "not-a-number", record, field);
    finding.message =
        isEmpty ? QStringLiteral("the %1 is empty and counts as 0").arg(title)
                : QStringLiteral("the %1 %2 is no decimal number of 32 bits and counts as 0")
                      .arg(title, quoted(text));
    setting.findings.append(finding);
}

void checkIdentifier(Setting &setting, const Record &record)
{
    if (!record.fields.first().text.isEmpty())
        return;
    Finding finding = complaint(Severity::Error, "empty-identifier", record, 1);
    finding.message =
        setting.kind == Kind::Actions
            ? QStringLiteral("the identifier is empty: the action would overwrite every action "
                             "that users made")
            : QStringLiteral("the identifier is empty: the key would count as a user's, and one "
                             "more would be made at every start");
    setting.findings.append(finding);
}

void checkWord(Setting &setting, const Record &record, int field, const QString &word,
               const QString &sign)
{
    const Span place = spanOf(record.fields.at(field - 1));
    const QString text = setting.text.mid(place.start, place.length);
    for (auto at = text.indexOf(word); at >= 0; at = text.indexOf(word, at + word.size())) {
        Finding finding = complaint(Severity::Error, "placeholder-word", record, field);
        finding.place = {place.start + static_cast<int>(at), static_cast<int>(word.size())};
        finding.message =
            QStringLiteral("the word `%1` comes out as a %2: spell it otherwise").arg(word, sign);
        setting.findings.append(finding);
    }
}

bool checkLineBreak(Setting &setting, const Record &record, int field)
{
    const Span place = spanOf(record.fields.at(field - 1));
    int at = place.start;
    while (at < place.end() && !isLineBreak(setting.text.at(at)))
        ++at;
    if (at == place.end())
        return false;
    Finding finding = complaint(Severity::Warning, "line-break", record, field);
    finding.place = {at, 1};
    finding.message =
        QStringLiteral("a line break stands in %1").arg(describeField(*setting.kind, field));
    if (!isNumberField(*setting.kind, field))
        finding.message += QStringLiteral(", and stays part of its text");
    setting.findings.append(finding);
    return true;
}

// Of a refused record only the first: one that is made of very many lines has as many breaks.
void checkLineBreaks(Setting &setting, const Record &record)
{
    for (int field = 1; field <= record.fields.size(); ++field) {
        if (checkLineBreak(setting, record, field) && !record.isAccepted())
            return;
    }
}

void checkWords(Setting &setting, const Record &record, int field)
{
    checkWord(setting, record, field, QStringLiteral("escComa"), QStringLiteral("comma"));
    checkWord(setting, record, field, QStringLiteral("escSharp"), QStringLiteral("hash"));
}

void checkAccepted(Setting &setting, const Record &record)
{
    checkIdentifier(setting, record);
    for (int field = 1; field <= provisioning::FieldCount; ++field) {
        if (isNumberField(*setting.kind, field))
            checkNumber(setting, record, field);
    }
}

} // namespace

void checkRecords(Setting &setting)
{
    const Habits habits(setting.records);
    for (int index = 0; index < setting.records.size(); ++index) {
        const Record &record = setting.records.at(index);
        if (record.length == 0)
            setting.findings.append(emptyRecord(setting, index));
        else if (record.isAccepted())
            checkAccepted(setting, record);
        else
            setting.findings.append(wrongFieldCount(setting, index, habits));
        for (int field = 1; field <= record.fields.size(); ++field)
            checkWords(setting, record, field);
        checkLineBreaks(setting, record);
    }
}

} // namespace defaults
