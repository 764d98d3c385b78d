#pragma once

#include "cli/Session.h"
#include "outcome/ExitStatus.h"

#include <functional>

namespace commands {

/// Deletes one row after the other with `remove`, which returns the row it deleted. One that is
/// refused is told on stderr and does not keep the others; its status is the result then. Where the
/// service does not answer any more the rest is not tried.
ExitStatus deleteEach(cli::Session &session, const QList<qlonglong> &ids,
                      const QList<output::Column> &columns,
                      const std::function<QJsonObject(qlonglong)> &remove);

} // namespace commands
