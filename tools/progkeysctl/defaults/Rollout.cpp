#include "defaults/Rollout.h"

#include "defaults/RecordChecks.h"
#include "defaults/RolloutChecks.h"
#include "files/Files.h"
#include "outcome/Failure.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace defaults {
namespace {

const QString LimitName = QStringLiteral("ProgKeysMax");

QString directoryOf(const QString &file)
{
    return file == files::StandardStream ? QString() : QFileInfo(file).absolutePath();
}

bool isLimit(const QString &file)
{
    return QFileInfo(file).fileName() == LimitName;
}

Kind kindOf(const QString &file, const CheckRequest &request)
{
    const std::optional<Kind> told = kindOfFile(file);
    if (told)
        return *told;
    if (request.kind)
        return *request.kind;
    throw unknownKind(file, QStringLiteral("Say so with --kind actions or --kind keys."));
}

Setting readFile(const QString &file, const CheckRequest &request)
{
    if (isLimit(file))
        return readSetting(file, std::nullopt, files::readAll(file));
    const Kind kind = kindOf(file, request);
    return readSetting(file, kind, files::readAll(file));
}

// The limit of a directory is part of its rollout even if nobody named it.
void addLimits(QList<Setting> &settings)
{
    QStringList directories;
    for (const Setting &setting : std::as_const(settings)) {
        if (!setting.kind)
            directories.append(directoryOf(setting.file));
    }
    const QList<Setting> given = settings;
    for (const Setting &setting : given) {
        const QString limit = QFileInfo(setting.file).dir().filePath(LimitName);
        if (setting.kind != Kind::Keys || setting.file == files::StandardStream ||
            directories.contains(directoryOf(setting.file)) || !QFileInfo::exists(limit))
            continue;
        directories.append(directoryOf(setting.file));
        settings.append(readSetting(QDir::cleanPath(limit), std::nullopt, files::readAll(limit)));
    }
}

// The settings that go with `file`: those of its directory, or all there are.
template <typename Wanted>
QList<const Setting *> fellows(const QList<Setting> &settings, const QString &file, Wanted isWanted)
{
    QList<const Setting *> near;
    QList<const Setting *> all;
    for (const Setting &setting : settings) {
        if (!isWanted(setting))
            continue;
        all.append(&setting);
        if (directoryOf(setting.file) == directoryOf(file))
            near.append(&setting);
    }
    return near.isEmpty() ? all : near;
}

void checkKeys(Setting &keys, const CheckRequest &request, CheckResult &result)
{
    const auto isOfActions = [](const Setting &setting) { return setting.kind == Kind::Actions; };
    const auto isOfLimit = [](const Setting &setting) { return !setting.kind; };
    checkPlaces(keys);
    const auto actions = fellows(result.settings, keys.file, isOfActions);
    if (actions.isEmpty())
        result.keysAlone.append(keys.file);
    else
        checkActions(keys, actions);
    const auto limits = fellows(result.settings, keys.file, isOfLimit);
    if (request.limit)
        checkLimit(keys, *request.limit);
    else if (!limits.isEmpty())
        checkLimit(keys, limits.first()->text.toInt());
}

void sort(QList<Finding> &findings)
{
    std::stable_sort(findings.begin(), findings.end(),
                     [](const Finding &left, const Finding &right) {
                         return left.record != right.record ? left.record < right.record
                                                            : left.place.start < right.place.start;
                     });
}

} // namespace

CheckResult checkFiles(const CheckRequest &request)
{
    if (request.files.count(files::StandardStream) > 1)
        throw Failure{ExitStatus::Usage, QStringLiteral("Standard input can be read only once"),
                      QStringLiteral("Name the files.")};
    CheckResult result;
    for (const QString &file : request.files)
        result.settings.append(readFile(file, request));
    if (!request.limit)
        addLimits(result.settings);
    for (Setting &setting : result.settings) {
        if (setting.kind)
            checkRecords(setting);
        if (setting.kind == Kind::Actions)
            checkIdentifiers(setting);
        else if (!setting.kind)
            checkLimitText(setting);
    }
    for (Setting &setting : result.settings) {
        if (setting.kind == Kind::Keys)
            checkKeys(setting, request, result);
    }
    for (Setting &setting : result.settings)
        sort(setting.findings);
    return result;
}

} // namespace defaults
