#include "provisioning/SettingsReader.h"

#include "logging.h"

#include <zelcore/ZELModule.h>

#include <QDBusReply>
#include <QVariant>

SettingsReader &SettingsReader::instance(ZELModule &module)
{
    // Never deleted, because settings may be read until the end of the process.
    static auto *const reader = new SettingsReader(module);
    return *reader;
}

QString SettingsReader::getSettingValue(const QString &key, bool *ok)
{
    if (ok)
        *ok = false;
    const QDBusReply<QString> reply = m_module.syncRemoteCall(
        QStringLiteral("SettingsManager"), QStringLiteral("getSettingValue"), {QVariant(key)});
    if (!reply.isValid()) {
        logging::error("ERROR: While calling method getSettingValue of module SettingsManager, "
                       "reply is invalid");
        return {};
    }
    if (ok)
        *ok = true;
    return reply.value();
}
