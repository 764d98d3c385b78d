#include "output/Table.h"
#include "output/Text.h"

#include "support/TestMain.h"

#include <clocale>

namespace {

const QList<output::Column> Columns = {
    {QStringLiteral("id"), QStringLiteral("ID"), true},
    {QStringLiteral("label"), QStringLiteral("LABEL")},
    {QStringLiteral("icon"), QStringLiteral("ICON")},
};

QJsonObject row(int id, const char *label, const char *icon)
{
    return {{QStringLiteral("id"), id},
            {QStringLiteral("label"), QString::fromUtf8(label)},
            {QStringLiteral("icon"), QString::fromUtf8(icon)}};
}

QStringList linesOf(const output::Listing &listing, int width, bool hasLegend = true)
{
    const output::Terminal terminal = output::Terminal::ofWidth(width);
    QStringList lines = output::tableText(listing, terminal, hasLegend).split(QLatin1Char('\n'));
    lines.removeLast();
    return lines;
}

} // namespace

/// Rows as a table on a terminal of a given width.
class TableTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void numbersAreAlignedToTheRight();
    void withoutRowsThereIsOnlyTheLegend();
    void longTextsAreWrapped();
    void noLineIsWiderThanTheTerminal();
    void nothingIsWrappedWithoutATerminal();
    void charactersThatControlATerminalAreVisible();
};

void TableTest::initTestCase()
{
    QVERIFY(std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr);
}

void TableTest::numbersAreAlignedToTheRight()
{
    const output::Listing listing{
        Columns, {row(7, "受付", "a"), row(12, "Lena", "b")}, QStringLiteral("2 rows")};
    const QStringList expected = {QStringLiteral("ID  LABEL  ICON"),
                                  QString::fromUtf8(" 7  受付   a"), QStringLiteral("12  Lena   b"),
                                  QStringLiteral("2 rows")};
    QCOMPARE(linesOf(listing, 0), expected);
    QCOMPARE(linesOf(listing, 0, false),
             (QStringList{QString::fromUtf8(" 7  受付  a"), QStringLiteral("12  Lena  b")}));
}

void TableTest::withoutRowsThereIsOnlyTheLegend()
{
    QCOMPARE(linesOf({Columns, {}, QStringLiteral("0 rows")}, 80),
             QStringList(QStringLiteral("0 rows")));
    QCOMPARE(linesOf({Columns, {}, QStringLiteral("0 rows")}, 80, false), QStringList());
}

void TableTest::longTextsAreWrapped()
{
    const output::Listing listing{Columns, {row(1, "abcdefghijklmnop", "12345678")}, {}};
    QCOMPARE(linesOf(listing, 24).mid(1), (QStringList{QStringLiteral(" 1  abcdefghij  12345678"),
                                                       QStringLiteral("    klmnop")}));
}

void TableTest::noLineIsWiderThanTheTerminal()
{
    const QByteArray label = "Empfang, 受付, réception and more of it";
    const output::Listing listing{
        Columns, {row(1234567890, label, "a long name of an icon"), row(1, "e\u0301", "")}, {}};
    for (int width = 18; width < 80; ++width) {
        const QStringList lines = linesOf(listing, width);
        QString text;
        for (const QString &line : lines) {
            QVERIFY2(output::textWidth(line) <= width, qPrintable(line));
            text += line;
        }
        QVERIFY(text.contains(QStringLiteral("1234567890")));
    }
}

void TableTest::nothingIsWrappedWithoutATerminal()
{
    const QByteArray label(5000, 'x');
    const output::Listing listing{Columns, {row(1, label, "")}, {}};
    QVERIFY(linesOf(listing, 0).last().contains(QString::fromUtf8(label)));
}

void TableTest::charactersThatControlATerminalAreVisible()
{
    const output::Listing listing{Columns, {row(1, "\x1b[2J\u202ea\nb", "")}, {}};
    QCOMPARE(linesOf(listing, 0).last(), QStringLiteral(" 1  \\x1b[2J\\u202ea\\nb"));
}

PROGKEYS_TEST_MAIN(TableTest)
#include "TableTest.moc"
