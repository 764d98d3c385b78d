#pragma once

#include "cli/Session.h"
#include "outcome/ExitStatus.h"

#include <functional>

namespace commands {

/// Deletes rows one by one with `remove`, which returns the deleted row. A refusal is reported on
/// stderr and does not stop the others; the first one is the exit status. If the service no longer
/// answers, the rest is not tried.
ExitStatus deleteEach(cli::Session &session, const QList<qlonglong> &ids,
                      const QList<output::Column> &columns,
                      const std::function<QJsonObject(qlonglong)> &remove);

} // namespace commands
