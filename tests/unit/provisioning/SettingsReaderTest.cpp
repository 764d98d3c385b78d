#include "provisioning/SettingsReader.h"

#include "support/LogCapture.h"
#include "support/PeerModule.h"
#include "support/Service.h"
#include "support/TestMain.h"

#include <zelcore/ZELModule.h>

namespace {

const QString Complaint =
    QStringLiteral("error: ERROR: While calling method getSettingValue of module SettingsManager, "
                   "reply is invalid");

/// What is asked in all these tests.
QString read(bool *ok = nullptr)
{
    return SettingsReader::instance(unit::service())
        .getSettingValue(QStringLiteral("ProgKeysMax"), ok);
}

std::unique_ptr<unit::PeerModule> settingsManager(const unit::PeerModule::Answer &answer)
{
    return std::make_unique<unit::PeerModule>(QStringLiteral("SettingsManager"), answer);
}

} // namespace

class SettingsReaderTest : public QObject
{
    Q_OBJECT

private slots:
    // First, while nothing has needed the module yet.
    void thereIsOneReader();
    void theCallCarriesTheNameAlone();
    void aTextIsReturnedAsItIs_data();
    void aTextIsReturnedAsItIs();
    void nothingIsRemembered();
    void anInvalidReplyGivesAnEmptyTextAndOneLine_data();
    void anInvalidReplyGivesAnEmptyTextAndOneLine();
    void aPeerThatIsNotThereGivesAnEmptyTextAndOneLine();
    void aFailureIsToldOfFromLevelThreeUpward_data();
    void aFailureIsToldOfFromLevelThreeUpward();
};

void SettingsReaderTest::thereIsOneReader()
{
    QCOMPARE(&SettingsReader::instance(unit::service()),
             &SettingsReader::instance(unit::service()));
}

void SettingsReaderTest::theCallCarriesTheNameAlone()
{
    const auto peer = settingsManager(unit::replyWith({QStringLiteral("5")}));
    read();
    const QList<QDBusMessage> calls = peer->takeCalls();
    QCOMPARE(calls.size(), 1);
    QCOMPARE(calls.first().member(), QStringLiteral("getSettingValue"));
    QCOMPARE(calls.first().signature(), QStringLiteral("s"));
    QCOMPARE(calls.first().arguments(), QVariantList{QStringLiteral("ProgKeysMax")});
}

void SettingsReaderTest::aTextIsReturnedAsItIs_data()
{
    QTest::addColumn<QList<QVariant>>("reply");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QString &text) {
        QTest::newRow(name) << QList<QVariant>{text} << text;
    };
    row("a number", QStringLiteral("100"));
    row("an empty setting", QString());
    row("a text of many lines", QStringLiteral(" a\n b\r\n\t"));
    row("a text beyond ASCII", QString::fromUtf8("Grüße 電話"));
    QTest::newRow("a text with something after it")
        << QList<QVariant>{QStringLiteral("7"), 8} << QStringLiteral("7");
}

void SettingsReaderTest::aTextIsReturnedAsItIs()
{
    QFETCH(QList<QVariant>, reply);
    QFETCH(QString, text);
    const auto peer = settingsManager(unit::replyWith(reply));
    unit::LogCapture log(7);
    bool ok = false;
    QCOMPARE(read(&ok), text);
    QVERIFY(ok);
    QCOMPARE(read(), text);
    QCOMPARE(log.take(), QStringList());
}

void SettingsReaderTest::nothingIsRemembered()
{
    auto peer = settingsManager(unit::replyWith({QStringLiteral("1")}));
    QCOMPARE(read(), QStringLiteral("1"));
    peer.reset();
    peer = settingsManager(unit::replyWith({QStringLiteral("2")}));
    QCOMPARE(read(), QStringLiteral("2"));
    QCOMPARE(peer->takeCalls().size(), 1);
}

void SettingsReaderTest::anInvalidReplyGivesAnEmptyTextAndOneLine_data()
{
    QTest::addColumn<QList<QVariant>>("reply");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const QVariant &value) {
        QTest::newRow(name) << QList<QVariant>{value} << QString();
    };
    QTest::newRow("an error") << QList<QVariant>()
                              << QStringLiteral("com.velmora.Tessaro.Error.UnknownSetting");
    QTest::newRow("nothing") << QList<QVariant>() << QString();
    row("a number", 100);
    row("a truth", true);
    row("a list of texts", QStringList{QStringLiteral("100")});
    row("bytes", QByteArray("100"));
    row("a text in a variant", QVariant::fromValue(QDBusVariant(QStringLiteral("100"))));
    row("a structure", QVariant::fromValue(Capability{QStringLiteral("100"), 1}));
    row("a map", QVariant::fromValue(QMapIntInt{{1, 2}}));
}

void SettingsReaderTest::anInvalidReplyGivesAnEmptyTextAndOneLine()
{
    QFETCH(QList<QVariant>, reply);
    QFETCH(QString, error);
    const auto peer =
        settingsManager(error.isEmpty() ? unit::replyWith(reply)
                                        : unit::replyWithError(error, QStringLiteral("text")));
    unit::LogCapture log(3);
    bool ok = true;
    const QString text = read(&ok);
    QVERIFY(text.isNull());
    QVERIFY(!ok);
    QCOMPARE(log.take(), QStringList{Complaint});
    QVERIFY(read().isNull());
    QCOMPARE(log.take(), QStringList{Complaint});
    QCOMPARE(peer->takeCalls().size(), 2);
}

void SettingsReaderTest::aPeerThatIsNotThereGivesAnEmptyTextAndOneLine()
{
    unit::LogCapture log(3);
    bool ok = true;
    QVERIFY(read(&ok).isNull());
    QVERIFY(!ok);
    QCOMPARE(log.take(), QStringList{Complaint});
}

void SettingsReaderTest::aFailureIsToldOfFromLevelThreeUpward_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("lines");
    QTest::newRow("level 2 is too low") << 2 << 0;
    QTest::newRow("level 3 suffices") << 3 << 1;
    QTest::newRow("level 7 does, too") << 7 << 1;
}

void SettingsReaderTest::aFailureIsToldOfFromLevelThreeUpward()
{
    QFETCH(int, level);
    QFETCH(int, lines);
    unit::LogCapture log(level);
    read();
    QCOMPARE(log.take().size(), lines);
}

PROGKEYS_TEST_MAIN(SettingsReaderTest)
#include "SettingsReaderTest.moc"
