#pragma once

#include "cli/CommandLine.h"

#include <QStringList>

#include <vector>

/// The shapes that commands on rows share: one id, several ids, assignments.
namespace commands {

using OnId = ExitStatus (*)(cli::Session &, qlonglong id);
using OnIds = ExitStatus (*)(cli::Session &, const std::vector<qlonglong> &ids);
using OnAssignments = ExitStatus (*)(cli::Session &, const QStringList &assignments);
using OnIdAndAssignments = ExitStatus (*)(cli::Session &, qlonglong id,
                                          const QStringList &assignments);

/// What a command is called, what it does, and the type names of its arguments.
struct Naming
{
    const char *name;
    const char *description;
    const char *idType;
    const char *assignmentType;
};

CLI::App *addIdCommand(cli::CommandLine &line, CLI::App *group, const Naming &naming, OnId run);
CLI::App *addIdsCommand(cli::CommandLine &line, CLI::App *group, const Naming &naming, OnIds run);
CLI::App *addAssignmentsCommand(cli::CommandLine &line, CLI::App *group, const Naming &naming,
                                OnAssignments run);
CLI::App *addIdAndAssignmentsCommand(cli::CommandLine &line, CLI::App *group, const Naming &naming,
                                     OnIdAndAssignments run);

/// Deletes one row after the other with `remove`, which returns the row it deleted. One that is
/// refused is told on stderr and does not keep the others; its status is the result then. Where the
/// service does not answer any more the rest is not tried.
ExitStatus removeEach(cli::Session &session, const std::vector<qlonglong> &ids,
                      const QList<output::Column> &columns,
                      const std::function<QJsonObject(qlonglong)> &remove);

} // namespace commands
