#include "provisioning/SettingsReader.h"

#include "logging.h"
#include "module.h"

#include <zelcore/ZELModule.h>

#include <QDBusReply>
#include <QVariant>

SettingsReader &SettingsReader::instance()
{
    static auto *const reader = new SettingsReader;
    return *reader;
}

QString SettingsReader::getSettingValue(const QString &key, bool *ok)
{
    if (ok)
        *ok = false;
    const QDBusReply<QString> reply = theModule().syncRemoteCall(
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
