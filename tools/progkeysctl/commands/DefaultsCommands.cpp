#include "commands/DefaultsCommands.h"

#include "cli/Arguments.h"
#include "cli/Session.h"
#include "commands/DefaultsPlanCommand.h"
#include "converting/Table.h"
#include "defaults/Report.h"
#include "defaults/Rollout.h"
#include "files/Files.h"
#include "outcome/Failure.h"

#include <limits>

namespace commands {
namespace {

std::optional<defaults::Kind> kindFrom(const cli::Arguments &arguments)
{
    return defaults::kindNamed(arguments.text("--kind"));
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

ExitStatus check(cli::Session &session, const cli::Arguments &arguments)
{
    const defaults::CheckRequest request{arguments.paths("FILE"), kindFrom(arguments),
                                         arguments.optionalInteger("--limit")};
    const defaults::CheckResult result = defaults::checkFiles(request);
    tellFindings(session.out(), result.settings);
    for (const QString &file : result.keysAlone)
        output::warn(QStringLiteral("no actions were given, so nobody looked whether each key of "
                                    "%1 has one")
                         .arg(file));
    const int errors = defaults::countOf(result.settings, defaults::Severity::Error);
    const int warnings = defaults::countOf(result.settings, defaults::Severity::Warning);
    const bool isGood = errors == 0 && (warnings == 0 || !arguments.has("--strict"));
    return isGood ? ExitStatus::Done : ExitStatus::InvalidText;
}

defaults::Kind kindOfText(const QString &file, std::optional<defaults::Kind> asked)
{
    const std::optional<defaults::Kind> told = asked ? asked : defaults::kindOfFile(file);
    if (told)
        return *told;
    throw defaults::unknownKind(file, QStringLiteral("Say so with --kind actions or --kind keys."));
}

QString fileOr(const QString &path)
{
    return path.isEmpty() ? QString(files::StandardStream) : path;
}

defaults::Table read(const cli::Arguments &arguments)
{
    const QString file = fileOr(arguments.path("FILE"));
    const QString form = arguments.text("--from");
    const std::optional<defaults::Kind> kind = kindFrom(arguments);
    if (form == QLatin1String("text")) {
        const defaults::Kind known = kindOfText(file, kind);
        return defaults::readText(files::readAll(file), file, known);
    }
    const QByteArray bytes = files::readAll(file);
    return form == QLatin1String("csv") ? defaults::readCsv(bytes, file, kind)
                                        : defaults::readJson(bytes, file, kind);
}

QByteArray written(const defaults::Table &table, const QString &form)
{
    if (form == QLatin1String("text"))
        return defaults::writeText(table);
    return form == QLatin1String("csv") ? defaults::writeCsv(table) : defaults::writeJson(table);
}

ExitStatus convert(cli::Session &session, const cli::Arguments &arguments)
{
    const QByteArray bytes = written(read(arguments), arguments.text("--to"));
    const QString target = fileOr(arguments.path("--output"));
    if (target == files::StandardStream)
        session.out().raw(bytes);
    else
        files::writeWhole(target, bytes);
    return ExitStatus::Done;
}

cli::Parameter kindOption(const char *help)
{
    return cli::option(
        "--kind", cli::type::choice({QStringLiteral("actions"), QStringLiteral("keys")}), help);
}

cli::Command checkCommand()
{
    cli::Command command = cli::command(
        "defaults check", "find what is wrong with texts that provision a phone",
        {cli::argument(
             "FILE", cli::type::file(),
             "files of the settings DefaultActions, DefaultKeys, ProgKeysMax; - for stdin")
             .repeatable(),
         kindOption("what files are whose name does not tell"),
         cli::option("--limit", cli::type::integer("NUMBER", 0),
                     "most keys of the set; else what the file ProgKeysMax says, if there is one"),
         cli::flag("--strict", "fail for warnings, too")},
        check);
    command.notes = QStringLiteral(
        "Each complaint begins with FILE:RECORD:FIELD:COLUMN: error: or warning:, counted from 1. "
        "FIELD is 0 where the record as a whole is meant; COLUMN counts the characters of the "
        "record.");
    return command;
}

cli::Command convertCommand()
{
    const cli::ValueType form =
        cli::type::choice({QStringLiteral("csv"), QStringLiteral("json"), QStringLiteral("text")});
    return cli::command(
        "defaults convert", "turn provisioned records into CSV, JSON or the text of a setting",
        {cli::option("--from", form, "what is read").required(),
         cli::option("--to", form, "what is to be written").required(),
         kindOption("what a text is of; else its file name tells"),
         cli::option("--output", cli::type::file(), "write this file, whole or not at all")
             .withShortName("-o"),
         cli::argument("FILE", cli::type::file(), "what to read; - or none for stdin").optional()},
        convert);
}

} // namespace

QList<cli::Command> defaultsCommands()
{
    return {cli::group("defaults", "check, convert and plan the texts that provision a phone"),
            checkCommand(), convertCommand(), defaultsPlanCommand()};
}

} // namespace commands
