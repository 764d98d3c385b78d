#include "converting/Formats.h"
#include "defaults/Setting.h"
#include "text/Format.h"

namespace defaults {
namespace {

QString escaped(QString field)
{
    return field.replace(QLatin1Char(','), "\\,"_s).replace(QLatin1Char('#'), "\\#"_s);
}

// Why the phone would not read this text as it is; empty if it would.
QString faultOf(const QString &field, bool isFirst, bool isLast)
{
    for (const char *word : {"escComa", "escSharp"}) {
        if (field.contains(QLatin1String(word)))
            return format("contains the reserved word `%1`", word);
    }
    if (field.contains(QChar(0)))
        return "contains U+0000, which the bus cannot carry"_s;
    if (field.endsWith(QLatin1Char('\\')) && !isLast)
        return "ends in a backslash, which escapes the separator after it"_s;
    if (field.startsWith(QChar(QChar::ByteOrderMark)) && isFirst)
        return "begins with U+FEFF, which is lost"_s;
    return {};
}

void requireWritable(const Records &records, int record, int field)
{
    const QStringList &fields = records.records.at(record);
    const bool isFirst = record == 0 && field == 0;
    const bool isLast = record + 1 == records.records.size() && field + 1 == fields.size();
    const QString fault = faultOf(fields.at(field), isFirst, isLast);
    if (fault.isEmpty())
        return;
    const QString where = records.lines.isEmpty() ? format("Record %1", record + 1)
                                                  : format("Line %1", records.lines.at(record));
    throw Failure{ExitStatus::InvalidText,
                  format("%1 cannot be written as text: the field %2 %3", where,
                         fieldNames(records.kind).at(field), fault)};
}

} // namespace

Records readText(const QByteArray &bytes, const QString &file, Kind kind)
{
    const Setting setting = readSetting(file, kind, bytes);
    requireReadable(setting);
    Records records{kind, {}};
    for (const provisioning::Record &record : setting.records) {
        if (!record.isAccepted())
            throw Failure{ExitStatus::InvalidText,
                          format("%1: the phone does not accept record %2: %3", file, record.number,
                                 record.fault),
                          format("\"progkeysctl defaults check %1\" shows all problems.", file)};
        records.records.append(textsOf(record));
    }
    return records;
}

QByteArray writeText(const Records &records)
{
    QStringList lines;
    for (int record = 0; record < records.records.size(); ++record) {
        QStringList fields;
        for (const QString &field : records.records.at(record)) {
            requireWritable(records, record, static_cast<int>(fields.size()));
            fields.append(escaped(field));
        }
        lines.append(fields.join(QLatin1Char(',')));
    }
    return lines.join(QLatin1Char('#')).toUtf8() + '\n';
}

} // namespace defaults
