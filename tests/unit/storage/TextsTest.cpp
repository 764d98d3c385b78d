#include "storage/OtherProgram.h"
#include "storage/ProgKeysDatabase.h"
#include "support/Samples.h"
#include "support/Service.h"
#include "support/TestMain.h"

namespace {

ProgKeysDatabase &database()
{
    return unit::database();
}

void addTextRows()
{
    QTest::addColumn<QString>("text");
    const QString mark(QChar(0xFEFF));
    const QString word = QStringLiteral("x");
    QTest::newRow("an empty text") << QStringLiteral("");
    QTest::newRow("quotes and statements") << QStringLiteral("'); DROP TABLE KEY; --\"\\");
    QTest::newRow("placeholders") << QStringLiteral("? ?1 :a %1 %%");
    QTest::newRow("blanks around it") << QStringLiteral(" \t x \n ");
    QTest::newRow("beyond the basic plane") << QString::fromUtf8("Grüße 電話 \U0001F4DE");
    QTest::newRow("a number") << QStringLiteral("007");
    QTest::newRow("a mark of byte order alone") << mark;
    QTest::newRow("a mark of byte order at the beginning") << mark + word;
    QTest::newRow("two marks of byte order at the beginning") << mark + mark + word;
    QTest::newRow("a mark of byte order at the end") << word + mark;
    QTest::newRow("a mebibyte") << QString(1 << 20, QLatin1Char('x'));
}

/// As UTF-8, which is what the file holds.
QVariant bytes(const QString &text)
{
    return QString::fromLatin1(text.toUtf8().toHex().toUpper());
}

} // namespace

/// Texts come out of the tables as they went in, and are found by.
class TextsTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { database().resetTables(); }

    void everyTextOfAKeyIsKept_data() { addTextRows(); }
    void everyTextOfAKeyIsKept();
    void everyTextOfAnActionIsKept_data() { addTextRows(); }
    void everyTextOfAnActionIsKept();
    void aNoncharacterComesBackAsTheReplacementCharacter_data();
    void aNoncharacterComesBackAsTheReplacementCharacter();
};

void TextsTest::everyTextOfAKeyIsKept()
{
    QFETCH(QString, text);
    Key key = unit::sampleKey();
    key.dmId = key.container = key.icon = text;
    key.idKey = database().insertKey(key).id;
    QCOMPARE(database().key(key.idKey), ListKey{key});
    QCOMPARE(database().updateKey(key), 0);
    QCOMPARE(database().allKeys(), ListKey{key});
    QCOMPARE(database().keysInContainer(text), ListKey{key});
    QCOMPARE(database().keysInContainer(text + QLatin1Char('x')), ListKey());
    QCOMPARE(OtherProgram().row(QStringLiteral("SELECT hex(dmId), hex(container), hex(icon), "
                                               "typeof(dmId) FROM KEY")),
             (QVariantList{bytes(text), bytes(text), bytes(text), QStringLiteral("text")}));
}

void TextsTest::everyTextOfAnActionIsKept()
{
    QFETCH(QString, text);
    Action action = unit::sampleAction();
    action.action = action.webAppName = action.arguments = text;
    action.label = action.shortLabel = text;
    action.dmId = QStringLiteral("D") + text;
    action.idAction = database().insertAction(action).id;
    QCOMPARE(database().action(action.idAction), ListAction{action});
    action.dmId = text + QStringLiteral("D");
    QCOMPARE(database().updateAction(action), 0);
    QCOMPARE(database().allActions().last(), action);
    QVERIFY(database().actionWithDmId(action.dmId) == action);
    QCOMPARE(OtherProgram().row(QStringLiteral("SELECT hex(dmId), hex(action), hex(webAppName), "
                                               "hex(arguments), hex(label), hex(shortLabel) "
                                               "FROM ACTION WHERE idAction = 1")),
             (QVariantList{bytes(action.dmId), bytes(text), bytes(text), bytes(text), bytes(text),
                           bytes(text)}));
}

// SQLite has no place for these two, wherever they stand. At the beginning the first must not be
// taken for a mark that says to read all that follows with its bytes swapped.
void TextsTest::aNoncharacterComesBackAsTheReplacementCharacter_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("kept");
    const QString replaced = QString::fromUtf8("\uFFFD");
    const QString mark(QChar(0xFEFF));
    const QString word = QStringLiteral("x");
    for (const ushort code : {ushort{0xFFFE}, ushort{0xFFFF}}) {
        const QString character{QChar(code)};
        const auto row = [code](const char *where, const QString &text, const QString &kept) {
            QTest::addRow("U+%X %s", code, where) << text << kept;
        };
        row("alone", character, replaced);
        row("at the beginning", character + word, replaced + word);
        row("before a mark of byte order", character + mark, replaced + mark);
        row("after a mark of byte order", mark + character, mark + replaced);
        row("further on", word + character, word + replaced);
    }
}

void TextsTest::aNoncharacterComesBackAsTheReplacementCharacter()
{
    QFETCH(QString, text);
    QFETCH(QString, kept);
    Key key = unit::sampleKey();
    key.icon = text;
    const ListKey stored = database().key(database().insertKey(key).id);
    QCOMPARE(stored.size(), 1);
    QCOMPARE(stored.first().icon, kept);
}

PROGKEYS_TEST_MAIN(TextsTest)
#include "TextsTest.moc"
