#include "defaults/Excerpt.h"
#include "support/TestMain.h"
#include "tools/defaults/Findings.h"

#include "output/TextWidth.h"

#include <clocale>

using unit::utf8;

namespace {

defaults::Finding findingAt(const QString &text, const QString &part)
{
    defaults::Finding finding;
    finding.place = {static_cast<int>(text.indexOf(part)), static_cast<int>(part.size())};
    finding.shown = {0, static_cast<int>(text.size())};
    return finding;
}

} // namespace

/// The text around a complaint, and the mark below it.
class ExcerptTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void thePlaceIsMarkedInWhatFits_data();
    void thePlaceIsMarkedInWhatFits();
    void whateverTheWidthIsTheMarkStandsBelowThePlace();
    void aPlaceBehindTheTextIsMarkedBehindIt();
    void furtherPlacesAreMarkedToo();
    void aVeryLongRecordIsShownAroundThePlace();
};

void ExcerptTest::initTestCase()
{
    QVERIFY(std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr);
}

void ExcerptTest::thePlaceIsMarkedInWhatFits_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("part");
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("marks");
    const auto row = [](const char *name, const char *text, const char *part, int width,
                        const char *shown, const char *marks) {
        QTest::newRow(name) << utf8(text) << utf8(part) << width << utf8(shown) << utf8(marks);
    };
    row("a text that fits is shown whole", "abcdefghij", "cde", 10, "abcdefghij", "  ^~~");
    row("cut at both sides", "abcdefghijklmnop", "hi", 8, "…fghijk…", "   ^~");
    row("cut at the end", "abcdefghijklmnop", "a", 8, "abcdefg…", "^");
    row("cut at the start", "abcdefghijklmnop", "p", 8, "…jklmnop", "       ^");
    row("a place wider than there is room", "abcdefghijklmnop", "cdefghijklmnop", 8, "…cdefgh…",
        " ^~~~~~");
    row("wide characters", "藤田 七海,x", ",", 20, "藤田 七海,x", "         ^");
    row("a wide place", "藤田 七海,x", "七海", 20, "藤田 七海,x", "     ^~~~");
    row("wide characters, cut", "藤田藤田藤田,x藤田藤田", ",", 10, "…藤田,x藤…", "     ^");
    row("a character of two parts", "é́a🙂b", "b", 20, "é́a🙂b", "    ^");
    row("control characters", "a\n\tb,c", ",", 20, "a\\n\\tb,c", "      ^");
    row("a control character as the place", "a\nb", "\n", 20, "a\\nb", " ^~");
}

void ExcerptTest::thePlaceIsMarkedInWhatFits()
{
    QFETCH(QString, text);
    QFETCH(QString, part);
    QFETCH(int, width);
    QFETCH(QString, shown);
    QFETCH(QString, marks);
    const defaults::Excerpt excerpt = defaults::excerptOf(text, findingAt(text, part), width);
    QCOMPARE(excerpt.text, shown);
    QCOMPARE(excerpt.marks, marks);
    QVERIFY(output::textWidth(excerpt.text) <= width);
}

void ExcerptTest::whateverTheWidthIsTheMarkStandsBelowThePlace()
{
    const QString text = utf8("藤a田b藤c\nd,é,🙂,x,藤藤藤藤!田田田田田田y\t\tz");
    const defaults::Finding finding = findingAt(text, utf8("!"));
    for (int width = 5; width <= 60; ++width) {
        const defaults::Excerpt excerpt = defaults::excerptOf(text, finding, width);
        const int place = static_cast<int>(excerpt.text.indexOf(QLatin1Char('!')));
        QVERIFY(place >= 0);
        QVERIFY(output::textWidth(excerpt.text) <= width);
        QCOMPARE(excerpt.marks.size(), output::textWidth(excerpt.text.left(place)) + 1);
        QVERIFY(excerpt.marks.endsWith(QLatin1Char('^')));
    }
}

void ExcerptTest::aPlaceBehindTheTextIsMarkedBehindIt()
{
    defaults::Finding finding;
    finding.place = {3, 0};
    finding.shown = {0, 3};
    const defaults::Excerpt excerpt = defaults::excerptOf(utf8("abc"), finding, 20);
    QCOMPARE(excerpt.text, utf8("abc"));
    QCOMPARE(excerpt.marks, utf8("   ^"));
    QCOMPARE(defaults::excerptOf(QString(), {}, 20).marks, utf8("^"));
}

void ExcerptTest::furtherPlacesAreMarkedToo()
{
    defaults::Finding finding = findingAt(utf8("a,b,c"), utf8(","));
    finding.alsoMarked = {{3, 1}};
    QCOMPARE(defaults::excerptOf(utf8("a,b,c"), finding, 20).marks, utf8(" ^ ^"));
    QCOMPARE(defaults::excerptOf(utf8("a,b,c"), finding, 4).text, utf8("a,b…"));
    QCOMPARE(defaults::excerptOf(utf8("a,b,c"), finding, 4).marks, utf8(" ^"));
}

void ExcerptTest::aVeryLongRecordIsShownAroundThePlace()
{
    const QString half = QString(1000000, QLatin1Char('-'));
    const QString text = half + utf8("!") + half;
    defaults::Finding finding = findingAt(text, utf8("!"));
    finding.alsoMarked = {{5, 1}, {static_cast<int>(text.size()) - 5, 1}};
    const defaults::Excerpt excerpt = defaults::excerptOf(text, finding, 11);
    QCOMPARE(excerpt.text, utf8("…----!----…"));
    QCOMPARE(excerpt.marks, utf8("     ^"));
}

PROGKEYS_TEST_MAIN(ExcerptTest)
#include "ExcerptTest.moc"
