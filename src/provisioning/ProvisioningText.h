#pragma once

#include <QList>
#include <QString>

/// The format of the defaults: `#` separates records, and `,` separates fields. A comma or hash
/// after a backslash is not a separator. Positions are QChar indexes into the original text. Only
/// programs that check a text use them.
namespace provisioning {

/// The number of fields of an accepted record.
constexpr int FieldCount = 7;

struct Field
{
    QString text; ///< unescaped
    int start = 0;
    int length = 0;
};

/// A record. It is accepted if it has exactly FieldCount fields. Otherwise `fault` has the reason.
struct Record
{
    int number = 0; ///< from 1, including invalid and empty records
    int start = 0;
    int length = 0;
    QString hidden; ///< its text with placeholder words for escapes, for the log
    QList<Field> fields;
    QString fault; ///< empty if it is accepted

    bool isAccepted() const { return fault.isEmpty(); }
};

/// The records of a text, in order. An empty text is one empty record.
///
/// The parser temporarily replaces escapes with the placeholder words `escComa` and `escSharp`. If
/// a field contains these words itself, they also become a comma or a hash.
QList<Record> parseText(const QString &text);

} // namespace provisioning
