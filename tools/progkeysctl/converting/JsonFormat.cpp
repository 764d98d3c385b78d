#include "converting/Formats.h"
#include "files/Json.h"
#include "text/Format.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace defaults {
namespace {

const files::Schema Schema{
    "com.velmora.Tessaro.ProgrammableKeys.Defaults"_s, 1, {"kind"_s, "records"_s}};

QString readField(const QJsonValue &value, const fields::Field &field, const QString &where)
{
    if (value.isString() && value.toString().isValidUtf16())
        return value.toString();
    const bool isInteger = value.toInt(0) == value.toInt(1); // otherwise these are defaults
    if (field.isNumber && isInteger)
        return QString::number(value.toInt());
    throw Failure{ExitStatus::InvalidText,
                  format("%1: the member \"%2\" must be %3", where, field.name,
                         field.isNumber ? "a 32-bit integer or a string"_s
                                        : "a string of Unicode characters"_s)};
}

QStringList readRecord(const QJsonObject &object, Kind kind, const QString &where)
{
    files::requireMembers(object, fieldNames(kind), where);
    QStringList record;
    for (const fields::Field &field : fieldsOf(kind))
        record.append(readField(object.value(field.name), field, where));
    return record;
}

QJsonValue toJson(const fields::Field &field, const QString &text)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    const bool isUsual = field.isNumber && isNumber && QString::number(number) == text;
    return isUsual ? QJsonValue(number) : QJsonValue(text);
}

} // namespace

Records readJson(const QByteArray &bytes, const QString &file)
{
    const QJsonObject object = files::readJson(bytes, file, Schema);
    const std::optional<Kind> kind = kindNamed(object.value("kind"_s).toString());
    if (!kind)
        throw Failure{ExitStatus::InvalidText,
                      format("%1: \"kind\" must be \"actions\" or \"keys\"", file)};
    Records records{*kind, {}};
    for (const QJsonObject &record : files::objectsOf(object, "records"_s, file))
        records.records.append(
            readRecord(record, *kind, format("%1: record %2", file, records.records.size() + 1)));
    return records;
}

QByteArray writeJson(const Records &records)
{
    const QList<fields::Field> &fields = fieldsOf(records.kind);
    QJsonArray list;
    for (const QStringList &record : records.records) {
        QJsonObject object;
        for (int field = 0; field < record.size(); ++field)
            object.insert(fields.at(field).name, toJson(fields.at(field), record.at(field)));
        list.append(object);
    }
    return QJsonDocument(QJsonObject{{"schema"_s, Schema.name},
                                     {"version"_s, Schema.version},
                                     {"kind"_s, nameOf(records.kind)},
                                     {"records"_s, list}})
        .toJson();
}

} // namespace defaults
