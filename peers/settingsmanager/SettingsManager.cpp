#include "SettingsManager.h"

#include "SettingsManagerAdaptor.h"

SettingsManager::SettingsManager(const QString &directory)
    : ZELModule(QStringLiteral("SettingsManager")), m_directory(directory)
{
}

bool SettingsManager::start()
{
    m_adaptor = new SettingsManagerAdaptor(*this, m_directory);
    return true;
}
