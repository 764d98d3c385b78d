#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// A simple parser: it hides the escapes in the whole text, splits it, and restores the escaped
/// characters in each field. The parser of the service must return the same records for any text.
namespace plain {

struct Record
{
    QString hidden;
    QStringList hiddenFields;
    QStringList fields; ///< unescaped
};

/// The text with placeholder words instead of escapes.
QString hideEscapes(QString text);

QList<Record> parseText(const QString &text);

} // namespace plain
