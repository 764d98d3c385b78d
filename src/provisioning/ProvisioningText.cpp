#include "provisioning/ProvisioningText.h"

namespace provisioning {
namespace {

constexpr QLatin1Char RecordSeparator('#');
constexpr QLatin1Char FieldSeparator(',');
constexpr QLatin1Char Escape('\\');

const QLatin1String HiddenComma("escComa");
const QLatin1String HiddenSharp("escSharp");

QString hideEscapes(QString text)
{
    return text.replace(QLatin1String("\\,"), HiddenComma)
        .replace(QLatin1String("\\#"), HiddenSharp);
}

QString unescape(QString hidden)
{
    return hidden.replace(HiddenComma, QLatin1String(",")).replace(HiddenSharp, QLatin1String("#"));
}

bool isEscapeAt(const QString &text, int index)
{
    if (text.at(index) != Escape || index + 1 == text.size())
        return false;
    const QChar next = text.at(index + 1);
    return next == FieldSeparator || next == RecordSeparator;
}

// The end of the part that begins at `start`: the next separator that is not escaped, or `end`. Two
// escapes cannot overlap, so skipping them here and hiding them in the parts has the same result as
// hiding them in the whole text before splitting it.
int partEnd(const QString &text, int start, int end, QLatin1Char separator)
{
    int index = start;
    while (index < end && text.at(index) != separator)
        index += isEscapeAt(text, index) ? 2 : 1;
    return index;
}

QList<Field> splitFields(const QString &text, int start, int end)
{
    QList<Field> fields;
    for (int from = start; from <= end;) {
        const int to = partEnd(text, from, end, FieldSeparator);
        fields.append({unescape(hideEscapes(text.mid(from, to - from))), from, to - from});
        from = to + 1;
    }
    return fields;
}

Record makeRecord(const QString &text, int number, int start, int end)
{
    Record record;
    record.number = number;
    record.start = start;
    record.length = end - start;
    record.hidden = hideEscapes(text.mid(start, end - start));
    record.fields = splitFields(text, start, end);
    if (record.fields.size() != FieldCount)
        record.fault = QStringLiteral("%1 instead of %2 fields")
                           .arg(QString::number(record.fields.size()), QString::number(FieldCount));
    return record;
}

} // namespace

QList<Record> parseText(const QString &text)
{
    QList<Record> records;
    const int end = static_cast<int>(text.size());
    for (int from = 0; from <= end;) {
        const int to = partEnd(text, from, end, RecordSeparator);
        records.append(makeRecord(text, static_cast<int>(records.size()) + 1, from, to));
        from = to + 1;
    }
    return records;
}

} // namespace provisioning
