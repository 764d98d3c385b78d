#include "planning/PlanFiles.h"

#include "defaults/Setting.h"
#include "files/Files.h"
#include "outcome/Failure.h"

#include <QDir>
#include <QFileInfo>
#include <QMap>

namespace defaults {
namespace {

using FilesBySetting = QMap<QString, QString>;

QString settingNamed(const QString &file)
{
    if (QFileInfo(file).fileName() == LimitSetting)
        return LimitSetting;
    const std::optional<Kind> kind = kindOfFile(file);
    if (!kind)
        throw unknownKind(file, QStringLiteral("Say so with --actions FILE or --keys FILE."));
    return *kind == Kind::Actions ? ActionsSetting : KeysSetting;
}

void give(FilesBySetting &files, const QString &setting, const QString &file)
{
    if (files.contains(setting))
        throw Failure{ExitStatus::Usage,
                      QStringLiteral("Both %1 and %2 are to be the setting %3")
                          .arg(files.value(setting), file, setting),
                      QStringLiteral("Give one of them.")};
    files.insert(setting, file);
}

FilesBySetting givenFiles(const PlanSources &sources)
{
    FilesBySetting files;
    if (sources.actions)
        give(files, ActionsSetting, *sources.actions);
    if (sources.keys)
        give(files, KeysSetting, *sources.keys);
    if (sources.actions == files::StandardStream && sources.keys == files::StandardStream)
        throw Failure{ExitStatus::Usage,
                      QStringLiteral("Actions and keys cannot both come from stdin"),
                      QStringLiteral("Name a file for one of them.")};
    for (const QString &file : sources.files)
        give(files, settingNamed(file), file);
    return files;
}

QString textOf(const QString &file)
{
    const Setting setting = readSetting(file, std::nullopt, files::readAll(file));
    if (!setting.findings.isEmpty())
        throw Failure{ExitStatus::InvalidText,
                      QStringLiteral("%1 cannot be delivered to a phone: %2")
                          .arg(file, setting.findings.first().message),
                      QStringLiteral("\"progkeysctl defaults check\" tells where.")};
    return setting.text;
}

class Reader
{
public:
    Reader(const PlanSources &sources, const PhoneSetting &phone)
        : m_directory(sources.directory), m_phone(phone)
    {
        const FilesBySetting files = givenFiles(sources);
        for (auto file = files.cbegin(); file != files.cend(); ++file)
            m_texts.insert(file.key(), textOf(file.value()));
    }

    std::optional<QString> read(const QString &setting)
    {
        if (m_texts.contains(setting))
            return m_texts.value(setting);
        std::optional<QString> text = m_directory ? fromDirectory(setting) : m_phone(setting);
        if (!text)
            m_warnings.append(
                unreadable(setting, m_directory.value_or(QStringLiteral("the phone"))));
        return text;
    }

    const QList<PlanWarning> &warnings() const { return m_warnings; }

private:
    std::optional<QString> fromDirectory(const QString &setting) const
    {
        const QString file = QDir(*m_directory).filePath(setting);
        return QFileInfo::exists(file) ? std::optional<QString>(textOf(file)) : std::nullopt;
    }

    QMap<QString, QString> m_texts; ///< of the files, by setting
    std::optional<QString> m_directory;
    const PhoneSetting &m_phone;
    QList<PlanWarning> m_warnings;
};

} // namespace

PlanReading readSettings(const PlanSources &sources, const PhoneSetting &phone)
{
    Reader reader(sources, phone);
    PlanReading reading;
    reading.settings.actions = reader.read(ActionsSetting).value_or(QString());
    reading.settings.keys = reader.read(KeysSetting).value_or(QString());
    reading.settings.limit = sources.limit;
    if (!sources.limit) {
        const std::optional<QString> limit = reader.read(LimitSetting);
        if (limit)
            reading.settings.limit = limit->toInt();
    }
    reading.warnings = reader.warnings();
    return reading;
}

} // namespace defaults
