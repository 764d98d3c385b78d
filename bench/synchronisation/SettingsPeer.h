#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

/// The SettingsManager peer, as a process of its own on the same bus.
class SettingsPeer
{
public:
    /// Starts `program` and waits until it is on the bus; ends this process if it never is.
    explicit SettingsPeer(const QString &program);
    ~SettingsPeer();
    SettingsPeer(const SettingsPeer &) = delete;
    SettingsPeer &operator=(const SettingsPeer &) = delete;

    void set(const QString &name, const QString &value) const;

private:
    QTemporaryDir m_directory;
    QProcess m_process;
};
