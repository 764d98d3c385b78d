#include "converting/Formats.h"
#include "files/Json.h"
#include "text/Format.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace defaults {
namespace {

const files::Schema Schema{
    "com.velmora.Tessaro.ProgrammableKeys.Defaults"_s, 1, {"kind"_s, "records"_s}};

[[noreturn]] void throwInvalid(const QString &message)
{
    throw Failure{ExitStatus::InvalidText, message};
}

Kind readKind(const QJsonObject &object, const QString &file, std::optional<Kind> expected)
{
    const std::optional<Kind> kind = kindNamed(object.value("kind"_s).toString());
    if (!kind)
        throwInvalid(format("%1: \"kind\" must be \"actions\" or \"keys\"", file));
    if (expected && *expected != *kind)
        throwInvalid(format("%1 contains %2", file, nameOf(*kind)));
    return *kind;
}

QString readField(const QJsonValue &value, const fields::Field &field, const QString &where)
{
    if (value.isString() && value.toString().isValidUtf16())
        return value.toString();
    const bool isInteger = value.toInt(0) == value.toInt(1); // otherwise these are defaults
    if (field.isNumber && isInteger)
        return QString::number(value.toInt());
    throwInvalid(format("%1: the member \"%2\" must be %3", where, field.name,
                        field.isNumber ? "a 32-bit integer or a string"_s
                                       : "a string of Unicode characters"_s));
}

QStringList readRecord(const QJsonValue &value, Kind kind, const QString &where)
{
    if (!value.isObject())
        throwInvalid(format("%1 is not an object", where));
    const QJsonObject object = value.toObject();
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

Records readJson(const QByteArray &bytes, const QString &file, std::optional<Kind> kind)
{
    const QJsonObject object = files::readJson(bytes, file, Schema);
    Records records{readKind(object, file, kind), {}};
    const QJsonValue list = object.value("records"_s);
    if (!list.isArray())
        throwInvalid(format("%1: \"records\" is not an array", file));
    const QJsonArray array = list.toArray();
    for (int index = 0; index < array.size(); ++index)
        records.records.append(
            readRecord(array.at(index), records.kind, format("%1: record %2", file, index + 1)));
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
