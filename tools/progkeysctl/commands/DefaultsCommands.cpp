#include "commands/DefaultsCommands.h"

#include "commands/DefaultsPlanCommand.h"
#include "converting/Table.h"
#include "defaults/Report.h"
#include "defaults/Rollout.h"
#include "files/Files.h"
#include "outcome/Failure.h"

#include <QFile>

#include <limits>
#include <memory>

namespace commands {
namespace {

struct CheckArguments
{
    std::vector<std::string> files;
    std::string kind;
    std::optional<int> limit;
    bool isStrict = false;
};

struct ConvertArguments
{
    std::string from;
    std::string to;
    std::string kind;
    std::string output{"-"};
    std::string file{"-"};
};

QString pathOf(const std::string &argument)
{
    return QFile::decodeName(QByteArray::fromStdString(argument));
}

std::optional<defaults::Kind> kindOf(const std::string &argument)
{
    return defaults::kindNamed(QString::fromStdString(argument));
}

CLI::Option *addKind(CLI::App *command, std::string &kind, const std::string &description)
{
    return command->add_option("--kind", kind, description)
        ->type_name("actions|keys")
        ->check(CLI::IsMember({"actions", "keys"}));
}

void addForm(CLI::App *command, const std::string &name, std::string &form,
             const std::string &description)
{
    command->add_option(name, form, description)
        ->type_name("csv|json|text")
        ->check(CLI::IsMember({"csv", "json", "text"}))
        ->required();
}

void tellFindings(output::Output &out, const QList<defaults::Setting> &settings)
{
    if (!out.isForPeople()) {
        out.list(defaults::listingOf(settings));
        return;
    }
    for (const defaults::Setting &setting : settings) {
        const QStringList lines = defaults::linesOf(setting, out.terminal());
        for (const QString &line : lines)
            out.say(line);
    }
    if (out.manner().hasLegend)
        out.say(defaults::summaryOf(settings));
}

ExitStatus check(cli::Session &session, const CheckArguments &arguments)
{
    defaults::CheckRequest request{{}, kindOf(arguments.kind), arguments.limit};
    for (const std::string &file : arguments.files)
        request.files.append(pathOf(file));
    const defaults::CheckResult result = defaults::checkFiles(request);
    tellFindings(session.out(), result.settings);
    for (const QString &file : result.keysAlone)
        output::warn(QStringLiteral("no actions were given, so nobody looked whether each key of "
                                    "%1 has one")
                         .arg(file));
    const int errors = defaults::countOf(result.settings, defaults::Severity::Error);
    const int warnings = defaults::countOf(result.settings, defaults::Severity::Warning);
    const bool isGood = errors == 0 && (warnings == 0 || !arguments.isStrict);
    return isGood ? ExitStatus::Done : ExitStatus::InvalidText;
}

defaults::Kind kindOfText(const QString &file, std::optional<defaults::Kind> asked)
{
    const std::optional<defaults::Kind> told = asked ? asked : defaults::kindOfFile(file);
    if (told)
        return *told;
    throw defaults::unknownKind(file, QStringLiteral("Say so with --kind actions or --kind keys."));
}

defaults::Table read(const ConvertArguments &arguments)
{
    const QString file = pathOf(arguments.file);
    const std::optional<defaults::Kind> kind = kindOf(arguments.kind);
    if (arguments.from == "text") {
        const defaults::Kind known = kindOfText(file, kind);
        return defaults::readText(files::readAll(file), file, known);
    }
    const QByteArray bytes = files::readAll(file);
    return arguments.from == "csv" ? defaults::readCsv(bytes, file, kind)
                                   : defaults::readJson(bytes, file, kind);
}

QByteArray written(const defaults::Table &table, const std::string &form)
{
    if (form == "text")
        return defaults::writeText(table);
    return form == "csv" ? defaults::writeCsv(table) : defaults::writeJson(table);
}

ExitStatus convert(cli::Session &session, const ConvertArguments &arguments)
{
    const QByteArray bytes = written(read(arguments), arguments.to);
    const QString target = pathOf(arguments.output);
    if (target == files::StandardStream)
        session.out().raw(bytes);
    else
        files::writeWhole(target, bytes);
    return ExitStatus::Done;
}

void addCheck(cli::CommandLine &line, CLI::App *group)
{
    const auto arguments = std::make_shared<CheckArguments>();
    CLI::App *command =
        line.addCommand(group, "check", "find what is wrong with texts that provision a phone",
                        [arguments](cli::Session &session) { return check(session, *arguments); });
    command
        ->add_option("FILE", arguments->files,
                     "files of the settings DefaultActions, DefaultKeys, ProgKeysMax; - for stdin")
        ->type_name(cli::type::File)
        ->required();
    addKind(command, arguments->kind, "what files are whose name does not tell");
    command
        ->add_option("--limit", arguments->limit,
                     "most keys of the set; else what the file ProgKeysMax says, if there is one")
        ->type_name(cli::type::Number)
        ->check(CLI::Range(0, std::numeric_limits<int>::max()));
    command->footer(
        "Each complaint begins with FILE:RECORD:FIELD:COLUMN: error: or warning:, counted from 1. "
        "FIELD is\n0 where the record as a whole is meant; COLUMN counts the characters of "
        "the record.");
    command->add_flag("--strict", arguments->isStrict, "fail for warnings, too");
}

void addConvert(cli::CommandLine &line, CLI::App *group)
{
    const auto arguments = std::make_shared<ConvertArguments>();
    CLI::App *command = line.addCommand(
        group, "convert", "turn provisioned records into CSV, JSON or the text of a setting",
        [arguments](cli::Session &session) { return convert(session, *arguments); });
    addForm(command, "--from", arguments->from, "what is read");
    addForm(command, "--to", arguments->to, "what is to be written");
    addKind(command, arguments->kind, "what a text is of; else its file name tells");
    command->add_option("-o,--output", arguments->output, "write this file, whole or not at all")
        ->type_name(cli::type::File);
    command->add_option("FILE", arguments->file, "what to read; - or none for stdin")
        ->type_name(cli::type::File);
}

} // namespace

void addDefaultsCommands(cli::CommandLine &line)
{
    CLI::App *group =
        line.addGroup("defaults", "check, convert and plan the texts that provision a phone");
    addCheck(line, group);
    addConvert(line, group);
    addDefaultsPlan(line, group);
}

} // namespace commands
