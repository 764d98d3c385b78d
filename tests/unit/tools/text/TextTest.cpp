#include "text/Text.h"

#include "support/TestProgram.h"

#include <clocale>

namespace {

QString utf8(const char *text)
{
    return QString::fromUtf8(text);
}

} // namespace

/// Text output on a terminal.
class TextTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void aTextIsTruncatedToTheWidth_data();
    void aTextIsTruncatedToTheWidth();
    void controlCharactersAreEscaped_data();
    void controlCharactersAreEscaped();
};

void TextTest::initTestCase()
{
    QVERIFY(std::setlocale(LC_CTYPE, "C.UTF-8"));
}

void TextTest::aTextIsTruncatedToTheWidth_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("shown");
    QTest::newRow("a text that fits") << utf8("four") << 4 << utf8("four");
    QTest::newRow("a text that does not fit") << utf8("fours") << 4 << utf8("fou…");
    QTest::newRow("wide characters that fit") << utf8("受付") << 4 << utf8("受付");
    QTest::newRow("a wide character is not split") << utf8("受付係") << 4 << utf8("受…");
    QTest::newRow("a combining accent stays with its letter")
        << utf8("e\u0301e\u0301e\u0301") << 2 << utf8("e\u0301…");
    QTest::newRow("an emoji") << utf8("\U0001f4deab") << 3 << utf8("\U0001f4de…");
    QTest::newRow("one column") << utf8("four") << 1 << utf8("…");
    QTest::newRow("no column") << utf8("four") << 0 << utf8("");
}

void TextTest::aTextIsTruncatedToTheWidth()
{
    QFETCH(QString, text);
    QFETCH(int, width);
    QTEST(text::elided(text, width), "shown");
}

void TextTest::controlCharactersAreEscaped_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("printed");
    QTest::newRow("letters, emoji and backslashes")
        << utf8("a\\n ü 受 \U0001f4de") << utf8("a\\n ü 受 \U0001f4de");
    QTest::newRow("line breaks and tabs") << utf8("a\r\n\tb") << utf8(R"(a\r\n\tb)");
    QTest::newRow("an escape sequence") << utf8("\x1b[2J") << utf8(R"(\x1b[2J)");
    QTest::newRow("a control sequence introducer") << QString(QChar(0x9b)) << utf8(R"(\x9b)");
    QTest::newRow("characters that change the writing direction")
        << utf8("a\u202eb\u2066c\u200f") << utf8(R"(a\u202eb\u2066c\u200f)");
    QTest::newRow("a line separator") << utf8("\u2028") << utf8(R"(\u2028)");
    QTest::newRow("an unpaired surrogate")
        << QString(QChar(0xd800)) + QLatin1Char('x') << utf8("\ufffdx");
    QTest::newRow("U+0000") << QString(QChar(0)) << utf8(R"(\x00)");
}

void TextTest::controlCharactersAreEscaped()
{
    QFETCH(QString, text);
    QTEST(text::printable(text), "printed");
}

PROGKEYS_TEST(TextTest)
#include "TextTest.moc"
