#pragma once

#include <QList>
#include <QString>

/// The text in which device management writes its defaults: records separated by `#`, fields by
/// `,`; backslash-comma and backslash-hash stand for the characters themselves. Positions are QChar
/// indexes into the original text; only programs that check a text use them.
namespace provisioning {

/// The number of fields of an accepted record.
constexpr int FieldCount = 7;

struct Field
{
    QString text; ///< unescaped
    int start = 0;
    int length = 0;
};

/// One record. It is accepted if it has exactly FieldCount fields; otherwise `fault` has the
/// reason.
struct Record
{
    int number = 0; ///< from 1, counting invalid and empty records
    int start = 0;
    int length = 0;
    QString hidden; ///< its text with the escapes hidden, for the log
    QList<Field> fields;
    QString fault; ///< empty if it is accepted

    bool isAccepted() const { return fault.isEmpty(); }
};

/// The records of a text, in order; at least one, because an empty text is one empty record.
///
/// Placeholder words stand for escapes while the text is parsed, so a field that contains `escComa`
/// or `escSharp` comes out with a comma or a hash in its place.
QList<Record> parseText(const QString &text);

} // namespace provisioning
