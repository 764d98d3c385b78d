#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QString>

class SettingsDirectory;
class SettingsManager;

/// The settings on the bus. The reply for an unknown name is the error
/// `com.velmora.Tessaro.Error.UnknownSetting`.
class SettingsManagerAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.velmora.Tessaro.ZELInterface")

public:
    SettingsManagerAdaptor(SettingsManager &module, const SettingsDirectory &directory);

public slots:
    QString getSettingValue(const QString &name, const QDBusMessage &call);
    void setSettingValue(const QString &name, const QString &value, const QDBusMessage &call);

private:
    const SettingsDirectory &m_directory;
};
