#include <zelcore/ZELModule.h>

#include "support/EventRecorder.h"
#include "support/TestMain.h"

#include <QDBusArgument>
#include <QDBusVariant>

/// Something that no bus has a type for.
struct Unsendable
{
    int value = 0;
};
Q_DECLARE_METATYPE(Unsendable)

/// Values within the values of an event. One that the bus does not know must not harm the sender.
class NestedValuesTest : public QObject
{
    Q_OBJECT

private slots:
    void aValueThatTheBusKnowsIsSent_data();
    void aValueThatTheBusKnowsIsSent();
    void aValueThatTheBusDoesNotKnowIsRefused_data();
    void aValueThatTheBusDoesNotKnowIsRefused();

private:
    bool send(const QVariant &value);

    ZELModule m_module{QStringLiteral("Some")};
};

bool NestedValuesTest::send(const QVariant &value)
{
    ZELEvent event;
    event.setEvtName(QStringLiteral("SOME_NTF"));
    event.addArgument(value, QStringLiteral("what"), true);
    return m_module.notifyEvent(event);
}

void NestedValuesTest::aValueThatTheBusKnowsIsSent_data()
{
    QTest::addColumn<QVariant>("value");
    const QVariant known = QVariant::fromValue(Capability());
    QTest::newRow("in a list") << QVariant(QVariantList{1, known});
    QTest::newRow("in a map") << QVariant(QVariantMap{{QStringLiteral("k"), known}});
    QTest::newRow("in a variant") << QVariant::fromValue(QDBusVariant(known));
    QTest::newRow("in a list in a list") << QVariant(QVariantList{QVariantList{known}});
}

void NestedValuesTest::aValueThatTheBusKnowsIsSent()
{
    QFETCH(QVariant, value);
    unit::EventRecorder recorder;
    QVERIFY(send(value));
    QCOMPARE(recorder.takeNames(), QStringList{QStringLiteral("SOME_NTF")});
}

void NestedValuesTest::aValueThatTheBusDoesNotKnowIsRefused_data()
{
    QTest::addColumn<QVariant>("value");
    const QVariant unknown = QVariant::fromValue(Unsendable());
    QTest::newRow("in a list") << QVariant(QVariantList{1, unknown});
    QTest::newRow("in a map") << QVariant(QVariantMap{{QStringLiteral("k"), unknown}});
    QTest::newRow("in a variant") << QVariant::fromValue(QDBusVariant(unknown));
    QTest::newRow("in a list in a list") << QVariant(QVariantList{QVariantList{unknown}});
    QTest::newRow("nothing in a list") << QVariant(QVariantList{QVariant()});
}

void NestedValuesTest::aValueThatTheBusDoesNotKnowIsRefused()
{
    QFETCH(QVariant, value);
    unit::EventRecorder recorder;
    QVERIFY(!send(value));
    QCOMPARE(recorder.takeNames(), QStringList());
}

PROGKEYS_TEST_MAIN(NestedValuesTest)
#include "NestedValuesTest.moc"
