#include "defaults/Rollout.h"

#include "defaults/RecordChecks.h"
#include "defaults/RolloutChecks.h"
#include "files/Files.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace defaults {
namespace {

class Reader
{
public:
    explicit Reader(const RolloutSources &sources) : m_sources(sources) {}
    Rollout read();

private:
    Kind kindOf(const QString &file) const;
    void setDirectory(const QString &path);
    void add(Kind kind, const QString &file);
    void addFromDirectory();

    const RolloutSources &m_sources;
    Rollout m_rollout;
};

Kind Reader::kindOf(const QString &file) const
{
    const std::optional<Kind> implied = kindOfFile(file);
    if (!implied && !m_sources.kind)
        throw unknownKind(file, m_sources.unknownKindAdvice);
    return implied ? *implied : *m_sources.kind;
}

void Reader::setDirectory(const QString &path)
{
    if (!m_rollout.directory.isEmpty())
        throw Failure{
            ExitStatus::Usage,
            QStringLiteral("%1 and %2 are both directories").arg(m_rollout.directory, path),
            QStringLiteral("Specify one rollout at a time.")};
    m_rollout.directory = path;
}

void Reader::add(Kind kind, const QString &file)
{
    for (const auto &[otherKind, other] : m_rollout.settings) {
        if (file == files::StandardStream && other.file == files::StandardStream)
            throw Failure{
                ExitStatus::Usage, QStringLiteral("Standard input can be read only once"), {}};
        if (otherKind == kind)
            throw Failure{
                ExitStatus::Usage,
                QStringLiteral("%1 and %2 are both %3").arg(other.file, file, settingName(kind)),
                QStringLiteral("Specify one of them.")};
    }
    m_rollout.settings.emplace(kind, readSetting(file, kind, files::readAll(file)));
}

void Reader::addFromDirectory()
{
    bool isEmpty = true;
    for (const Kind kind : {Kind::Actions, Kind::Keys, Kind::Limit}) {
        const QString file = QDir::cleanPath(QDir(m_rollout.directory).filePath(settingName(kind)));
        if (!QFileInfo::exists(file))
            continue;
        isEmpty = false;
        if (!m_rollout.find(kind))
            add(kind, file);
    }
    if (isEmpty)
        throw Failure{
            ExitStatus::Failed,
            QStringLiteral("%1 contains none of the files DefaultActions, DefaultKeys and "
                           "ProgKeysMax")
                .arg(m_rollout.directory),
            {}};
}

Rollout Reader::read()
{
    for (const auto &[kind, file] : m_sources.files)
        add(kind, file);
    for (const QString &path : m_sources.paths) {
        if (QFileInfo(path).isDir())
            setDirectory(path);
        else
            add(kindOf(path), path);
    }
    if (!m_rollout.directory.isEmpty())
        addFromDirectory();
    return m_rollout;
}

// The limit in the directory of the keys applies even if only the keys are checked.
void addLimitBeside(Rollout &rollout)
{
    const Setting *keys = rollout.find(Kind::Keys);
    if (!keys || rollout.find(Kind::Limit) || keys->file == files::StandardStream)
        return;
    const QString file = QFileInfo(keys->file).dir().filePath(settingName(Kind::Limit));
    if (QFileInfo::exists(file))
        rollout.settings.emplace(
            Kind::Limit, readSetting(QDir::cleanPath(file), Kind::Limit, files::readAll(file)));
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
        checkLimit(keys->second, limit ? *limit : file->text.toInt());
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

const Setting *Rollout::find(Kind kind) const
{
    const auto found = settings.find(kind);
    return found == settings.end() ? nullptr : &found->second;
}

Rollout readRollout(const RolloutSources &sources)
{
    return Reader(sources).read();
}

QList<Setting> checkRollout(Rollout rollout, std::optional<int> limit)
{
    if (!limit)
        addLimitBeside(rollout);
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
        sort(setting.findings);
        settings.append(setting);
    }
    return settings;
}

} // namespace defaults
