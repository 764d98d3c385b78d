// The frame: an application object, a bus connection, an open database, and a method that does
// nothing. The benchmarks compare the service with it.

#include "Frame.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QSqlDatabase>

int main(int argc, char **argv)
{
    // The platform also sets this.
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
