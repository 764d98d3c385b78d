#include "commands/Shapes.h"

#include "cli/Checks.h"
#include "outcome/Failure.h"

#include <memory>

namespace commands {
namespace {

QStringList toTexts(const std::vector<std::string> &words)
{
    QStringList texts;
    for (const std::string &word : words)
        texts.append(QString::fromStdString(word));
    return texts;
}

void takeId(CLI::App *command, qlonglong &id, const char *type)
{
    command->add_option("ID", id, "its identifier")
        ->required()
        ->type_name(type)
        ->transform(cli::wholeNumber());
}

void takeAssignments(CLI::App *command, std::vector<std::string> &words, const char *type)
{
    command->add_option("ASSIGNMENTS", words, "what is to be")->required()->type_name(type);
}

} // namespace

CLI::App *addIdCommand(cli::CommandLine &line, CLI::App *group, const Naming &naming, OnId run)
{
    const auto id = std::make_shared<qlonglong>();
    CLI::App *command =
        line.addCommand(group, naming.name, naming.description,
                        [id, run](cli::Session &session) { return run(session, *id); });
    takeId(command, *id, naming.idType);
    return command;
}

CLI::App *addIdsCommand(cli::CommandLine &line, CLI::App *group, const Naming &naming, OnIds run)
{
    const auto ids = std::make_shared<std::vector<qlonglong>>();
    CLI::App *command =
        line.addCommand(group, naming.name, naming.description,
                        [ids, run](cli::Session &session) { return run(session, *ids); });
    command->add_option("IDS", *ids, "their identifiers")
        ->required()
        ->type_name(naming.idType)
        ->transform(cli::wholeNumber());
    return command;
}

CLI::App *addAssignmentsCommand(cli::CommandLine &line, CLI::App *group, const Naming &naming,
                                OnAssignments run)
{
    const auto words = std::make_shared<std::vector<std::string>>();
    CLI::App *command = line.addCommand(
        group, naming.name, naming.description,
        [words, run](cli::Session &session) { return run(session, toTexts(*words)); });
    takeAssignments(command, *words, naming.assignmentType);
    return command;
}

CLI::App *addIdAndAssignmentsCommand(cli::CommandLine &line, CLI::App *group, const Naming &naming,
                                     OnIdAndAssignments run)
{
    struct Given
    {
        qlonglong id = 0;
        std::vector<std::string> words;
    };
    const auto given = std::make_shared<Given>();
    CLI::App *command = line.addCommand(group, naming.name, naming.description,
                                        [given, run](cli::Session &session) {
                                            return run(session, given->id, toTexts(given->words));
                                        });
    takeId(command, given->id, naming.idType);
    takeAssignments(command, given->words, naming.assignmentType);
    return command;
}

namespace {

/// Is it about the one row, so that the next one may well go?
bool isOfOneRow(const Failure &failure)
{
    return failure.status == ExitStatus::Failed || failure.status == ExitStatus::NotFound;
}

} // namespace

ExitStatus removeEach(cli::Session &session, const std::vector<qlonglong> &ids,
                      const QList<output::Column> &columns,
                      const std::function<QJsonObject(qlonglong)> &remove)
{
    session.out().requireFields(columns);
    ExitStatus status = ExitStatus::Done;
    output::Listing removed;
    removed.columns = columns;
    for (const qlonglong id : ids) {
        try {
            removed.rows.append(remove(id));
        } catch (const Failure &failure) {
            if (!isOfOneRow(failure))
                throw;
            session.out().flush();
            output::sayFailure(failure);
            if (status == ExitStatus::Done)
                status = failure.status;
        }
    }
    if (!session.out().isForPeople())
        session.out().list(removed);
    return status;
}

} // namespace commands
