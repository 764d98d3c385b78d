#include "output/Table.h"
#include "output/TextWidth.h"

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
    void numbersAreFlushRightAndTextsFlushLeft();
    void withoutRowsThereIsOnlyTheLegend();
    void theWidestColumnGivesWayFirst();
    void whateverTheWidthNoLineIsWider_data();
    void whateverTheWidthNoLineIsWider();
    void numbersAreNeverCut();
    void nothingIsCutWithoutATerminal();
};

void TableTest::initTestCase()
{
    QVERIFY(std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr);
}

void TableTest::numbersAreFlushRightAndTextsFlushLeft()
{
    const output::Listing listing{
        Columns, {row(7, "受付", "a"), row(12, "Lena", "b")}, QStringLiteral("2 rows")};
    const QStringList expected = {QStringLiteral("ID  LABEL  ICON"),
                                  QString::fromUtf8(" 7  受付   a"), QStringLiteral("12  Lena   b"),
                                  QStringLiteral("2 rows")};
    QCOMPARE(linesOf(listing, 0), expected);
    QCOMPARE(linesOf(listing, 0, false), expected.mid(1, 2));
}

void TableTest::withoutRowsThereIsOnlyTheLegend()
{
    QCOMPARE(linesOf({Columns, {}, QStringLiteral("0 rows")}, 80),
             QStringList(QStringLiteral("0 rows")));
    QCOMPARE(linesOf({Columns, {}, QStringLiteral("0 rows")}, 80, false), QStringList());
}

void TableTest::theWidestColumnGivesWayFirst()
{
    const output::Listing listing{Columns, {row(1, "abcdefghijklmnop", "12345678")}, {}};
    QCOMPARE(linesOf(listing, 24).last(), QString::fromUtf8(" 1  abcdefghi…  12345678"));
}

void TableTest::whateverTheWidthNoLineIsWider_data()
{
    QTest::addColumn<int>("width");
    for (int width = 16; width < 60; ++width)
        QTest::addRow("%d columns", width) << width;
}

void TableTest::whateverTheWidthNoLineIsWider()
{
    QFETCH(int, width);
    const output::Listing listing{
        Columns,
        {row(1, "Empfang, 受付, réception and more of it", "a long name of an icon"),
         row(123456, "e\u0301", "")},
        {}};
    const QStringList lines = linesOf(listing, width);
    for (const QString &line : lines)
        QVERIFY2(output::textWidth(line) <= width, qPrintable(line));
}

void TableTest::numbersAreNeverCut()
{
    const output::Listing listing{Columns, {row(1234567890, "label", "icon")}, {}};
    for (int width = 1; width < 40; ++width)
        QVERIFY(
            linesOf(listing, width).join(QLatin1Char('\n')).contains(QStringLiteral("1234567890")));
}

void TableTest::nothingIsCutWithoutATerminal()
{
    const QString label(5000, QLatin1Char('x'));
    const output::Listing listing{Columns, {row(1, label.toUtf8().constData(), "")}, {}};
    QVERIFY(linesOf(listing, 0).last().contains(label));
}

PROGKEYS_TEST_MAIN(TableTest)
#include "TableTest.moc"
