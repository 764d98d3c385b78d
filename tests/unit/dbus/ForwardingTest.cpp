#include "dbus/ZelProgrammableKeysAdaptor.h"
#include "support/Samples.h"
#include "support/TestMain.h"

#include <zelcore/ZELModule.h>

namespace {

/// A module that notes what it was called with and answers what no other method answers.
class NotingModule : public ZELModule
{
    Q_OBJECT

public:
    NotingModule() : ZELModule(QStringLiteral("Noting")) {}

    /// The calls since the last time, each as "name(arguments)".
    QStringList takeNotes() { return std::exchange(m_notes, {}); }

    MapQStringCapability getCapabilities() override
    {
        note("getCapabilities", {});
        return {{QStringLiteral("all"), {QStringLiteral("c"), 1}}};
    }
    MapQStringCapability getCapabilities(int listId) override
    {
        note("getCapabilities", {number(listId)});
        return {{QStringLiteral("list"), {QStringLiteral("c"), 2}}};
    }
    Capability getCapability(const QString &name) override
    {
        note("getCapability", {name});
        return {QStringLiteral("c"), 3};
    }
    Capability getCapability(int listId, const QString &name) override
    {
        note("getCapability", {number(listId), name});
        return {QStringLiteral("c"), 4};
    }

public slots:
    ListKey getAllProgrammableKeys()
    {
        note("getAllProgrammableKeys", {});
        return {unit::sampleKey(), Key()};
    }
    ListKey getProgrammableKeysByContainer(const QString &container)
    {
        note("getProgrammableKeysByContainer", {container});
        return {Key()};
    }
    qlonglong createProgrammableKey(const Key &key)
    {
        note("createProgrammableKey", {describe(key)});
        return qlonglong{1} << 41;
    }
    int modifyProgrammableKey(const Key &key)
    {
        note("modifyProgrammableKey", {describe(key)});
        return 12;
    }
    bool changeProgrammableKeysPosition(const QMapIntInt &listId)
    {
        note("changeProgrammableKeysPosition", {number(listId.firstKey()), number(listId.first())});
        return true;
    }
    int deleteProgrammableKey(qlonglong idKey)
    {
        note("deleteProgrammableKey", {number(idKey)});
        return 13;
    }
    ListKey getProgrammableKey(qlonglong idKey)
    {
        note("getProgrammableKey", {number(idKey)});
        return {unit::sampleKey()};
    }
    ListAction getAllActions()
    {
        note("getAllActions", {});
        return {unit::sampleAction(), Action()};
    }
    qlonglong addAction(const Action &action)
    {
        note("addAction", {describe(action)});
        return qlonglong{1} << 42;
    }
    int modifyAction(const Action &action)
    {
        note("modifyAction", {describe(action)});
        return 14;
    }
    int deleteAction(qlonglong idAction)
    {
        note("deleteAction", {number(idAction)});
        return 15;
    }
    ListAction getAction(qlonglong idAction)
    {
        note("getAction", {number(idAction)});
        return {unit::sampleAction()};
    }
    int setIconStateForKey(qlonglong idKey, int icon_x, int icon_y)
    {
        note("setIconStateForKey", {number(idKey), number(icon_x), number(icon_y)});
        return 16;
    }
    int setLabelStateForKey(qlonglong idKey, int state)
    {
        note("setLabelStateForKey", {number(idKey), number(state)});
        return 17;
    }

private:
    static QString number(qlonglong value) { return QString::number(value); }

    void note(const char *method, const QStringList &arguments)
    {
        m_notes.append(QStringLiteral("%1(%2)").arg(QLatin1String(method),
                                                    arguments.join(QStringLiteral(", "))));
    }

    QStringList m_notes;
};

constexpr qlonglong WideId = (qlonglong{1} << 40) + 7;

} // namespace

/// Each method calls its slot once, with what it was given, and returns what the slot returned.
class ForwardingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void readsOfKeys();
    void changesOfKeys();
    void readsOfActions();
    void changesOfActions();
    void statesOfModuleKeys();
    void capabilities();

private:
    QStringList m_expected;
    NotingModule m_module;
    ZelProgrammableKeysAdaptor m_adaptor{&m_module};
};

void ForwardingTest::initTestCase()
{
    registerDBusKey();
    registerDBusAction();
}

void ForwardingTest::cleanup()
{
    QVERIFY(!m_expected.isEmpty());
    QCOMPARE(m_module.takeNotes(), m_expected);
}

void ForwardingTest::readsOfKeys()
{
    m_expected = QStringList{QStringLiteral("getAllProgrammableKeys()"),
                             QStringLiteral("getProgrammableKeysByContainer(home)"),
                             QStringLiteral("getProgrammableKey(1099511627783)")};
    QCOMPARE(m_adaptor.getAllProgrammableKeys(), (ListKey{unit::sampleKey(), Key()}));
    QCOMPARE(m_adaptor.getProgrammableKeysByContainer(QStringLiteral("home")), ListKey{Key()});
    QCOMPARE(m_adaptor.getProgrammableKey(WideId), ListKey{unit::sampleKey()});
}

void ForwardingTest::changesOfKeys()
{
    const QString key = describe(unit::sampleKey());
    m_expected = QStringList{QStringLiteral("createProgrammableKey(%1)").arg(key),
                             QStringLiteral("modifyProgrammableKey(%1)").arg(key),
                             QStringLiteral("changeProgrammableKeysPosition(3, 4)"),
                             QStringLiteral("deleteProgrammableKey(1099511627783)")};
    QCOMPARE(m_adaptor.createProgrammableKey(unit::sampleKey()), qlonglong{1} << 41);
    QCOMPARE(m_adaptor.modifyProgrammableKey(unit::sampleKey()), 12);
    QVERIFY(m_adaptor.changeProgrammableKeysPosition({{3, 4}}));
    QCOMPARE(m_adaptor.deleteProgrammableKey(WideId), 13);
}

void ForwardingTest::readsOfActions()
{
    m_expected =
        QStringList{QStringLiteral("getAllActions()"), QStringLiteral("getAction(1099511627783)")};
    QCOMPARE(m_adaptor.getAllActions(), (ListAction{unit::sampleAction(), Action()}));
    QCOMPARE(m_adaptor.getAction(WideId), ListAction{unit::sampleAction()});
}

void ForwardingTest::changesOfActions()
{
    const QString action = describe(unit::sampleAction());
    m_expected = QStringList{QStringLiteral("addAction(%1)").arg(action),
                             QStringLiteral("modifyAction(%1)").arg(action),
                             QStringLiteral("deleteAction(1099511627783)")};
    QCOMPARE(m_adaptor.addAction(unit::sampleAction()), qlonglong{1} << 42);
    QCOMPARE(m_adaptor.modifyAction(unit::sampleAction()), 14);
    QCOMPARE(m_adaptor.deleteAction(WideId), 15);
}

void ForwardingTest::statesOfModuleKeys()
{
    m_expected = QStringList{QStringLiteral("setIconStateForKey(1099511627783, 5, -6)"),
                             QStringLiteral("setLabelStateForKey(1099511627783, 8)")};
    QCOMPARE(m_adaptor.setIconStateForKey(WideId, 5, -6), 16);
    QCOMPARE(m_adaptor.setLabelStateForKey(WideId, 8), 17);
}

void ForwardingTest::capabilities()
{
    m_expected =
        QStringList{QStringLiteral("getCapabilities()"), QStringLiteral("getCapabilities(9)"),
                    QStringLiteral("getCapability(n)"), QStringLiteral("getCapability(9, n)")};
    const QString name = QStringLiteral("n");
    QCOMPARE(m_adaptor.getCapabilities().value(QStringLiteral("all")).value, 1);
    QCOMPARE(m_adaptor.getCapabilities(9).value(QStringLiteral("list")).value, 2);
    QCOMPARE(m_adaptor.getCapability(name).value, 3);
    QCOMPARE(m_adaptor.getCapability(9, name).value, 4);
}

PROGKEYS_TEST_MAIN(ForwardingTest)
#include "ForwardingTest.moc"
