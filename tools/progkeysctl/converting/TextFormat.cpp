#include "converting/Formats.h"
#include "defaults/Checks.h"
#include "defaults/Report.h"

#include <cstdio>
#include <unistd.h>

namespace defaults {
namespace {

bool preventsConversion(const Setting &setting, const Problem &problem)
{
    static const QStringList codes{QStringLiteral("byte-order-mark"),
                                   QStringLiteral("null-character"), QStringLiteral("field-count"),
                                   QStringLiteral("empty-record")};
    return !setting.isReadable || codes.contains(problem.code);
}

// Throws if the phone would not accept the whole text; prints why.
void requireAcceptance(Setting setting)
{
    QList<Problem> problems;
    for (const Problem &problem : std::as_const(setting.problems)) {
        if (preventsConversion(setting, problem))
            problems.append(problem);
    }
    if (problems.isEmpty())
        return;
    setting.problems = problems;
    const QStringList lines = linesOf({setting}, output::Terminal::of(STDERR_FILENO));
    std::fputs((lines.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8().constData(), stderr);
    throw Failure{
        ExitStatus::InvalidText,
        QStringLiteral("%1 was not converted, because the phone does not accept all of it")
            .arg(setting.file),
        {}};
}

QString escaped(QString field)
{
    return field.replace(QLatin1Char(','), QLatin1String("\\,"))
        .replace(QLatin1Char('#'), QLatin1String("\\#"));
}

QString compose(const Records &records)
{
    QStringList lines;
    for (const QStringList &record : records.records) {
        QStringList fields;
        for (const QString &field : record)
            fields.append(escaped(field));
        lines.append(fields.join(QLatin1Char(',')));
    }
    return lines.join(QLatin1Char('#'));
}

// Why the phone would read another text than that of the field.
QString faultOf(const QString &field)
{
    for (const char *word : {"escComa", "escSharp"}) {
        if (field.contains(QLatin1String(word)))
            return QStringLiteral("contains the reserved word `%1`").arg(QLatin1String(word));
    }
    if (field.contains(QChar(0)))
        return QStringLiteral("contains U+0000, which the bus cannot carry");
    if (field.endsWith(QLatin1Char('\\')))
        return QStringLiteral("ends in a backslash, which escapes the separator after it");
    return QStringLiteral("begins with U+FEFF, which is lost");
}

void requireSame(const Records &records, int record, int field, const provisioning::Record *read)
{
    const QString &text = records.records.at(record).at(field);
    const bool isLost =
        text.contains(QChar(0)) || (record == 0 && field == 0 && text.startsWith(QChar(0xfeff)));
    if (!isLost && read && field < read->fields.size() && read->fields.at(field).text == text)
        return;
    const QString where = records.lines.isEmpty()
                              ? QStringLiteral("Record %1").arg(record + 1)
                              : QStringLiteral("Line %1").arg(records.lines.at(record));
    throw Failure{ExitStatus::InvalidText,
                  QStringLiteral("%1 cannot be written as text: the field %2 %3")
                      .arg(where, fieldNames(records.kind).at(field), faultOf(text)),
                  {}};
}

} // namespace

Records readText(const QByteArray &bytes, const QString &file, Kind kind)
{
    Setting setting = readSetting(file, kind, bytes);
    if (setting.isReadable)
        checkRecords(setting);
    requireAcceptance(setting);
    Records records{kind, {}};
    for (const provisioning::Record &record : std::as_const(setting.records)) {
        QStringList fields;
        for (const provisioning::Field &field : record.fields)
            fields.append(field.text);
        records.records.append(fields);
    }
    return records;
}

QByteArray writeText(const Records &records)
{
    const QString text = compose(records);
    const QList<provisioning::Record> read =
        text.isEmpty() ? QList<provisioning::Record>() : provisioning::parseText(text);
    for (int record = 0; record < records.records.size(); ++record) {
        for (int field = 0; field < provisioning::FieldCount; ++field)
            requireSame(records, record, field, record < read.size() ? &read.at(record) : nullptr);
    }
    return text.toUtf8() + '\n';
}

} // namespace defaults
