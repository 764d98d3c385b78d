#include "defaults/Rollout.h"

#include "files/Files.h"
#include "text/Format.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace defaults {
namespace {

[[noreturn]] void throwUsage(const QString &message, const QString &advice = {})
{
    throw Failure{ExitStatus::Usage, message, advice};
}

Kind kindOf(const QString &file, std::optional<Kind> kind, const QString &advice)
{
    const std::optional<Kind> implied = kindOfFile(file);
    if (implied || kind)
        return implied ? *implied : *kind;
    if (file != files::StandardStream)
        files::readAll(file); // a missing file is the first thing to report
    throw unknownKind(file, advice);
}

} // namespace

const Setting *Rollout::find(Kind kind) const
{
    const auto found = settings.find(kind);
    return found == settings.end() ? nullptr : &found->second;
}

std::optional<int> Rollout::limit() const
{
    const Setting *setting = find(Kind::Limit);
    if (givenLimit || !setting)
        return givenLimit;
    return std::max(0, setting->text.toInt());
}

void Rollout::add(Kind kind, const QString &file)
{
    for (const auto &[otherKind, other] : settings) {
        if (file == files::StandardStream && other.file == files::StandardStream)
            throwUsage("Standard input can be read only once"_s);
        if (otherKind == kind)
            throwUsage(format("%1 and %2 are both %3", other.file, file, settingName(kind)),
                       "Specify one of them."_s);
    }
    settings.emplace(kind, readSetting(file, kind, files::readAll(file)));
}

bool Rollout::addFrom(const QString &folder, Kind kind)
{
    const QString file = QDir::cleanPath(QDir(folder).filePath(settingName(kind)));
    const bool isThere = QFileInfo::exists(file);
    if (isThere && !find(kind))
        add(kind, file);
    return isThere;
}

void Rollout::addPaths(const QStringList &paths, std::optional<Kind> kind, const QString &advice)
{
    for (const QString &path : paths) {
        if (!QFileInfo(path).isDir()) {
            add(kindOf(path, kind, advice), path);
        } else if (directory.isEmpty()) {
            directory = path;
        } else {
            throwUsage(format("%1 and %2 are both directories", directory, path),
                       "Specify one rollout at a time."_s);
        }
    }
    if (directory.isEmpty())
        return;
    bool hasAny = false;
    for (const Kind each : {Kind::Actions, Kind::Keys, Kind::Limit})
        hasAny = addFrom(directory, each) || hasAny;
    if (!hasAny)
        throw Failure{
            ExitStatus::Failed,
            format("%1 contains none of the files DefaultActions, DefaultKeys and ProgKeysMax",
                   directory)};
}

} // namespace defaults
