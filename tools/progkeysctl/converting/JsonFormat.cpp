#include "converting/Formats.h"
#include "files/Json.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace defaults {
namespace {

const files::Schema Schema{QStringLiteral("com.velmora.Tessaro.ProgrammableKeys.Defaults"),
                           1,
                           {QStringLiteral("kind"), QStringLiteral("records")}};

[[noreturn]] void throwInvalid(const QString &message)
{
    throw Failure{ExitStatus::InvalidText, message};
}

Kind readKind(const QJsonObject &object, const QString &file, std::optional<Kind> expected)
{
    const std::optional<Kind> kind = kindNamed(object.value(QLatin1String("kind")).toString());
    if (!kind)
        throwInvalid(QStringLiteral("%1: \"kind\" must be \"actions\" or \"keys\"").arg(file));
    if (expected && *expected != *kind)
        throwInvalid(QStringLiteral("%1 contains %2").arg(file, nameOf(*kind)));
    return *kind;
}

QString readField(const QJsonValue &value, const output::Column &field, const QString &where)
{
    if (value.isString() && value.toString().isValidUtf16())
        return value.toString();
    const bool isInteger = value.toInt(0) == value.toInt(1); // otherwise these are defaults
    if (field.isNumber && isInteger)
        return QString::number(value.toInt());
    throwInvalid(QStringLiteral("%1: the member \"%2\" must be %3")
                     .arg(where, field.name,
                          field.isNumber ? QStringLiteral("a 32-bit integer or a string")
                                         : QStringLiteral("a string of Unicode characters")));
}

QStringList readRecord(const QJsonValue &value, Kind kind, const QString &where)
{
    if (!value.isObject())
        throwInvalid(QStringLiteral("%1 is not an object").arg(where));
    const QJsonObject object = value.toObject();
    files::requireMembers(object, fieldNames(kind), where);
    QStringList record;
    for (const output::Column &field : fieldsOf(kind))
        record.append(readField(object.value(field.name), field, where));
    return record;
}

QJsonValue toJson(const output::Column &field, const QString &text)
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
    const QJsonValue list = object.value(QLatin1String("records"));
    if (!list.isArray())
        throwInvalid(QStringLiteral("%1: \"records\" is not an array").arg(file));
    const QJsonArray array = list.toArray();
    for (int index = 0; index < array.size(); ++index)
        records.records.append(
            readRecord(array.at(index), records.kind,
                       QStringLiteral("%1: record %2").arg(file, QString::number(index + 1))));
    return records;
}

QByteArray writeJson(const Records &records)
{
    const QList<output::Column> &fields = fieldsOf(records.kind);
    QJsonArray list;
    for (const QStringList &record : records.records) {
        QJsonObject object;
        for (int field = 0; field < record.size(); ++field)
            object.insert(fields.at(field).name, toJson(fields.at(field), record.at(field)));
        list.append(object);
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("schema"), Schema.name},
                                     {QStringLiteral("version"), Schema.version},
                                     {QStringLiteral("kind"), nameOf(records.kind)},
                                     {QStringLiteral("records"), list}})
        .toJson();
}

} // namespace defaults
