#include "commands/Commands.h"

#include "converting/Formats.h"
#include "defaults/Checks.h"
#include "defaults/Report.h"
#include "files/Files.h"
#include "planning/Plan.h"
#include "text/Format.h"

#include <QFileInfo>

#include <algorithm>

namespace commands {
namespace {

using defaults::Kind;

const QString KindAdvice = "Specify --kind actions or --kind keys."_s;

std::optional<Kind> kindFrom(const cli::Arguments &arguments)
{
    return defaults::kindNamed(arguments.text("--kind"));
}

// `kindAdvice` is how to specify the kind of a file.
defaults::Rollout readRollout(const cli::Arguments &arguments, const QString &kindAdvice)
{
    defaults::Rollout rollout;
    rollout.givenLimit = arguments.optionalInteger("--limit");
    if (arguments.has("--actions"))
        rollout.add(Kind::Actions, arguments.path("--actions"));
    if (arguments.has("--keys"))
        rollout.add(Kind::Keys, arguments.path("--keys"));
    rollout.addPaths(arguments.paths("FILE") + arguments.paths("--settings"), kindFrom(arguments),
                     kindAdvice);
    return rollout;
}

void check(cli::Session &session, const cli::Arguments &arguments)
{
    defaults::Rollout rollout = readRollout(arguments, KindAdvice);
    const defaults::Setting *keys = rollout.find(Kind::Keys);
    if (!rollout.givenLimit && keys && keys->file != files::StandardStream)
        rollout.addFrom(QFileInfo(keys->file).path(), Kind::Limit);
    defaults::check(rollout);
    defaults::print(rollout, session.out());
    if (keys && !rollout.find(Kind::Actions))
        output::warn("no actions were specified, so the keys were not compared with them"_s);
    const int errors = defaults::countOf(rollout, defaults::Severity::Error);
    const int warnings = defaults::countOf(rollout, defaults::Severity::Warning);
    const bool isGood = errors == 0 && (warnings == 0 || !arguments.has("--strict"));
    session.exitWith(isGood ? ExitStatus::Done : ExitStatus::InvalidText);
}

QString fileOrStream(const QString &path)
{
    return path.isEmpty() ? QString(files::StandardStream) : path;
}

defaults::Records read(const cli::Arguments &arguments)
{
    const QString file = fileOrStream(arguments.path("FILE"));
    const QString name = files::displayName(file);
    const QString form = arguments.text("--from");
    const std::optional<Kind> expected = kindFrom(arguments);
    if (form == "text"_s) {
        const auto kind = expected ? expected : defaults::kindOfFile(file);
        if (!kind || *kind == Kind::Limit)
            throw defaults::unknownKind(name, KindAdvice);
        return defaults::readText(files::readAll(file), file, *kind);
    }
    const QByteArray bytes = files::readAll(file);
    defaults::Records records =
        form == "csv"_s ? defaults::readCsv(bytes, name) : defaults::readJson(bytes, name);
    if (expected && *expected != records.kind)
        throw Failure{ExitStatus::InvalidText,
                      format("%1 contains %2", name, defaults::nameOf(records.kind))};
    return records;
}

QByteArray written(const defaults::Records &records, const QString &form)
{
    if (form == "text"_s)
        return defaults::writeText(records);
    return form == "csv"_s ? defaults::writeCsv(records) : defaults::writeJson(records);
}

void convert(cli::Session &session, const cli::Arguments &arguments)
{
    const QByteArray bytes = written(read(arguments), arguments.text("--to"));
    const QString target = fileOrStream(arguments.path("--output"));
    if (target == files::StandardStream)
        session.out().write(bytes);
    else
        files::writeWhole(target, bytes);
}

// Adds a setting that the rollout does not have: that of the phone, unless the rollout is a
// directory. A missing setting is empty, as it is for the service.
void addMissing(defaults::Rollout &rollout, Kind kind, cli::Session &session)
{
    if (rollout.find(kind))
        return;
    const QString name = defaults::settingName(kind);
    const bool isOfPhone = rollout.directory.isEmpty();
    const auto text = isOfPhone ? session.phone().setting(name) : std::nullopt;
    if (text || kind != Kind::Limit)
        rollout.settings.emplace(kind, defaults::settingOf(name, kind, text.value_or(QString())));
    if (!text)
        output::warn(format("%1 has no setting %2: %3",
                            isOfPhone ? "the phone"_s : rollout.directory, name,
                            kind == Kind::Limit ? "the number of keys is not limited"_s
                                                : "it is treated as empty"_s));
}

void plan(cli::Session &session, const cli::Arguments &arguments)
{
    defaults::Rollout rollout = readRollout(arguments, "Specify --actions FILE or --keys FILE."_s);
    for (const auto &[kind, setting] : rollout.settings)
        defaults::requireReadable(setting);
    addMissing(rollout, Kind::Actions, session);
    addMissing(rollout, Kind::Keys, session);
    if (!rollout.givenLimit)
        addMissing(rollout, Kind::Limit, session);
    const ListAction actions = session.phone().actions();
    const ListKey keys = session.phone().keys();
    defaults::Plan plan = defaults::planOf(actions, keys, rollout);
    output::Output &out = session.out();
    QList<QJsonObject> &rows = plan.listing.rows;
    const auto isKept = [](const QJsonObject &row) { return row.value("what"_s) == "kept"_s; };
    if (out.isForPeople() && !arguments.has("--all"))
        rows.erase(std::remove_if(rows.begin(), rows.end(), isKept), rows.end());
    out.list(plan.listing);
    if (!arguments.has("--detailed-exitcode"))
        return;
    if (plan.hasRefusedRecords)
        session.exitWith(ExitStatus::InvalidText);
    else if (plan.hasChanges)
        session.exitWith(ExitStatus::Changes);
}

constexpr const char *RolloutHelp = "files DefaultActions, DefaultKeys and ProgKeysMax, or a "
                                    "directory that contains them; - is standard input";

cli::Parameter limitOption()
{
    return cli::parameter("--limit NUMBER", "key limit; by default the value of ProgKeysMax",
                          cli::check::integer(0));
}

cli::Command checkCommand()
{
    cli::Command command =
        cli::command("defaults check", "check the settings that provision a phone",
                     {cli::parameter("FILE...", RolloutHelp, cli::check::notEmpty),
                      cli::parameter("--kind actions|keys",
                                     "content of the files, if their names do not imply it"),
                      limitOption(), cli::parameter("--strict", "treat warnings as errors")},
                     {"file"_s, "record"_s, "field"_s, "fieldName"_s, "column"_s, "severity"_s,
                      "code"_s, "message"_s, "character"_s},
                     check);
    command.notes =
        "Each message begins with FILE:RECORD:FIELD:COLUMN:, and error: or warning:. The numbers "
        "start at 1. FIELD is 0 for a problem with the whole record. COLUMN counts characters in "
        "the record."_s;
    return command;
}

cli::Command convertCommand()
{
    return cli::command(
        "defaults convert", "convert provisioned records between CSV, JSON and setting text",
        {cli::required(cli::parameter("--from csv|json|text", "input format")),
         cli::required(cli::parameter("--to csv|json|text", "output format")),
         cli::parameter("--kind actions|keys",
                        "content of the input; for text, by default derived from the file name"),
         cli::parameter("-o, --output FILE", "write to this file instead of standard output",
                        cli::check::notEmpty),
         cli::parameter("[FILE]", "input file; standard input if it is - or omitted",
                        cli::check::notEmpty)},
        {}, convert);
}

cli::Command planCommand()
{
    cli::Command command = cli::command(
        "defaults plan", "show what the next start of the service would change",
        {cli::parameter("[FILE...]", RolloutHelp, cli::check::notEmpty),
         cli::parameter("--actions FILE", "file with actions; - is standard input",
                        cli::check::notEmpty),
         cli::parameter("--keys FILE", "file with keys; - is standard input", cli::check::notEmpty),
         cli::parameter("--settings DIR",
                        "directory for the settings that are not specified as files",
                        cli::check::existingDirectory),
         limitOption(), cli::parameter("--all", "also show rows that do not change"),
         cli::parameter("--detailed-exitcode",
                        "exit with status 4 if records are refused, else with status 20 if there "
                        "are changes")},
        {"what"_s, "kind"_s, "id"_s, "dmId"_s, "field"_s, "old"_s, "new"_s, "record"_s, "reason"_s,
         "detail"_s},
        plan);
    command.details = QStringList{"field"_s, "old"_s, "new"_s, "record"_s, "reason"_s};
    command.notes =
        "Settings that you specify neither as a file nor by a directory are read from the phone. "
        "This command changes nothing."_s;
    return command;
}

} // namespace

QList<cli::Command> defaultsCommands()
{
    return {
        cli::group({"defaults"_s}, "check, convert and plan the settings that provision a phone"),
        checkCommand(), convertCommand(), planCommand()};
}

} // namespace commands
