// A press, answered with Qt's bus and SQL libraries and nothing else: what the service could come
// down to, if nothing of its own and of the platform stood between the two.

#include "PressedKeys.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QSqlDatabase>

int main(int argc, char **argv)
{
    // As the platform has it.
    qputenv("QT_NO_GLIB", "1");
    const QCoreApplication application(argc, argv);
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
    database.setDatabaseName(
        qEnvironmentVariable("ZEL_DATA_ROOT", QStringLiteral("/data/ZELApplication")) +
        QStringLiteral("/ZelProgrammableKeys/zelprogrammablekeys.data"));
    if (!database.open() || !QSqlQuery().exec(QStringLiteral("PRAGMA journal_mode=WAL")))
        qFatal("The database cannot be opened");

    registerDBusKey();
    registerDBusAction();
    registerAnswer();
    PressedKeys keys;
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.connect(QString(), QString(), QStringLiteral("com.velmora.Tessaro.ZELEvents"),
                     QStringLiteral("event"), {QStringLiteral("AOM_KEY_PRESS_EVENT")}, QString(),
                     &keys, SLOT(answer(QDBusMessage))) ||
        !bus.registerService(QStringLiteral("com.velmora.Tessaro.ZelProgrammableKeys")))
        qFatal("The bus refuses the subscription or the name");
    return QCoreApplication::exec();
}
