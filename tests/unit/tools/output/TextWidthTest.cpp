#include "output/TextWidth.h"

#include "support/TestMain.h"

#include <clocale>

namespace {

QString utf8(const char *text)
{
    return QString::fromUtf8(text);
}

} // namespace

/// Text in the columns of a terminal.
class TextWidthTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void widthIsThatOfTheTerminal_data();
    void widthIsThatOfTheTerminal();
    void longTextIsElided_data();
    void longTextIsElided();
    void printedTextIsHarmless_data();
    void printedTextIsHarmless();
};

void TextWidthTest::initTestCase()
{
    QVERIFY(std::setlocale(LC_CTYPE, "C.UTF-8"));
}

void TextWidthTest::widthIsThatOfTheTerminal_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("width");
    QTest::newRow("nothing takes nothing") << utf8("") << 0;
    QTest::newRow("letters take one each") << utf8("Häßlich") << 7;
    QTest::newRow("a combining accent takes none") << utf8("e\u0301a") << 2;
    QTest::newRow("characters of the Far East take two") << utf8("受付") << 4;
    QTest::newRow("a picture takes two") << utf8("\U0001f4de") << 2;
    QTest::newRow("a vowel of Thai stands beside its consonant") << utf8("\u0e01\u0e33") << 2;
    QTest::newRow("so does one of Hindi") << utf8("\u0915\u093f") << 2;
    QTest::newRow("a flag of two letters is one picture") << utf8("\U0001f1e9\U0001f1ea") << 2;
    QTest::newRow("a family joined of three is one picture")
        << utf8("\U0001f468\u200d\U0001f469\u200d\U0001f467") << 2;
}

void TextWidthTest::widthIsThatOfTheTerminal()
{
    QFETCH(QString, text);
    QTEST(output::textWidth(text), "width");
}

void TextWidthTest::longTextIsElided_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("shown");
    QTest::newRow("what fits is shown whole") << utf8("four") << 4 << utf8("four");
    QTest::newRow("what does not ends in an ellipsis") << utf8("fours") << 4 << utf8("fou…");
    QTest::newRow("a wide character is not halved") << utf8("受付係") << 4 << utf8("受…");
    QTest::newRow("an accent stays with its letter")
        << utf8("e\u0301e\u0301e\u0301") << 2 << utf8("e\u0301…");
    QTest::newRow("one column has room for the ellipsis") << utf8("four") << 1 << utf8("…");
    QTest::newRow("no column has room for nothing") << utf8("four") << 0 << utf8("");
}

void TextWidthTest::longTextIsElided()
{
    QFETCH(QString, text);
    QFETCH(int, width);
    QTEST(output::elided(text, width), "shown");
}

void TextWidthTest::printedTextIsHarmless_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("printed");
    QTest::newRow("letters, pictures and backslashes stay")
        << utf8("a\\n ü 受 \U0001f4de") << utf8("a\\n ü 受 \U0001f4de");
    QTest::newRow("line ends and tabs are named") << utf8("a\r\n\tb") << utf8(R"(a\r\n\tb)");
    QTest::newRow("escape sequences are disarmed") << utf8("\x1b[2J") << utf8(R"(\x1b[2J)");
    QTest::newRow("so are the ones of one byte") << QString(QChar(0x9b)) << utf8(R"(\x9b)");
    QTest::newRow("the direction of writing is not turned")
        << utf8("a\u202eb\u2066c\u200f") << utf8(R"(a\u202eb\u2066c\u200f)");
    QTest::newRow("separators of lines are named") << utf8("\u2028") << utf8(R"(\u2028)");
    QTest::newRow("half a character is a replacement character")
        << QString(QChar(0xd800)) + QLatin1Char('x') << utf8("\ufffdx");
    QTest::newRow("U+0000 is named") << QString(QChar(0)) << utf8(R"(\x00)");
}

void TextWidthTest::printedTextIsHarmless()
{
    QFETCH(QString, text);
    QTEST(output::printable(text), "printed");
}

PROGKEYS_TEST_MAIN(TextWidthTest)
#include "TextWidthTest.moc"
