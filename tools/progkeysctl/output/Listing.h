#pragma once

#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace output {

/// One field of the rows of a listing.
struct Column
{
    QString name;          ///< in tables, in JSON and in --fields
    bool isNumber = false; ///< aligned to the right
    bool isShown = true;   ///< in a table without --fields
};

/// The result of a command: rows with the same fields. A row is an object by the columns' names;
/// other members are printed in JSON only.
struct Listing
{
    QList<Column> columns;
    QList<QJsonObject> rows;
    QString legend; ///< below a table, such as "3 keys"
    /// Colours of rows by the text of their first column: "red", "green", "brown".
    QMap<QString, QByteArray> colours = {};
};

/// An integer in JSON: a number up to 2^53, which every reader keeps, else a string.
QJsonValue jsonNumber(qlonglong number);

/// A value as text: "-" for null, "yes" and "no", lists with commas.
QString displayText(const QJsonValue &value);

} // namespace output
