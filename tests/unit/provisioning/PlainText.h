#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// The same format read the plain way: hide the escapes in the whole text, split it, show them
/// again in each field. The parser has to come to the same records, at any text.
namespace plain {

struct Record
{
    QString hidden;
    QStringList hiddenFields;
    QStringList fields; ///< unescaped
};

/// The text with its escapes hidden behind the placeholder words.
QString hideEscapes(QString text);

QList<Record> parseText(const QString &text);

} // namespace plain
