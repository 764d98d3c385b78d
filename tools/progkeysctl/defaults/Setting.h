#pragma once

#include "defaults/Finding.h"
#include "defaults/Kind.h"
#include "provisioning/ProvisioningText.h"

#include <QByteArray>

#include <optional>

namespace defaults {

/// The text of a setting as it stands in a file, and what there is to complain of.
struct Setting
{
    QString file;
    std::optional<Kind> kind; ///< nothing for the limit, which is a number
    QString text;
    QList<provisioning::Record> records; ///< none for an empty text: nothing is provisioned
    QList<Finding> findings;
};

/// The setting that a file with these bytes is. One newline at the end is dropped, as it is when
/// the setting is delivered. What of it cannot be delivered is found: bytes that are not UTF-8, a
/// byte order mark, U+0000.
Setting readSetting(const QString &file, std::optional<Kind> kind, QByteArray bytes);

/// The part of the text that a record or a field is.
template <typename Part>
Span spanOf(const Part &part)
{
    return {part.start, part.length};
}

/// How many characters, as Unicode counts them, stand in that part of the text.
int characters(const QString &text, const Span &part);

/// A complaint of a record or, with `field` from 1, of one of its fields, to be placed exactly.
Finding complaint(Severity severity, const char *code, const provisioning::Record &record,
                  int field = 0);

/// The record, and the field from 1, that the index into the text belongs to. The text must have
/// records; a separator belongs to what it ends.
Finding complaintAt(const Setting &setting, Severity severity, const char *code, const Span &place);

} // namespace defaults
