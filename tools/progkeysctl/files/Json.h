#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QStringList>

/// Files with a JSON object that says what it is: {"schema": ..., "version": ..., ...}.
namespace files {

/// What a file must be.
struct Schema
{
    QString name;
    int version = 1;
    QStringList members; ///< apart from schema and version
};

/// The object in a file. Throws a Failure of status InvalidText if there is none, with line and
/// column, or if schema, version or members are others.
QJsonObject readJson(const QByteArray &bytes, const QString &file, const Schema &schema);

/// Throws a Failure of status InvalidText unless the object has all of these members, and no
/// others.
void requireMembers(const QJsonObject &object, const QStringList &names, const QString &where);

/// The objects in an array. Throws a Failure of status InvalidText if the member is not an array of
/// objects.
QList<QJsonObject> objectsOf(const QJsonObject &object, const QString &member, const QString &file);

} // namespace files
