// What the service's frame costs by itself: an application object, the bus, an open database, and
// one method that returns at once.

#include "Frame.h"

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
    if (!database.open())
        qFatal("The database cannot be opened");

    QObject object;
    const FrameAdaptor adaptor(&object);
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.registerObject(QStringLiteral("/com/velmora/Tessaro/ZelProgrammableKeys"), &object,
                            QDBusConnection::ExportAdaptors) ||
        !bus.registerService(QStringLiteral("com.velmora.Tessaro.ZelProgrammableKeys")))
        qFatal("The bus refuses the object or its name");
    return QCoreApplication::exec();
}
