#include "files/Json.h"

#include "files/Files.h"
#include "outcome/Failure.h"
#include "text/Format.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace files {
namespace {

const QString SchemaMember = "schema"_s;
const QString VersionMember = "version"_s;

[[noreturn]] void throwInvalid(const QString &message, const QString &advice = {})
{
    throw Failure{ExitStatus::InvalidText, message, advice};
}

QString placeOf(const QByteArray &text, int offset)
{
    const QByteArray before = text.left(offset);
    const auto lineStart = before.lastIndexOf('\n') + 1;
    return format("line %1, column %2", before.count('\n') + 1,
                  decodeUtf8(before.mid(lineStart)).toUcs4().size() + 1);
}

} // namespace

QJsonObject readJson(const QByteArray &bytes, const QString &file, const Schema &schema)
{
    const QByteArray text = requireUtf8(bytes, file);
    QByteArray marked = text;
    // Qt drops U+FEFF from the start of a JSON string, unless it is written as an escape.
    marked.replace("\xef\xbb\xbf", "\\ufeff");
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(marked, &error);
    if (error.error != QJsonParseError::NoError)
        throwInvalid(format("%1 is not valid JSON: %2: %3", file, placeOf(text, error.offset),
                            error.errorString()));
    QJsonObject object = document.object();
    if (object.value(SchemaMember) != schema.name)
        throwInvalid(format("%1 does not have the schema %2", file, schema.name));
    if (object.value(VersionMember) != schema.version)
        throwInvalid(format("%1 does not have version %2, which is the only supported one", file,
                            schema.version));
    requireMembers(object, QStringList{SchemaMember, VersionMember} + schema.members, file);
    return object;
}

void requireMembers(const QJsonObject &object, const QStringList &names, const QString &where)
{
    const QStringList members = object.keys();
    for (const QString &member : members) {
        if (!names.contains(member))
            throwInvalid(format("%1: unknown member \"%2\"", where, member),
                         format("The members are %1.", names.join(", "_s)));
    }
    for (const QString &name : names) {
        if (!members.contains(name))
            throwInvalid(format("%1: the member \"%2\" is missing", where, name));
    }
}

QList<QJsonObject> objectsOf(const QJsonObject &object, const QString &member, const QString &file)
{
    if (!object.value(member).isArray())
        throwInvalid(format("%1: \"%2\" is not an array", file, member));
    QList<QJsonObject> objects;
    const QJsonArray array = object.value(member).toArray();
    for (const QJsonValue &each : array) {
        if (!each.isObject())
            throwInvalid(format("%1: %2[%3]: not an object", file, member, objects.size()));
        objects.append(each.toObject());
    }
    return objects;
}

} // namespace files
