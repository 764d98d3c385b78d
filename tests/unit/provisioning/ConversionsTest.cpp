#include "provisioning/ProvisionedRecords.h"
#include "support/Samples.h"
#include "support/TestMain.h"

using provisioning::parseText;
using provisioning::toAction;
using provisioning::toKey;

namespace {

provisioning::Record recordOf(const QString &text)
{
    return parseText(text).first();
}

} // namespace

/// What the fields of an accepted record become.
class ConversionsTest : public QObject
{
    Q_OBJECT

private slots:
    void eachFieldOfAnActionHasItsPlace();
    void eachFieldOfAKeyHasItsPlace();
    void sevenEmptyFieldsAreARecordOfEmptyTextsAndZeros();
    void aNumberIsDecimalAndWhatIsNoneIsZero_data();
    void aNumberIsDecimalAndWhatIsNoneIsZero();
    void aTextIsKeptAsItIs_data();
    void aTextIsKeptAsItIs();
};

void ConversionsTest::eachFieldOfAnActionHasItsPlace()
{
    const Action action =
        toAction(recordOf(QStringLiteral("D\\,1,3,call,web\\#app,501,Recep,Rec")));
    Action expected;
    expected.idAction = -1;
    expected.dmId = QStringLiteral("D,1");
    expected.type = 3;
    expected.action = QStringLiteral("call");
    expected.webAppName = QStringLiteral("web#app");
    expected.arguments = QStringLiteral("501");
    expected.label = QStringLiteral("Recep");
    expected.shortLabel = QStringLiteral("Rec");
    QCOMPARE(action, expected);
}

void ConversionsTest::eachFieldOfAKeyHasItsPlace()
{
    const Key key = toKey(recordOf(QStringLiteral("D\\,1,ma\\#in,2,ic\\,on,3,4,5")));
    Key expected;
    expected.idKey = -1;
    expected.idAction = -1;
    expected.dmId = QStringLiteral("D,1");
    expected.container = QStringLiteral("ma#in");
    expected.position = 2;
    expected.icon = QStringLiteral("ic,on");
    expected.type = 3;
    expected.aom_type = 4;
    expected.aom_addr = 5;
    QCOMPARE(key, expected);
}

void ConversionsTest::sevenEmptyFieldsAreARecordOfEmptyTextsAndZeros()
{
    const auto record = recordOf(QStringLiteral(",,,,,,"));
    QCOMPARE(toAction(record), Action());
    Key key;
    key.position = key.type = key.aom_type = key.aom_addr = 0;
    QCOMPARE(toKey(record), key);
}

void ConversionsTest::aNumberIsDecimalAndWhatIsNoneIsZero_data()
{
    QTest::addColumn<QString>("written");
    QTest::addColumn<int>("number");
    const auto row = [](const char *name, const char *written, int number) {
        QTest::newRow(name) << QString::fromUtf8(written) << number;
    };
    row("a number", "42", 42);
    row("zero", "0", 0);
    row("a negative number", "-5", -5);
    row("a number with a plus sign", "+5", 5);
    row("a number with zeros in front is not octal", "010", 10);
    row("blanks around a number do not matter", " \t7 ", 7);
    row("the greatest number", "2147483647", 2147483647);
    row("the least number", "-2147483648", -2147483647 - 1);
    row("one more than the greatest is none", "2147483648", 0);
    row("one less than the least is none", "-2147483649", 0);
    row("far too many digits are none", "123456789012345678901234567890", 0);
    row("nothing is none", "", 0);
    row("blanks are none", "   ", 0);
    row("letters are none", "abc", 0);
    row("digits before letters are none", "12abc", 0);
    row("two numbers are none", "1 2", 0);
    row("a sign alone is none", "-", 0);
    row("two signs are none", "--5", 0);
    row("hexadecimal is none", "0x10", 0);
    row("a fraction is none", "1.5", 0);
    row("an exponent is none", "1e3", 0);
    row("an escaped comma makes it none", "1\\,000", 0);
    row("an escaped hash makes it none", "1\\#", 0);
    row("a placeholder word makes it none", "1escComa000", 0);
    row("a backslash makes it none", "\\1", 0);
}

void ConversionsTest::aNumberIsDecimalAndWhatIsNoneIsZero()
{
    QFETCH(QString, written);
    QFETCH(int, number);
    const auto action = recordOf(QStringLiteral("D,%1,c,w,a,l,s").arg(written));
    QVERIFY(action.isAccepted());
    QCOMPARE(toAction(action).type, number);
    const auto key = recordOf(QStringLiteral("D,c,%1,i,%1,%1,%1").arg(written));
    QVERIFY(key.isAccepted());
    QCOMPARE(toKey(key).position, number);
    QCOMPARE(toKey(key).type, number);
    QCOMPARE(toKey(key).aom_type, number);
    QCOMPARE(toKey(key).aom_addr, number);
}

void ConversionsTest::aTextIsKeptAsItIs_data()
{
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const char *text) {
        QTest::newRow(name) << QString::fromUtf8(text);
    };
    row("blanks around it", "  a  ");
    row("a line end within", "a\nb");
    row("quotes", "it's \"so\"");
    row("marks of a format", "%1 %n %s");
    row("a backslash before a letter", "C:\\new");
    row("other scripts", "Zürich ☎ 電話 🙂");
    row("digits", "007");
}

void ConversionsTest::aTextIsKeptAsItIs()
{
    QFETCH(QString, text);
    const auto record =
        recordOf(QStringList(QList<QString>{text, text, text, text, text, text, text})
                     .join(QLatin1Char(',')));
    const Action action = toAction(record);
    for (const QString &found : {action.dmId, action.action, action.webAppName, action.arguments,
                                 action.label, action.shortLabel})
        QCOMPARE(found, text);
    const Key key = toKey(record);
    for (const QString &found : {key.dmId, key.container, key.icon})
        QCOMPARE(found, text);
}

PROGKEYS_TEST_MAIN(ConversionsTest)
#include "ConversionsTest.moc"
