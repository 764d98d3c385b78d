#include "fields/Fields.h"

#include "outcome/Failure.h"
#include "support/TestMain.h"

#include <QJsonDocument>

#include <limits>

namespace {

QJsonObject object(const char *json)
{
    return QJsonDocument::fromJson(QByteArray(json)).object();
}

/// The status and the message with which the call fails; Done if it does not.
template <typename Call>
std::pair<ExitStatus, QString> failureOf(Call call)
{
    try {
        call();
    } catch (const Failure &failure) {
        return {failure.status, failure.message};
    }
    return {ExitStatus::Done, {}};
}

} // namespace

/// Records by the names of their fields.
class FieldsTest : public QObject
{
    Q_OBJECT

private slots:
    void aRecordComesBackFromItsJson_data();
    void aRecordComesBackFromItsJson();
    void fieldsThatAreNotNamedStay();
    void wrongJsonIsRefused_data();
    void wrongJsonIsRefused();
    void assignmentsSetFields();
    void wrongAssignmentsAreRefused_data();
    void wrongAssignmentsAreRefused();
};

void FieldsTest::aRecordComesBackFromItsJson_data()
{
    QTest::addColumn<qlonglong>("id");
    QTest::addColumn<int>("number");
    QTest::newRow("small numbers") << 7LL << 3;
    QTest::newRow("numbers of 32 bits") << -1LL << std::numeric_limits<int>::min();
    QTest::newRow("the greatest that every reader keeps") << (1LL << 53) << 0;
    QTest::newRow("one beyond") << (1LL << 53) + 1 << std::numeric_limits<int>::max();
    QTest::newRow("the greatest of 64 bits") << std::numeric_limits<qlonglong>::max() << 0;
    QTest::newRow("the least of 64 bits") << std::numeric_limits<qlonglong>::min() << 0;
}

void FieldsTest::aRecordComesBackFromItsJson()
{
    QFETCH(qlonglong, id);
    QFETCH(int, number);
    Key key;
    key.idKey = id;
    key.idAction = id;
    key.position = number;
    key.container = QStringLiteral("home \"1\"\n");
    const QByteArray text = QJsonDocument(fields::toJson(key)).toJson();
    Key back;
    fields::setFromJson(back, QJsonDocument::fromJson(text).object(), QStringLiteral("key"));
    QCOMPARE(back, key);
}

void FieldsTest::fieldsThatAreNotNamedStay()
{
    Action action;
    action.label = QStringLiteral("old");
    action.type = 4;
    fields::setFromJson(action, object(R"({"label": "new"})"), QStringLiteral("action"));
    QCOMPARE(action.label, QStringLiteral("new"));
    QCOMPARE(action.type, 4);
}

void FieldsTest::wrongJsonIsRefused_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("message");
    const auto refuse = [](const char *what, const char *json, const char *message) {
        QTest::newRow(what) << QByteArray(json) << QString::fromLatin1(message);
    };
    refuse("an unknown field", R"({"colour": 1})", "key 3: unknown field \"colour\"");
    refuse("a text for a number", R"({"position": "1"})",
           "key 3: the field position is not a whole number of 32 bits");
    refuse("a number for a text", R"({"icon": 1})",
           "key 3: the field icon is not a text without null characters");
    refuse("a text that the bus would cut short", R"({"icon": "a\u0000b"})",
           "key 3: the field icon is not a text without null characters");
    refuse("half a character", R"({"icon": "\ud800"})",
           "key 3: the field icon is not a text without null characters");
    refuse("half a number", R"({"position": 1.5})",
           "key 3: the field position is not a whole number of 32 bits");
    refuse("more than 32 bits", R"({"type": 2147483648})",
           "key 3: the field type is not a whole number of 32 bits");
    refuse("more than 64 bits", R"({"idKey": 1e19})",
           "key 3: the field idKey is not a whole number of 64 bits");
    refuse("one more than 64 bits hold", R"({"idKey": 9223372036854775808})",
           "key 3: the field idKey is not a whole number of 64 bits");
    refuse("a text that is no id", R"({"idKey": "seven"})",
           "key 3: the field idKey is not a whole number of 64 bits");
    refuse("nothing", R"({"idKey": null})",
           "key 3: the field idKey is not a whole number of 64 bits");
}

void FieldsTest::wrongJsonIsRefused()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, message);
    Key key;
    const auto [status, said] = failureOf(
        [&] { fields::setFromJson(key, object(json.constData()), QStringLiteral("key 3")); });
    QCOMPARE(status, ExitStatus::InvalidText);
    QCOMPARE(said, message);
    QCOMPARE(key, Key());
}

void FieldsTest::assignmentsSetFields()
{
    Action action;
    fields::assign(action, {QStringLiteral("type=-3"), QStringLiteral("label=a=b "),
                            QStringLiteral("arguments=")});
    Action expected;
    expected.type = -3;
    expected.label = QStringLiteral("a=b ");
    QCOMPARE(action, expected);
}

void FieldsTest::wrongAssignmentsAreRefused_data()
{
    QTest::addColumn<QString>("assignment");
    QTest::addColumn<QString>("message");
    const auto refuse = [](const char *what, const char *assignment, const char *message) {
        QTest::newRow(what) << QString::fromLatin1(assignment) << QString::fromLatin1(message);
    };
    refuse("no sign between", "label", "\"label\" is not of the form FIELD=VALUE");
    refuse("no field", "=x", "\"=x\" is not of the form FIELD=VALUE");
    refuse("an unknown field", "colour=red", "Unknown field \"colour\"");
    refuse("no number", "type=x", "type: \"x\" is not a whole number of 32 bits");
    refuse("no decimal number", "type=0x10", "type: \"0x10\" is not a whole number of 32 bits");
    refuse("an empty number", "idAction=", "idAction: \"\" is not a whole number of 64 bits");
}

void FieldsTest::wrongAssignmentsAreRefused()
{
    QFETCH(QString, assignment);
    QFETCH(QString, message);
    Action action;
    const auto [status, said] = failureOf([&] { fields::assign(action, {assignment}); });
    QCOMPARE(status, ExitStatus::Usage);
    QCOMPARE(said, message);
    QCOMPARE(action, Action());
}

PROGKEYS_TEST_MAIN(FieldsTest)
#include "FieldsTest.moc"
