#include "files/Json.h"

#include "files/Files.h"
#include "outcome/Failure.h"

#include <QJsonDocument>

#include <algorithm>

namespace files {
namespace {

const QString SchemaMember = QStringLiteral("schema");
const QString VersionMember = QStringLiteral("version");

[[noreturn]] void throwInvalid(const QString &message, const QString &advice = {})
{
    throw Failure{ExitStatus::InvalidText, message, advice};
}

QString placeOf(const QByteArray &text, int offset)
{
    const QByteArray before = text.left(offset);
    const auto lineStart = before.lastIndexOf('\n') + 1;
    return QStringLiteral("line %1, column %2")
        .arg(before.count('\n') + 1)
        .arg(decodeUtf8(before.mid(lineStart)).toUcs4().size() + 1);
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
        throwInvalid(QStringLiteral("%1 is not valid JSON: %2: %3")
                         .arg(file, placeOf(text, error.offset), error.errorString()));
    QJsonObject object = document.object();
    if (object.value(SchemaMember) != schema.name)
        throwInvalid(QStringLiteral("%1 does not have the schema %2").arg(file, schema.name));
    if (object.value(VersionMember) != schema.version)
        throwInvalid(QStringLiteral("%1 does not have version %2, which is the only supported one")
                         .arg(file, QString::number(schema.version)));
    requireMembers(object, QStringList{SchemaMember, VersionMember} + schema.members, file);
    return object;
}

void requireMembers(const QJsonObject &object, const QStringList &names, const QString &where)
{
    const QStringList members = object.keys();
    for (const QString &member : members) {
        if (!names.contains(member))
            throwInvalid(
                QStringLiteral("%1: unknown member \"%2\"").arg(where, member),
                QStringLiteral("The members are %1.").arg(names.join(QStringLiteral(", "))));
    }
    for (const QString &name : names) {
        if (!members.contains(name))
            throwInvalid(QStringLiteral("%1: the member \"%2\" is missing").arg(where, name));
    }
}

} // namespace files
