#include "SettingsManagerAdaptor.h"

#include "SettingsDirectory.h"
#include "SettingsManager.h"

#include <zelcore/ZELLogger.h>

#include <QDBusConnection>
#include <QDBusError>

namespace {

void answerWithError(const QDBusMessage &call, const QString &error, const QString &text)
{
    call.setDelayedReply(true);
    if (!call.isReplyRequired())
        return;
    if (!QDBusConnection::systemBus().send(call.createErrorReply(error, text)))
        logger().error(QStringLiteral("Cannot reply to a call: %1").arg(text));
}

void answerUnknown(const QDBusMessage &call, const QString &name)
{
    answerWithError(call, QStringLiteral("com.velmora.Tessaro.Error.UnknownSetting"),
                    QStringLiteral("There is no setting \"%1\"").arg(name));
}

} // namespace

SettingsManagerAdaptor::SettingsManagerAdaptor(SettingsManager &module,
                                               const SettingsDirectory &directory)
    : QDBusAbstractAdaptor(&module), m_directory(directory)
{
}

QString SettingsManagerAdaptor::getSettingValue(const QString &name, const QDBusMessage &call)
{
    const auto value = m_directory.read(name);
    if (!value)
        answerUnknown(call, name);
    return value.value_or(QString());
}

void SettingsManagerAdaptor::setSettingValue(const QString &name, const QString &value,
                                             const QDBusMessage &call)
{
    if (!SettingsDirectory::isName(name))
        answerUnknown(call, name);
    else if (!m_directory.write(name, value))
        answerWithError(call, QDBusError::errorString(QDBusError::Failed),
                        QStringLiteral("The setting \"%1\" cannot be written").arg(name));
}
