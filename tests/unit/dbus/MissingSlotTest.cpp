#include "dbus/Calls.h"
#include "support/TestMain.h"

#include <zelcore/ZELException.h>
#include <zelcore/ZELModule.h>

#include <QRegularExpression>

#include <memory>

namespace {

/// A parent that has a slot of the name, but for another type.
class OtherTypes : public ZELModule
{
    Q_OBJECT

public:
    OtherTypes() : ZELModule(QStringLiteral("OtherTypes")) {}

public slots:
    ListAction getAction(const QString & /*id*/) { return {}; }
};

void addRows(const std::vector<Call> &calls)
{
    for (size_t index = 0; index < calls.size(); ++index)
        QTest::newRow(calls.at(index).description)
            << QString::fromLatin1(calls.at(index).method) << index;
}

/// Makes the call and returns what it threw; null if it returned.
std::unique_ptr<ZELException> thrownBy(const Call &call, QObject &parent)
{
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("^QMetaObject::invokeMethod: No such")));
    QTest::ignoreMessage(
        QtCriticalMsg,
        qUtf8Printable(
            QStringLiteral("Adaptor::invokeMethod failed: %1").arg(QLatin1String(call.method))));
    ZelProgrammableKeysAdaptor adaptor(&parent);
    try {
        call.make(adaptor);
    } catch (ZELException *exception) {
        return std::unique_ptr<ZELException>(exception);
    }
    return nullptr;
}

} // namespace

/// A parent that cannot answer.
class MissingSlotTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void aMissingSlotIsToldAndThrown_data();
    void aMissingSlotIsToldAndThrown();
    void aMissingCapabilityAccessorIsToldAndThrown_data();
    void aMissingCapabilityAccessorIsToldAndThrown();
    void aSlotForAnotherTypeIsMissing();
    void theFailureIsNotRemembered();
};

void MissingSlotTest::initTestCase()
{
    registerDBusKey();
    registerDBusAction();
}

void MissingSlotTest::aMissingSlotIsToldAndThrown_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<size_t>("index");
    addRows(operationCalls());
}

void MissingSlotTest::aMissingSlotIsToldAndThrown()
{
    QFETCH(QString, method);
    QFETCH(size_t, index);
    ZELModule module(QStringLiteral("Plain"));
    const auto exception = thrownBy(operationCalls().at(index), module);
    QVERIFY(exception);
    QCOMPARE(exception->getErrorType(), 4);
    QCOMPARE(exception->getModule(), &module);
    QCOMPARE(exception->getMessage(), QStringLiteral("Adaptor::invokeMethod failed: ") + method);
}

void MissingSlotTest::aMissingCapabilityAccessorIsToldAndThrown_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<size_t>("index");
    addRows(capabilityCalls());
}

void MissingSlotTest::aMissingCapabilityAccessorIsToldAndThrown()
{
    QFETCH(QString, method);
    QFETCH(size_t, index);
    QObject noModule;
    const auto exception = thrownBy(capabilityCalls().at(index), noModule);
    QVERIFY(exception);
    QCOMPARE(exception->getErrorType(), 4);
    QVERIFY(!exception->getModule());
    QCOMPARE(exception->getMessage(), QStringLiteral("Adaptor::invokeMethod failed: ") + method);
}

void MissingSlotTest::aSlotForAnotherTypeIsMissing()
{
    OtherTypes module;
    const Call call{"", "getAction", [](ZelProgrammableKeysAdaptor &a) { a.getAction(1); }};
    const auto exception = thrownBy(call, module);
    QVERIFY(exception);
    QCOMPARE(exception->getMessage(), QStringLiteral("Adaptor::invokeMethod failed: getAction"));
}

void MissingSlotTest::theFailureIsNotRemembered()
{
    ZELModule module(QStringLiteral("Plain"));
    QVERIFY(thrownBy(operationCalls().front(), module));
    ZelProgrammableKeysAdaptor adaptor(&module);
    QCOMPARE(adaptor.getCapabilities().size(), 0);
}

PROGKEYS_TEST_MAIN(MissingSlotTest)
#include "MissingSlotTest.moc"
