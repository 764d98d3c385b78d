#include "fields/Fields.h"

#include "outcome/Failure.h"
#include "support/TestProgram.h"

#include <QJsonDocument>

#include <limits>

namespace {

QJsonObject object(const char *json)
{
    return QJsonDocument::fromJson(QByteArray(json)).object();
}

} // namespace

/// Records as JSON objects.
class FieldsTest : public QObject
{
    Q_OBJECT

private slots:
    void aRecordIsReadBackFromItsJson_data();
    void aRecordIsReadBackFromItsJson();
    void omittedFieldsAreUnchanged();
    void invalidJsonIsRejected_data();
    void invalidJsonIsRejected();
};

void FieldsTest::aRecordIsReadBackFromItsJson_data()
{
    QTest::addColumn<qlonglong>("id");
    QTest::addColumn<int>("number");
    QTest::newRow("small numbers") << 7LL << 3;
    QTest::newRow("numbers of 32 bits") << -1LL << std::numeric_limits<int>::min();
    QTest::newRow("2^53") << (1LL << 53) << 0;
    QTest::newRow("2^53 + 1") << (1LL << 53) + 1 << std::numeric_limits<int>::max();
    QTest::newRow("the maximum of 64 bits") << std::numeric_limits<qlonglong>::max() << 0;
    QTest::newRow("the minimum of 64 bits") << std::numeric_limits<qlonglong>::min() << 0;
}

void FieldsTest::aRecordIsReadBackFromItsJson()
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

void FieldsTest::omittedFieldsAreUnchanged()
{
    Action action;
    action.label = QStringLiteral("old");
    action.type = 4;
    fields::setFromJson(action, object(R"({"label": "new"})"), QStringLiteral("action"));
    QCOMPARE(action.label, QStringLiteral("new"));
    QCOMPARE(action.type, 4);
}

void FieldsTest::invalidJsonIsRejected_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("message");
    const auto refuse = [](const char *what, const char *json, const char *message) {
        QTest::newRow(what) << QByteArray(json) << QString::fromLatin1(message);
    };
    refuse("an unknown field", R"({"color": 1})", "key 3: unknown field \"color\"");
    refuse("a text instead of a number", R"({"position": "1"})",
           "key 3: the field position is not a 32-bit integer");
    refuse("a number instead of a text", R"({"icon": 1})",
           "key 3: the field icon is not a text without null characters");
    refuse("a null character", R"({"icon": "a\u0000b"})",
           "key 3: the field icon is not a text without null characters");
    refuse("an unpaired surrogate", R"({"icon": "\ud800"})",
           "key 3: the field icon is not a text without null characters");
    refuse("a fraction", R"({"position": 1.5})",
           "key 3: the field position is not a 32-bit integer");
    refuse("a number of more than 32 bits", R"({"type": 2147483648})",
           "key 3: the field type is not a 32-bit integer");
    refuse("a number of more than 64 bits", R"({"idKey": 1e19})",
           "key 3: the field idKey is not a 64-bit integer");
    refuse("2^63", R"({"idKey": 9223372036854775808})",
           "key 3: the field idKey is not a 64-bit integer");
    refuse("a text that is not a number", R"({"idKey": "seven"})",
           "key 3: the field idKey is not a 64-bit integer");
    refuse("null", R"({"idKey": null})", "key 3: the field idKey is not a 64-bit integer");
}

void FieldsTest::invalidJsonIsRejected()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, message);
    Key key;
    try {
        fields::setFromJson(key, object(json.constData()), QStringLiteral("key 3"));
        QFAIL("The object was accepted.");
    } catch (const Failure &failure) {
        QCOMPARE(failure.status, ExitStatus::InvalidText);
        QCOMPARE(failure.message, message);
    }
    QCOMPARE(key, Key());
}

PROGKEYS_TEST(FieldsTest)
#include "FieldsTest.moc"
