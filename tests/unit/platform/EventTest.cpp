#include <zelcore/ZELEvent.h>

#include "support/EventRecorder.h"
#include "support/TestMain.h"

/// An event by itself.
class EventTest : public QObject
{
    Q_OBJECT

private slots:
    void aNewEventHasNoNameAndNoArguments();
    void theNameIsTheLastOneSet();
    void argumentsKeepTheirOrderTypeAndFlag();
    void anArgumentIsFoundByItsExactName();
    void theFirstOfTwoArgumentsOfANameIsFound();
    void anArgumentThatIsNotThereIsInvalid();
    void aCopyIsIndependent();
    void anEventFitsIntoAVariant();
};

void EventTest::aNewEventHasNoNameAndNoArguments()
{
    const ZELEvent event;
    QCOMPARE(event.getEvtName(), QString());
    QCOMPARE(event.getArguments().size(), 0);
}

void EventTest::theNameIsTheLastOneSet()
{
    ZELEvent event;
    event.setEvtName(QStringLiteral("FIRST"));
    event.setEvtName(QStringLiteral("SECOND"));
    QCOMPARE(event.getEvtName(), QStringLiteral("SECOND"));
}

void EventTest::argumentsKeepTheirOrderTypeAndFlag()
{
    ZELEvent event;
    event.setEvtName(QStringLiteral("E"));
    event.addArgument(qlonglong{7}, QStringLiteral("z"), true);
    event.addArgument(QStringLiteral("t"), QStringLiteral("a"), false);
    event.addArgument(8, QStringLiteral("m"), true);
    QCOMPARE(
        unit::describe(event),
        (QStringList{QStringLiteral("E"), QStringLiteral("z: qlonglong 7"),
                     QStringLiteral("a: QString t without flag"), QStringLiteral("m: int 8")}));
}

void EventTest::anArgumentIsFoundByItsExactName()
{
    ZELEvent event;
    event.addArgument(1, QStringLiteral("addr"), true);
    event.addArgument(2, QStringLiteral("Addr"), true);
    QCOMPARE(event.getArgument(QStringLiteral("Addr")), QVariant(2));
    QCOMPARE(event.getArgument(QStringLiteral("addr")), QVariant(1));
}

void EventTest::theFirstOfTwoArgumentsOfANameIsFound()
{
    ZELEvent event;
    event.addArgument(1, QStringLiteral("a"), true);
    event.addArgument(2, QStringLiteral("a"), true);
    QCOMPARE(event.getArgument(QStringLiteral("a")), QVariant(1));
    QCOMPARE(event.getArguments().size(), 2);
}

void EventTest::anArgumentThatIsNotThereIsInvalid()
{
    ZELEvent event;
    event.addArgument(1, QStringLiteral("a"), true);
    QVERIFY(!event.getArgument(QStringLiteral("b")).isValid());
    QVERIFY(!event.getArgument(QString()).isValid());
}

void EventTest::aCopyIsIndependent()
{
    ZELEvent event;
    event.addArgument(1, QStringLiteral("a"), true);
    ZELEvent copy = event;
    copy.addArgument(2, QStringLiteral("b"), true);
    QCOMPARE(event.getArguments().size(), 1);
    QCOMPARE(copy.getArguments().size(), 2);
}

void EventTest::anEventFitsIntoAVariant()
{
    ZELEvent event;
    event.setEvtName(QStringLiteral("E"));
    QCOMPARE(QVariant::fromValue(event).value<ZELEvent>().getEvtName(), QStringLiteral("E"));
}

PROGKEYS_TEST_MAIN(EventTest)
#include "EventTest.moc"
