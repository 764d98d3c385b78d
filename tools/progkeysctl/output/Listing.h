#pragma once

#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>

namespace output {

/// Rows to print. A row is an object by the names of the command's fields. A missing field is null;
/// other members are printed in JSON only.
struct Listing
{
    QList<QJsonObject> rows;
    QString legend = {}; ///< below a table, such as "3 keys"
    /// Colors of rows by the text of their first field: "red", "green", "brown".
    QMap<QString, QByteArray> colors = {};
};

/// An integer in JSON: a number up to 2^53, which every reader keeps, else a string.
QJsonValue jsonNumber(qlonglong number);

/// A value as text: "-" for null, "yes" and "no", lists with commas.
QString displayText(const QJsonValue &value);

} // namespace output
