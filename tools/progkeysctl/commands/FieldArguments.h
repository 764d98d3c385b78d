#pragma once

#include "cli/Command.h"
#include "fields/Fields.h"

namespace commands {

/// A command whose FIELD=VALUE arguments set fields of `Key` or `Action`. Its help lists the
/// fields, without the identifier, and the example.
template <typename Record>
cli::Command withFields(cli::Command command, const char *example)
{
    for (const fields::Field<Record> &field : fields::of<Record>().mid(1))
        command.fields.append(
            {field.name + (field.isText() ? QStringLiteral("=TEXT") : QStringLiteral("=NUMBER")),
             field.help});
    command.notes = QStringLiteral("Example: ") + QString::fromUtf8(example);
    return command;
}

} // namespace commands
