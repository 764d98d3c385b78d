#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// The parser in the plain way: it hides the escapes in the whole text, splits it, and shows them
/// again in each field. The service's parser must return the same records for any text.
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
