#include "defaults/FieldCount.h"

#include "output/Text.h"

#include <algorithm>

namespace defaults {
namespace {

using provisioning::FieldCount;
using provisioning::Record;

int sizeOf(const Record &record)
{
    return static_cast<int>(record.fields.size());
}

bool isNumber(const QString &text)
{
    bool isNumber = false;
    text.toInt(&isNumber);
    return isNumber;
}

// Whether each number field has a number if the fields at `joined` and after it are one.
bool isPlausible(Kind kind, const Record &record, int joined)
{
    for (int field = 0; field < FieldCount; ++field) {
        const int place = field > joined ? field + 1 : field;
        if (fieldNames(kind).at(field).isNumber &&
            (field == joined || !isNumber(record.fields.at(place).text)))
            return false;
    }
    return true;
}

// The only field that can contain a separating comma by mistake, from 0.
std::optional<int> fieldWithComma(Kind kind, const Record &record)
{
    std::optional<int> found;
    if (sizeOf(record) != FieldCount + 1)
        return found;
    for (int field = 0; field < FieldCount; ++field) {
        if (!isPlausible(kind, record, field))
            continue;
        if (found)
            return std::nullopt;
        found = field;
    }
    return found;
}

QString explanation(const Setting &setting, const Record &record)
{
    const QString text = setting.text.mid(record.start, record.length);
    if (text.contains(QLatin1Char('\n')))
        return QStringLiteral("a line break does not separate records; write `#`");
    return sizeOf(record) > FieldCount
               ? QStringLiteral("write a comma that is part of a field as `\\,`")
               : QStringLiteral("an empty field needs its comma, and a field cannot end in `\\`");
}

} // namespace

Finding wrongFieldCount(const Setting &setting, const Record &record)
{
    Finding finding = problem(Severity::Error, "field-count", record);
    const QString count = QStringLiteral("%1 instead of %2")
                              .arg(output::counted(sizeOf(record), QStringLiteral("field")),
                                   QString::number(FieldCount));
    const std::optional<int> field = fieldWithComma(setting.kind, record);
    if (!field) {
        finding.message = count + QStringLiteral(": ") + explanation(setting, record);
        return finding;
    }
    finding.field = *field + 1;
    finding.place = {spanOf(record.fields.at(*field)).end(), 1};
    finding.message = QStringLiteral("%1: if the comma is part of %2, write it as `\\,`")
                          .arg(count, describeField(setting.kind, finding.field));
    return finding;
}

QStringList fieldByField(Kind kind, const Record &record)
{
    constexpr int TitleWidth = 16;
    constexpr int Surplus = 3; // shown fields that have no name
    const QList<FieldName> &names = fieldNames(kind);
    const int size = sizeOf(record);
    QStringList lines;
    for (int field = 0; field < std::max(FieldCount, std::min(size, FieldCount + Surplus));
         ++field) {
        const QString title = field < FieldCount ? names.at(field).title : QStringLiteral("-");
        const QString text = field < size ? output::printable(record.fields.at(field).text)
                                          : QStringLiteral("(missing)");
        lines.append(text.isEmpty() ? title : title.leftJustified(TitleWidth) + text);
    }
    if (size > FieldCount + Surplus)
        lines.append(QStringLiteral("..."));
    return lines;
}

} // namespace defaults
