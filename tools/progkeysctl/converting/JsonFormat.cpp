#include "converting/Formats.h"
#include "files/Json.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>
#include <limits>

namespace defaults {
namespace {

const files::Schema Schema{QStringLiteral("com.velmora.Tessaro.ProgrammableKeys.Defaults"),
                           1,
                           {QStringLiteral("kind"), QStringLiteral("records")}};

[[noreturn]] void throwInvalid(const QString &message)
{
    throw Failure{ExitStatus::InvalidText, message, {}};
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

std::optional<int> intOf(const QJsonValue &value)
{
    const double number = value.toDouble();
    if (!value.isDouble() || std::trunc(number) != number ||
        number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(number);
}

QString readField(const QJsonValue &value, const FieldName &field, const QString &where)
{
    if (value.isString() && value.toString().isValidUtf16())
        return value.toString();
    const std::optional<int> number = field.isNumber ? intOf(value) : std::nullopt;
    if (number)
        return QString::number(*number);
    throwInvalid(QStringLiteral("%1: the member \"%2\" must be %3")
                     .arg(where, field.name,
                          field.isNumber ? QStringLiteral("a 32-bit integer or a string")
                                         : QStringLiteral("a string of Unicode characters")));
}

QStringList readRecord(const QJsonValue &value, Kind kind, const QString &where)
{
    QStringList names;
    for (const FieldName &field : fieldNames(kind))
        names.append(field.name);
    if (!value.isObject())
        throwInvalid(QStringLiteral("%1 is not an object").arg(where));
    const QJsonObject object = value.toObject();
    files::requireMembers(object, names, where);
    QStringList record;
    for (const FieldName &field : fieldNames(kind))
        record.append(readField(object.value(field.name), field, where));
    return record;
}

// A text in JSON. Qt writes a text only as part of an array.
QByteArray jsonText(const QString &text)
{
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

QByteArray jsonField(const FieldName &field, const QString &text)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    const bool isUsual = field.isNumber && isNumber && QString::number(number) == text;
    return jsonText(field.name) + ": " + (isUsual ? text.toUtf8() : jsonText(text));
}

// One line for each record, with the fields in their order, which QJsonObject does not keep.
QByteArray jsonRecord(Kind kind, const QStringList &record)
{
    QByteArrayList members;
    for (int field = 0; field < record.size(); ++field)
        members.append(jsonField(fieldNames(kind).at(field), record.at(field)));
    return "    {" + members.join(", ") + '}';
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
    QByteArrayList lines;
    for (const QStringList &record : records.records)
        lines.append(jsonRecord(records.kind, record));
    const QByteArray list = lines.isEmpty() ? "[]" : "[\n" + lines.join(",\n") + "\n  ]";
    return "{\n  \"schema\": " + jsonText(Schema.name) +
           ",\n  \"version\": " + QByteArray::number(Schema.version) +
           ",\n  \"kind\": " + jsonText(nameOf(records.kind)) + ",\n  \"records\": " + list +
           "\n}\n";
}

} // namespace defaults
