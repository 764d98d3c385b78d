#include "converting/Table.h"
#include "defaults/Messages.h"
#include "defaults/Utf8.h"
#include "outcome/Failure.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <limits>

namespace defaults {
namespace {

const QString Schema = QStringLiteral("com.velmora.Tessaro.ProgrammableKeys.Defaults");
constexpr int Version = 1;

[[noreturn]] void throwInvalid(const QString &message, const QString &advice = {})
{
    throw Failure{ExitStatus::InvalidText, message, advice};
}

QJsonObject parse(const QByteArray &bytes, const QString &file)
{
    QByteArray text = requireUtf8(bytes, file);
    // Qt drops U+FEFF from the start of a JSON string, unless it is written as an escape.
    text.replace("\xef\xbb\xbf", "\\ufeff");
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError)
        throwInvalid(QStringLiteral("%1 is no JSON: %2")
                         .arg(lineOf(text, error.offset, file), error.errorString()));
    if (!document.isObject())
        throwInvalid(QStringLiteral("%1 is no JSON object").arg(file));
    return document.object();
}

QString typeName(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Bool:
        return QStringLiteral("true or false");
    case QJsonValue::Double:
        return QStringLiteral("a number");
    case QJsonValue::String:
        return QStringLiteral("a text");
    case QJsonValue::Array:
        return QStringLiteral("an array");
    case QJsonValue::Object:
        return QStringLiteral("an object");
    default:
        return QStringLiteral("missing");
    }
}

void checkMembers(const QJsonObject &object, const QStringList &names, const QString &where)
{
    const QStringList members = object.keys();
    for (const QString &member : members) {
        if (!names.contains(member))
            throwInvalid(
                QStringLiteral("%1 has a member %2, which is unknown").arg(where, quoted(member)),
                QStringLiteral("The members are %1.").arg(names.join(QStringLiteral(", "))));
    }
    for (const QString &name : names) {
        if (!members.contains(name))
            throwInvalid(QStringLiteral("%1 lacks the member %2").arg(where, quoted(name)));
    }
}

Kind readHead(const QJsonObject &object, const QString &file, std::optional<Kind> asked)
{
    const auto member = [&object](const char *name) { return object.value(QLatin1String(name)); };
    if (member("schema") != Schema)
        throwInvalid(QStringLiteral("The schema of %1 is not %2").arg(file, quoted(Schema)));
    if (member("version") != Version)
        throwInvalid(QStringLiteral("The version of %1 is not %2, the only one known")
                         .arg(file, QString::number(Version)));
    checkMembers(object,
                 {QStringLiteral("schema"), QStringLiteral("version"), QStringLiteral("kind"),
                  QStringLiteral("records")},
                 file);
    const std::optional<Kind> kind = kindNamed(member("kind").toString());
    if (!kind)
        throwInvalid(QStringLiteral("The kind of %1 is neither `actions` nor `keys`").arg(file));
    if (asked && *asked != *kind)
        throwInvalid(QStringLiteral("%1 is of %2").arg(file, nameOf(*kind)));
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

bool isUnicode(const QString &text)
{
    return text.isValidUtf16();
}

QString readField(const QJsonValue &value, const FieldName &field, const QString &where)
{
    const QString what = QStringLiteral("%1: the member %2").arg(where, quoted(field.name));
    if (value.isString()) {
        if (!isUnicode(value.toString()))
            throwInvalid(QStringLiteral("%1 has half of a surrogate pair").arg(what));
        return value.toString();
    }
    if (!field.isNumber)
        throwInvalid(QStringLiteral("%1 is %2, not a text").arg(what, typeName(value)));
    const std::optional<int> number = intOf(value);
    if (!number)
        throwInvalid(QStringLiteral("%1 is neither an integer of 32 bits nor a text").arg(what));
    return QString::number(*number);
}

QStringList readRecord(const QJsonValue &value, Kind kind, const QString &where)
{
    if (!value.isObject())
        throwInvalid(QStringLiteral("%1 is %2, not an object").arg(where, typeName(value)));
    QStringList names;
    for (const FieldName &field : fieldNames(kind))
        names.append(field.name);
    const QJsonObject object = value.toObject();
    checkMembers(object, names, where);
    QStringList record;
    for (const FieldName &field : fieldNames(kind))
        record.append(readField(object.value(field.name), field, where));
    return record;
}

// Text as JSON writes it; only within an array does Qt write it alone.
QByteArray jsonText(const QString &text)
{
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

QByteArray jsonField(const FieldName &field, const QString &text)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    const bool isCanonical = field.isNumber && isNumber && QString::number(number) == text;
    return jsonText(field.name) + ": " + (isCanonical ? text.toUtf8() : jsonText(text));
}

// By hand, so that the fields keep their order and a record its line.
QByteArray jsonRecord(Kind kind, const QStringList &record)
{
    QByteArrayList members;
    for (int field = 0; field < record.size(); ++field)
        members.append(jsonField(fieldNames(kind).at(field), record.at(field)));
    return "    {" + members.join(", ") + '}';
}

} // namespace

Table readJson(const QByteArray &bytes, const QString &file, std::optional<Kind> kind)
{
    const QJsonObject object = parse(bytes, file);
    Table table{readHead(object, file, kind), {}};
    const QJsonValue records = object.value(QLatin1String("records"));
    if (!records.isArray())
        throwInvalid(
            QStringLiteral("The records of %1 are %2, not an array").arg(file, typeName(records)));
    const QJsonArray array = records.toArray();
    for (int index = 0; index < array.size(); ++index)
        table.records.append(
            readRecord(array.at(index), table.kind,
                       QStringLiteral("Record %1 of %2").arg(QString::number(index + 1), file)));
    return table;
}

QByteArray writeJson(const Table &table)
{
    QByteArrayList records;
    for (const QStringList &record : table.records)
        records.append(jsonRecord(table.kind, record));
    const QByteArray list = records.isEmpty() ? "[]" : "[\n" + records.join(",\n") + "\n  ]";
    return "{\n  \"schema\": " + jsonText(Schema) +
           ",\n  \"version\": " + QByteArray::number(Version) +
           ",\n  \"kind\": " + jsonText(nameOf(table.kind)) + ",\n  \"records\": " + list + "\n}\n";
}

} // namespace defaults
