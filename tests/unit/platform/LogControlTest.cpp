#include "LogControl.h"

#include "support/BusClient.h"
#include "support/LogCapture.h"
#include "support/TestMain.h"

#include <zelcore/ZELLogger.h>

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>

namespace {

const QString Properties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString Introspectable = QStringLiteral("org.freedesktop.DBus.Introspectable");
const QString LogControl1 = QStringLiteral("org.freedesktop.LogControl1");
const QString Level = QStringLiteral("LogLevel");
const QString Target = QStringLiteral("LogTarget");

QVariant variant(const QVariant &value)
{
    return QVariant::fromValue(QDBusVariant(value));
}

QString error(const char *name)
{
    return QStringLiteral("org.freedesktop.DBus.Error.") + QLatin1String(name);
}

} // namespace

/// The log's level, asked for and set over the bus.
class LogControlTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void aPropertyIsRead_data();
    void aPropertyIsRead();
    void allPropertiesAreReadAtOnce_data();
    void allPropertiesAreReadAtOnce();
    void aStandardInterfaceHasNoProperties();
    void aLevelIsSetAndTold_data();
    void aLevelIsSetAndTold();
    void theTargetMayBeSetToWhatItIs();
    void whatCannotBeAnsweredIsRefused_data();
    void whatCannotBeAnsweredIsRefused();
    void aRefusedLevelNamesThoseThereAre();
    void aCallerThatWantsNoReplyIsObeyed();
    void theInterfaceIsTold_data();
    void theInterfaceIsTold();

private:
    QDBusMessage call(const QString &interface, const QString &method,
                      const QVariantList &arguments) const;

    unit::BusClient m_client;
    zel::LogControl m_control;
};

void LogControlTest::initTestCase()
{
    QCoreApplication::setApplicationName(QStringLiteral("Some module"));
    QVERIFY(
        QDBusConnection::systemBus().registerVirtualObject(zel::LogControl::path(), &m_control));
}

// Not blocking: the object answers on this very thread.
QDBusMessage LogControlTest::call(const QString &interface, const QString &method,
                                  const QVariantList &arguments) const
{
    QDBusMessage call = QDBusMessage::createMethodCall(QDBusConnection::systemBus().baseService(),
                                                       zel::LogControl::path(), interface, method);
    call.setArguments(arguments);
    const QDBusPendingCall reply = m_client.connection().asyncCall(call);
    return QTest::qWaitFor([&reply] { return reply.isFinished(); }, 20000) ? reply.reply()
                                                                           : QDBusMessage();
}

void LogControlTest::aPropertyIsRead_data()
{
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("value");
    for (const QString &interface : {LogControl1, QString()}) {
        const QByteArray where = interface.isEmpty() ? " of any interface" : "";
        QTest::newRow("the level" + where) << interface << Level << QStringLiteral("notice");
        QTest::newRow("the target" + where) << interface << Target << QStringLiteral("console");
        QTest::newRow("the name" + where)
            << interface << QStringLiteral("SyslogIdentifier") << QStringLiteral("Some module");
    }
}

void LogControlTest::aPropertyIsRead()
{
    QFETCH(QString, interface);
    QFETCH(QString, property);
    QFETCH(QString, value);
    const unit::LogCapture log(5);
    const QDBusMessage reply = call(Properties, QStringLiteral("Get"), {interface, property});
    QCOMPARE(reply.signature(), QStringLiteral("v"));
    QCOMPARE(reply.arguments().first().value<QDBusVariant>().variant(), QVariant(value));
}

void LogControlTest::allPropertiesAreReadAtOnce_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("interface");
    QTest::newRow("of the interface") << Properties << LogControl1;
    QTest::newRow("of any interface") << Properties << QString();
    QTest::newRow("by a call without an interface") << QString() << LogControl1;
}

void LogControlTest::allPropertiesAreReadAtOnce()
{
    QFETCH(QString, method);
    QFETCH(QString, interface);
    const unit::LogCapture log(3);
    const QDBusMessage reply = call(method, QStringLiteral("GetAll"), {interface});
    QCOMPARE(reply.signature(), QStringLiteral("a{sv}"));
    const QVariantMap expected{{Level, QStringLiteral("err")},
                               {Target, QStringLiteral("console")},
                               {QStringLiteral("SyslogIdentifier"), QStringLiteral("Some module")}};
    QCOMPARE(qdbus_cast<QVariantMap>(reply.arguments().first()), expected);
}

void LogControlTest::aStandardInterfaceHasNoProperties()
{
    const QDBusMessage reply = call(Properties, QStringLiteral("GetAll"), {Introspectable});
    QCOMPARE(reply.signature(), QStringLiteral("a{sv}"));
    QCOMPARE(qdbus_cast<QVariantMap>(reply.arguments().first()), QVariantMap());
}

void LogControlTest::aLevelIsSetAndTold_data()
{
    QTest::addColumn<int>("former");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("level");
    QTest::addColumn<QStringList>("lines");
    const auto told = [](const char *former, const char *name) {
        return QStringList{QStringLiteral("info: The log level changes from %1 to %2")
                               .arg(QLatin1String(former), QLatin1String(name))};
    };
    QTest::newRow("more is written") << 6 << QStringLiteral("debug") << 7 << told("info", "debug");
    QTest::newRow("less is written") << 6 << QStringLiteral("err") << 3 << told("info", "err");
    QTest::newRow("nothing is written")
        << 7 << QStringLiteral("emerg") << 0 << told("debug", "emerg");
    QTest::newRow("it comes to be written")
        << 0 << QStringLiteral("info") << 6 << told("emerg", "info");
    QTest::newRow("neither level writes it")
        << 3 << QStringLiteral("warning") << 4 << QStringList();
    QTest::newRow("the level that it is") << 7 << QStringLiteral("debug") << 7 << QStringList();
}

void LogControlTest::aLevelIsSetAndTold()
{
    QFETCH(int, former);
    QFETCH(QString, name);
    QFETCH(int, level);
    QFETCH(QStringList, lines);
    unit::LogCapture log(former);
    const QDBusMessage reply =
        call(Properties, QStringLiteral("Set"), {LogControl1, Level, variant(name)});
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    QCOMPARE(reply.arguments(), QVariantList());
    QCOMPARE(ZELLogger::getConfiguredLevel(), level);
    QCOMPARE(log.take(), lines);
}

void LogControlTest::theTargetMayBeSetToWhatItIs()
{
    QCOMPARE(call(Properties, QStringLiteral("Set"),
                  {LogControl1, Target, variant(QStringLiteral("console"))})
                 .type(),
             QDBusMessage::ReplyMessage);
}

void LogControlTest::whatCannotBeAnsweredIsRefused_data()
{
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");
    QTest::addColumn<QString>("refusal");
    const auto row = [](const char *name, const QString &interface, const char *method,
                        const QVariantList &arguments, const char *refusal) {
        QTest::newRow(name) << interface << QString::fromLatin1(method) << arguments
                            << error(refusal);
    };
    const QVariant debug = variant(QStringLiteral("debug"));
    const QString other = QStringLiteral("com.example.Other");
    const QString odd = QStringLiteral("LogColour");

    row("an unknown level", Properties, "Set",
        {LogControl1, Level, variant(QStringLiteral("loud"))}, "InvalidArgs");
    row("a level by its number", Properties, "Set",
        {LogControl1, Level, variant(QStringLiteral("7"))}, "InvalidArgs");
    row("a level that is a number", Properties, "Set", {LogControl1, Level, variant(7)},
        "InvalidArgs");
    row("a level that is a list", Properties, "Set",
        {LogControl1, Level, variant(QStringList{QStringLiteral("debug")})}, "InvalidArgs");
    row("a level in a second variant", Properties, "Set", {LogControl1, Level, variant(debug)},
        "InvalidArgs");
    row("a level without its variant", Properties, "Set",
        {LogControl1, Level, QStringLiteral("debug")}, "InvalidArgs");
    row("another target", Properties, "Set", {LogControl1, Target, variant(QStringLiteral("kmsg"))},
        "NotSupported");
    row("a target that is a number", Properties, "Set", {LogControl1, Target, variant(1)},
        "InvalidArgs");
    row("a name", Properties, "Set", {LogControl1, QStringLiteral("SyslogIdentifier"), debug},
        "PropertyReadOnly");
    row("setting an unknown property", Properties, "Set", {LogControl1, odd, debug},
        "UnknownProperty");
    row("setting a property of an unknown interface", Properties, "Set", {other, Level, debug},
        "UnknownInterface");
    row("reading an unknown property", Properties, "Get", {LogControl1, odd}, "UnknownProperty");
    row("reading a property of an interface without any", Properties, "Get",
        {Introspectable, Level}, "UnknownProperty");
    row("reading a property of an unknown interface", Properties, "Get", {other, Level},
        "UnknownInterface");
    row("reading a property without saying which", Properties, "Get", {LogControl1}, "InvalidArgs");
    row("reading two properties", Properties, "Get", {LogControl1, Level, Target}, "InvalidArgs");
    row("reading all of an unknown interface", Properties, "GetAll", {other}, "UnknownInterface");
    row("reading all of a number", Properties, "GetAll", {1}, "InvalidArgs");
    row("introspection with an argument", Introspectable, "Introspect", {odd}, "InvalidArgs");
    row("an unknown method of the properties", Properties, "Unset", {}, "UnknownMethod");
    row("an unknown method of the introspection", Introspectable, "Extrospect", {},
        "UnknownMethod");
    row("an unknown method of the peer", QStringLiteral("org.freedesktop.DBus.Peer"), "Pong", {},
        "UnknownMethod");
    row("a method of the interface, which has none", LogControl1, "Get", {LogControl1, Level},
        "UnknownMethod");
    row("a method of an unknown interface", other, "Get", {LogControl1, Level}, "UnknownInterface");
    row("an unknown method without an interface", QString(), "Unset", {}, "UnknownMethod");
}

void LogControlTest::whatCannotBeAnsweredIsRefused()
{
    QFETCH(QString, interface);
    QFETCH(QString, method);
    QFETCH(QVariantList, arguments);
    QFETCH(QString, refusal);
    unit::LogCapture log(6);
    const QDBusMessage reply = call(interface, method, arguments);
    QCOMPARE(reply.type(), QDBusMessage::ErrorMessage);
    QCOMPARE(reply.errorName(), refusal);
    QVERIFY(!reply.errorMessage().isEmpty());
    QCOMPARE(ZELLogger::getConfiguredLevel(), 6);
    QCOMPARE(log.take(), QStringList());
}

void LogControlTest::aRefusedLevelNamesThoseThereAre()
{
    const QDBusMessage reply = call(Properties, QStringLiteral("Set"),
                                    {LogControl1, Level, variant(QStringLiteral("loud"))});
    QCOMPARE(reply.errorMessage(),
             QStringLiteral("There is no log level \"loud\"; there are emerg, alert, crit, err, "
                            "warning, notice, info, debug"));
}

void LogControlTest::aCallerThatWantsNoReplyIsObeyed()
{
    const unit::LogCapture log(6);
    QDBusMessage call =
        QDBusMessage::createMethodCall(QDBusConnection::systemBus().baseService(),
                                       zel::LogControl::path(), Properties, QStringLiteral("Set"));
    call.setArguments({LogControl1, Level, variant(QStringLiteral("alert"))});
    QVERIFY(m_client.connection().send(call));
    QTRY_COMPARE_WITH_TIMEOUT(ZELLogger::getConfiguredLevel(), 1, 20000);
}

void LogControlTest::theInterfaceIsTold_data()
{
    QTest::addColumn<QString>("interface");
    QTest::newRow("by the interface") << Introspectable;
    QTest::newRow("by a call without an interface") << QString();
}

void LogControlTest::theInterfaceIsTold()
{
    QFETCH(QString, interface);
    const QDBusMessage reply = call(interface, QStringLiteral("Introspect"), {});
    QCOMPARE(reply.signature(), QStringLiteral("s"));
    const QString text = reply.arguments().first().toString();
    for (const QString &name : {LogControl1, Properties, Introspectable})
        QCOMPARE(text.count(QStringLiteral("<interface name=\"%1\">").arg(name)), 1);
    QCOMPARE(text.count(QStringLiteral("access=\"readwrite\"")), 2);
    QCOMPARE(text.count(QStringLiteral("access=\"read\"")), 1);
}

PROGKEYS_TEST_MAIN(LogControlTest)
#include "LogControlTest.moc"
