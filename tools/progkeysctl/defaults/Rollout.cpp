#include "defaults/Rollout.h"

#include "defaults/Checks.h"
#include "files/Files.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace defaults {
namespace {

[[noreturn]] void throwUsage(const QString &message, const QString &advice)
{
    throw Failure{ExitStatus::Usage, message, advice};
}

void add(Rollout &rollout, Kind kind, const QString &file)
{
    for (const auto &[otherKind, other] : rollout.settings) {
        if (file == files::StandardStream && other.file == files::StandardStream)
            throwUsage(QStringLiteral("Standard input can be read only once"), {});
        if (otherKind == kind)
            throwUsage(
                QStringLiteral("%1 and %2 are both %3").arg(other.file, file, settingName(kind)),
                QStringLiteral("Specify one of them."));
    }
    rollout.settings.emplace(kind, readSetting(file, kind, files::readAll(file)));
}

void addPath(Rollout &rollout, const QString &path, const RolloutSources &sources)
{
    const std::optional<Kind> implied = kindOfFile(path);
    const std::optional<Kind> kind = implied ? implied : sources.kind;
    if (!QFileInfo(path).isDir() && !kind)
        throw unknownKind(path, sources.unknownKindAdvice);
    if (!QFileInfo(path).isDir())
        add(rollout, *kind, path);
    else if (rollout.directory.isEmpty())
        rollout.directory = path;
    else
        throwUsage(QStringLiteral("%1 and %2 are both directories").arg(rollout.directory, path),
                   QStringLiteral("Specify one rollout at a time."));
}

// Adds the setting in a directory, if there is one, unless a file is specified for it.
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
            QStringLiteral("%1 contains none of the files DefaultActions, DefaultKeys and "
                           "ProgKeysMax")
                .arg(rollout.directory),
            {}};
}

void checkKeys(Rollout &rollout, std::optional<int> limit)
{
    const auto keys = rollout.settings.find(Kind::Keys);
    if (keys == rollout.settings.end() || !keys->second.isReadable)
        return;
    checkPlaces(keys->second);
    const Setting *actions = rollout.find(Kind::Actions);
    if (actions && actions->isReadable)
        checkActionsOf(keys->second, *actions);
    const Setting *file = rollout.find(Kind::Limit);
    if (limit || file)
        checkLimit(keys->second, std::max(0, limit ? *limit : file->text.toInt()));
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

QList<Setting> checkRollout(Rollout rollout, std::optional<int> limit)
{
    const Setting *keys = rollout.find(Kind::Keys);
    if (!limit && keys && keys->file != files::StandardStream)
        addFrom(rollout, QFileInfo(keys->file).dir(), Kind::Limit);
    for (auto &[kind, setting] : rollout.settings) {
        if (setting.isReadable && kind == Kind::Limit)
            checkLimitText(setting);
        else if (setting.isReadable)
            checkRecords(setting);
        if (setting.isReadable && kind == Kind::Actions)
            checkIdentifiers(setting);
    }
    checkKeys(rollout, limit);
    QList<Setting> settings;
    for (auto &[kind, setting] : rollout.settings) {
        std::stable_sort(setting.problems.begin(), setting.problems.end(),
                         [](const Problem &left, const Problem &right) {
                             return std::make_pair(left.record, left.place.start) <
                                    std::make_pair(right.record, right.place.start);
                         });
        settings.append(setting);
    }
    return settings;
}

} // namespace defaults
