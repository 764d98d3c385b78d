#pragma once

#include <QList>
#include <QString>

/// The text in which device management writes its defaults: records separated by `#`, fields by
/// `,`; backslash-comma and backslash-hash stand for the characters themselves. Places are counted
/// in QChars from 0, in the text as it was given.
namespace provisioning {

/// Every record has so many fields.
constexpr int FieldCount = 7;

struct Field
{
    QString text; ///< unescaped
    int start = 0;
    int length = 0;
};

/// One record. It is accepted if it has exactly FieldCount fields; else `fault` says why not.
struct Record
{
    int number = 0; ///< from 1, refused and empty records counted
    int start = 0;
    int length = 0;
    QString hidden; ///< its text with the escapes hidden, as it stands in the log
    QList<Field> fields;
    QString fault; ///< empty if it is accepted

    bool isAccepted() const { return fault.isEmpty(); }
};

/// The records of a text, in order; at least one, because an empty text is one empty record.
///
/// Escapes are carried through by placeholder words, so a field that contains the letters
/// `escComa` or `escSharp` comes out with a comma or a hash in their place.
QList<Record> parseText(const QString &text);

} // namespace provisioning
