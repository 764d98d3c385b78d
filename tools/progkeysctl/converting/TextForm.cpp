#include "converting/Table.h"
#include "defaults/Messages.h"
#include "defaults/RecordChecks.h"
#include "defaults/Report.h"
#include "outcome/Failure.h"

#include <cstdio>
#include <unistd.h>

namespace defaults {
namespace {

constexpr QChar Null(0);
constexpr QChar ByteOrderMark(0xfeff);

bool preventsConversion(const Finding &finding)
{
    static const QStringList codes{QStringLiteral("byte-order-mark"), QStringLiteral("not-utf8"),
                                   QStringLiteral("null-character"), QStringLiteral("field-count"),
                                   QStringLiteral("empty-record")};
    return codes.contains(finding.code);
}

[[noreturn]] void throwFindings(const Setting &setting)
{
    const QStringList lines = linesOf(setting, output::Terminal::of(STDERR_FILENO));
    std::fputs((lines.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8().constData(), stderr);
    throw Failure{ExitStatus::InvalidText,
                  QStringLiteral("%1 is not converted, because the phone does not take all of it")
                      .arg(setting.file),
                  QStringLiteral("See what `progkeysctl defaults check --kind %1 %2` says.")
                      .arg(nameOf(*setting.kind), setting.file)};
}

QString escaped(QString field)
{
    return field.replace(QLatin1Char(','), QLatin1String("\\,"))
        .replace(QLatin1Char('#'), QLatin1String("\\#"));
}

QString compose(const Table &table)
{
    QStringList records;
    for (const QStringList &record : table.records) {
        QStringList fields;
        for (const QString &field : record)
            fields.append(escaped(field));
        records.append(fields.join(QLatin1Char(',')));
    }
    return records.join(QLatin1Char('#'));
}

QString reasonAgainst(const QString &field)
{
    for (const char *word : {"escComa", "escSharp"}) {
        if (field.contains(QLatin1String(word)))
            return QStringLiteral("contains the word `%1`, which would come out as another text")
                .arg(QLatin1String(word));
    }
    if (field.endsWith(QLatin1Char('\\')))
        return QStringLiteral("ends in a backslash, which would escape the separator after it");
    return QStringLiteral("would come out as another text");
}

[[noreturn]] void throwUnspeakable(Kind kind, int record, int field, const QString &reason)
{
    throw Failure{ExitStatus::InvalidText,
                  QStringLiteral("Record %1 cannot be written as text: %2, %3")
                      .arg(QString::number(record + 1), describeField(kind, field + 1), reason),
                  {}};
}

// Of what does not come through whatever stands around it.
void checkCharacters(const Table &table)
{
    for (int record = 0; record < table.records.size(); ++record) {
        const QStringList &fields = table.records.at(record);
        for (int field = 0; field < fields.size(); ++field) {
            if (fields.at(field).contains(Null))
                throwUnspeakable(table.kind, record, field,
                                 QStringLiteral("contains U+0000, which the bus cannot carry"));
            if (record == 0 && field == 0 && fields.at(field).startsWith(ByteOrderMark))
                throwUnspeakable(table.kind, record, field,
                                 QStringLiteral("begins with U+FEFF, which would be lost"));
        }
    }
}

// Says of the first field that the text does not give back why it cannot be said.
void checkAgainst(const Table &table, const QList<provisioning::Record> &said)
{
    for (int record = 0; record < table.records.size(); ++record) {
        for (int field = 0; field < provisioning::FieldCount; ++field) {
            const QString &wanted = table.records.at(record).at(field);
            const bool isThere = record < said.size() && field < said.at(record).fields.size();
            if (!isThere || said.at(record).fields.at(field).text != wanted)
                throwUnspeakable(table.kind, record, field, reasonAgainst(wanted));
        }
    }
}

} // namespace

Table readText(const QByteArray &bytes, const QString &file, Kind kind)
{
    Setting setting = readSetting(file, kind, bytes);
    checkRecords(setting);
    QList<Finding> faults;
    for (const Finding &finding : std::as_const(setting.findings)) {
        if (preventsConversion(finding))
            faults.append(finding);
    }
    setting.findings = faults;
    if (!faults.isEmpty())
        throwFindings(setting);
    Table table{kind, {}};
    for (const provisioning::Record &record : std::as_const(setting.records)) {
        QStringList fields;
        for (const provisioning::Field &field : record.fields)
            fields.append(field.text);
        table.records.append(fields);
    }
    return table;
}

QByteArray writeText(const Table &table)
{
    checkCharacters(table);
    const QString text = compose(table);
    if (!table.records.isEmpty())
        checkAgainst(table, provisioning::parseText(text));
    return text.toUtf8() + '\n';
}

} // namespace defaults
