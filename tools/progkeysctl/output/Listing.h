#pragma once

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

namespace output {

/// One field of the rows of a listing.
struct Column
{
    QString name;          ///< in JSON and in --fields
    QString heading;       ///< above the column of a table
    bool isNumber = false; ///< to be set flush right
};

/// What a command has to tell: rows with the same fields. A row is an object by the columns' names;
/// what it has besides is told in JSON only.
struct Listing
{
    QList<Column> columns;
    QList<QJsonObject> rows;
    QString legend; ///< below a table, such as "3 keys"
};

/// A whole number in JSON: as a number where every reader keeps it, up to 2^53 either way; beyond
/// as the text of its digits.
QJsonValue jsonNumber(qlonglong number);

/// A field's value as people read it: a dash for null, yes and no, lists with commas.
QString displayText(const QJsonValue &value);

} // namespace output
