#include "defaults/FieldCountCheck.h"

#include <QStringList>

namespace defaults {
namespace {

using provisioning::FieldCount;
using provisioning::Record;

int fieldsOf(const Record &record)
{
    return static_cast<int>(record.fields.size());
}

QString countText(const Record &record)
{
    return QStringLiteral("%1 %2 instead of %3")
        .arg(QString::number(fieldsOf(record)),
             fieldsOf(record) == 1 ? QStringLiteral("field") : QStringLiteral("fields"),
             QString::number(FieldCount));
}

// "field 5, arguments, and field 6, label", each field once.
QString fieldsText(Kind kind, const QList<GuessedComma> &commas)
{
    QStringList fields;
    for (const GuessedComma &comma : commas) {
        const QString field = describeField(kind, comma.field);
        if (!fields.contains(field))
            fields.append(field);
    }
    return fields.join(QStringLiteral(", and "));
}

void mark(Finding &finding, const QList<GuessedComma> &commas)
{
    finding.field = commas.first().field;
    finding.place = commas.first().place;
    for (const GuessedComma &comma : commas.mid(1))
        finding.alsoMarked.append(comma.place);
}

// Two records that were meant to be parted within what is the last field of the first: by a line
// break, or by a hash behind a field that ends in a backslash.
bool guessRecordEnd(const Setting &setting, const Record &record, Finding &finding)
{
    if (fieldsOf(record) < 2 * FieldCount - 1)
        return false;
    const Span last = spanOf(record.fields.at(FieldCount - 1));
    const QString text = setting.text.mid(last.start, last.length);
    const auto lineBreak = text.indexOf(QLatin1Char('\n'));
    const auto hash = text.indexOf(QLatin1String("\\#"));
    if (lineBreak < 0 && hash < 0)
        return false;
    finding.field = FieldCount;
    finding.place = {last.start + static_cast<int>(lineBreak >= 0 ? lineBreak : hash),
                     lineBreak >= 0 ? 1 : 2};
    finding.message +=
        lineBreak >= 0
            ? QStringLiteral(": is the line break meant as the end of the record? write `#` in its "
                             "place")
            : QStringLiteral(": is the `\\#` meant as the end of the record? it is a hash in the "
                             "text, and a field cannot end in a backslash");
    return true;
}

void guessTextCommas(const Setting &setting, const QList<GuessedComma> &commas, Finding &finding)
{
    mark(finding, commas);
    const QString form = commas.size() == 1
                             ? QStringLiteral(": is the comma in %1, meant as text? write it as "
                                              "`\\,`")
                             : QStringLiteral(": are the marked commas in %1, meant as text? write "
                                              "each as `\\,`");
    finding.message += form.arg(fieldsText(*setting.kind, commas));
}

void guessSeparators(const Setting &setting, const QList<GuessedComma> &commas, Finding &finding)
{
    mark(finding, commas);
    const QString form =
        commas.size() == 1
            ? QStringLiteral(
                  ": is the `\\,` meant as the end of %1? it is a comma in the text, and "
                  "a field cannot end in a backslash")
            : QStringLiteral(": are the marked `\\,` meant as the ends of %1? they are commas in "
                             "the text, and a field cannot end in a backslash");
    finding.message += form.arg(fieldsText(*setting.kind, commas));
}

// Two records, at least one of them refused, that would be one without the hash between them, which
// stands in a text then and not in a number.
bool areTorn(Kind kind, const Record &first, const Record &second)
{
    return fieldsOf(first) + fieldsOf(second) == FieldCount + 1 && first.length > 0 &&
           second.length > 0 && !fieldNames(kind).at(fieldsOf(first) - 1).isNumber;
}

bool guessHash(const Setting &setting, int index, Finding &finding)
{
    const auto &records = setting.records;
    const bool isTornBefore =
        index > 0 && areTorn(*setting.kind, records.at(index - 1), records.at(index));
    if (index + 1 < records.size() &&
        areTorn(*setting.kind, records.at(index), records.at(index + 1))) {
        const Record &next = records.at(index + 1);
        finding.field = fieldsOf(records.at(index));
        finding.place = {next.start - 1, 1};
        finding.shown.length += 1 + next.length;
        finding.message += QStringLiteral(": is the `#` after it meant as text? write it as `\\#`");
    } else if (isTornBefore && records.at(index - 1).isAccepted()) {
        finding.place = {records.at(index).start - 1, 1};
        finding.shown.start = records.at(index - 1).start;
        finding.shown.length += 1 + records.at(index - 1).length;
        finding.message +=
            QStringLiteral(": is the `#` before it meant as text? write it as `\\#`");
    } else if (isTornBefore) {
        finding.message += QStringLiteral(": is it the rest of record %1?").arg(index);
    } else {
        return false;
    }
    return true;
}

QString namesOf(Kind kind)
{
    QStringList titles;
    for (const FieldName &name : fieldNames(kind))
        titles.append(name.title);
    return titles.join(QStringLiteral(", "));
}

void explainCount(const Setting &setting, const Record &record, Finding &finding)
{
    if (fieldsOf(record) > FieldCount) {
        const provisioning::Field &surplus = record.fields.at(FieldCount);
        finding.place = {surplus.start - 1, record.start + record.length - surplus.start + 1};
        finding.message += QStringLiteral(": a comma that belongs to a text is written `\\,`");
    } else {
        finding.message += QStringLiteral(": wanted are %1; an empty one still has its comma")
                               .arg(namesOf(*setting.kind));
    }
}

} // namespace

Finding wrongFieldCount(const Setting &setting, int index, const Habits &habits)
{
    const Record &record = setting.records.at(index);
    Finding finding = complaint(Severity::Error, "field-count", record);
    finding.message = countText(record);
    const bool hasTooMany = fieldsOf(record) > FieldCount;
    if (hasTooMany ? guessRecordEnd(setting, record, finding) : guessHash(setting, index, finding))
        return finding;
    const QList<GuessedComma> commas = guessCommas(setting, record, habits);
    if (commas.isEmpty())
        explainCount(setting, record, finding);
    else if (hasTooMany)
        guessTextCommas(setting, commas, finding);
    else
        guessSeparators(setting, commas, finding);
    return finding;
}

} // namespace defaults
