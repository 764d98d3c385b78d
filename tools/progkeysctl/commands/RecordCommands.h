#pragma once

#include "cli/Arguments.h"
#include "cli/Command.h"
#include "cli/Session.h"
#include "fields/Fields.h"

#include <functional>

/// The parts of the commands `key` and `action` that are the same for both. `Record` is `Key` or
/// `Action`; its identifier is the argument KEY_ID or ACTION_ID.
namespace commands {

/// The record with this identifier. Throws a Failure of status NotFound if there is none.
template <typename Record>
Record existing(const client::ProgrammableKeys &service, qlonglong id);

/// The commands `show`, `add` and `set`.
template <typename Record>
ExitStatus showRecord(cli::Session &session, const cli::Arguments &arguments);
template <typename Record>
ExitStatus addRecord(cli::Session &session, const cli::Arguments &arguments);
template <typename Record>
ExitStatus setRecord(cli::Session &session, const cli::Arguments &arguments);

/// The command with a help that lists the fields for FIELD=VALUE and has an example.
template <typename Record>
cli::Command withFields(cli::Command command, const char *exampleArguments);

/// Deletes records one by one with `remove`, which returns the deleted record. A refusal is
/// reported on stderr and does not stop the others; the first one is the exit status. If the
/// service no longer answers, the rest is not tried.
ExitStatus deleteEach(cli::Session &session, const QList<QByteArray> &ids,
                      const QList<output::Column> &columns,
                      const std::function<QJsonObject(qlonglong)> &remove);

} // namespace commands
