#include "defaults/Rollout.h"

#include "files/Files.h"
#include "text/Format.h"

#include <QDir>
#include <QFileInfo>

namespace defaults {
namespace {

[[noreturn]] void throwUsage(const QString &message, const QString &advice = {})
{
    throw Failure{ExitStatus::Usage, message, advice};
}

void add(Rollout &rollout, Kind kind, const QString &file)
{
    for (const auto &[otherKind, other] : rollout.settings) {
        if (file == files::StandardStream && other.file == files::StandardStream)
            throwUsage("Standard input can be read only once"_s);
        if (otherKind == kind)
            throwUsage(format("%1 and %2 are both %3", other.file, file, settingName(kind)),
                       "Specify one of them."_s);
    }
    rollout.settings.emplace(kind, readSetting(file, kind, files::readAll(file)));
}

void addPath(Rollout &rollout, const QString &path, const RolloutSources &sources)
{
    if (QFileInfo(path).isDir()) {
        if (!rollout.directory.isEmpty())
            throwUsage(format("%1 and %2 are both directories", rollout.directory, path),
                       "Specify one rollout at a time."_s);
        rollout.directory = path;
        return;
    }
    const std::optional<Kind> implied = kindOfFile(path);
    const std::optional<Kind> kind = implied ? implied : sources.kind;
    if (!kind && path != files::StandardStream)
        files::readAll(path); // a missing file is the first thing to report
    if (!kind)
        throw unknownKind(path, sources.unknownKindAdvice);
    add(rollout, *kind, path);
}

// Adds the setting in a directory, unless a file is specified for it. Returns whether it is there.
bool addFrom(Rollout &rollout, const QDir &directory, Kind kind)
{
    const QString file = QDir::cleanPath(directory.filePath(settingName(kind)));
    const bool isThere = QFileInfo::exists(file);
    if (isThere && !rollout.find(kind))
        add(rollout, kind, file);
    return isThere;
}

void addDirectory(Rollout &rollout)
{
    int found = 0;
    for (const Kind kind : {Kind::Actions, Kind::Keys, Kind::Limit})
        found += addFrom(rollout, rollout.directory, kind) ? 1 : 0;
    if (found == 0)
        throw Failure{
            ExitStatus::Failed,
            format("%1 contains none of the files DefaultActions, DefaultKeys and ProgKeysMax",
                   rollout.directory)};
}

} // namespace

const Setting *Rollout::find(Kind kind) const
{
    const auto found = settings.find(kind);
    return found == settings.end() ? nullptr : &found->second;
}

Rollout readRollout(const RolloutSources &sources)
{
    Rollout rollout;
    for (const auto &[kind, file] : sources.files)
        add(rollout, kind, file);
    for (const QString &path : sources.paths)
        addPath(rollout, path, sources);
    if (!rollout.directory.isEmpty())
        addDirectory(rollout);
    return rollout;
}

void addLimitBesideKeys(Rollout &rollout)
{
    const Setting *keys = rollout.find(Kind::Keys);
    if (keys && keys->file != files::StandardStream)
        addFrom(rollout, QFileInfo(keys->file).dir(), Kind::Limit);
}

} // namespace defaults
